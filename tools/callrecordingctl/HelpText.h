/// @file
/// The help texts that go beyond one line.

#ifndef CALLRECORDINGCTL_HELPTEXT_H
#define CALLRECORDINGCTL_HELPTEXT_H

namespace callrecordingctl {

constexpr char CONFIG_DIR_HELP[] = "Directory with telephony/callrecordingdb, the rules\n"
                                   "(default: $QUVA_PATH, else /etc/quva-conf/)";

constexpr char ESCAPE_NOTE[] =
    "note: an escape is stored as a code, \\* \\? \\, \\- \\! as # ^ @ % :, and it is the code "
    "that is "
    "compared with an address; write ? for a character that an address has as it is";

constexpr char MAIN_HELP[] =
    R"(A rule has two sides, "from" (calling) and "to" (called), each with a call type
and a pattern. Rules are tried in the order of list. The first that is on and
whose two sides both match a call has it recorded; without one it is not.

Call types: number (or 0), sip (1), number2 (2, numbers of a second kind), and
any (3): every call; the pattern is then compared with the number or SIP user.

Patterns; quote them, or the shell takes some of their characters:
  +4930a         itself: letters, digits and '_+=/~().;$&
  ?              any one character
  *              any run of characters, also none
  [1-3,7,a-f]    one character of these
  {200-299,450}  a run of characters: a number of these; {01-20} is two wide
  [0-9,!5]       ! takes out: any digit but 5
  00{10-99,!41}* 00, two digits but not 41, and the rest
  \* \? \, \- \! the character itself, stored and compared as # ^ @ % :
A SIP pattern is user@host or user@host:port, with a pattern in each place.
Without a port it takes every port; *@* is every SIP address.

Setting up rules; each goes behind the ones before it:
  callrecordingctl add --from '{200-299}' --record-to archive:/sales
  callrecordingctl add --to '00{10-99,!41}*' --description 'abroad, not 41'
  callrecordingctl add --from alice@pbx.example.com
  callrecordingctl add --from 450 --twin            calls from 450, and to 450
  callrecordingctl add --disabled --description 'every call'
Finding out why a call is not recorded, or by which rule it is:
  callrecordingctl decide --from 213 --to 00331234 --explain
  callrecordingctl check                            looks for faults in the rules
Changing rules; ID is the identifier that list shows:
  callrecordingctl up 4          one place up; "up 4 99" makes it the first
  callrecordingctl modify 4 --to '[2-4]??' --duration 3600
  callrecordingctl enable 5
Moving exchanges identifiers: the output says which rule has which one now.
Every edit takes --dry-run. "callrecordingctl COMMAND --help" has all options.

Exit status: 0 yes or done; 1 no (no rule matches, malformed, something found);
2 wrong usage; 3 rules cannot be read; 4 they cannot be saved; 5 no such rule.
)";

constexpr char LIST_HELP[] =
    R"(FROM and TO are call type and pattern, REC the recording type, FOR the duration.
On a terminal the table fits the width; elsewhere a rule is one line, unless the
environment variable COLUMNS says how wide. For scripts there is --json.
)";

constexpr char DECIDE_HELP[] =
    R"(ADDR is a number, or user@host[:port] for SIP. It is compared as it is given.
Example: callrecordingctl decide --from alice@pbx:5060 --to 0123 --explain
)";

constexpr char CHECK_HELP[] =
    R"(Prints the stored form of every PATTERN, or what is wrong with it and where.
Without a PATTERN: malformed patterns of the rule file, identifiers given twice,
values out of range, and rules that can never decide because an earlier one
matches all their calls; each with the line of the file.
"callrecordingctl --help" explains the patterns.
)";

constexpr char ADD_HELP[] =
    R"(Example: callrecordingctl add --from '{200-299}' --record-to archive:/sales
"callrecordingctl --help" explains the patterns.
)";

constexpr char MODIFY_HELP[] =
    R"(What is not given stays as it is, the call types too.
With --twin, the first rule that mirrors this one gets its recording type,
destination, duration and state, and mirrors its new sides if they change; the
twin keeps its description. Without such a rule nothing is changed.
"callrecordingctl --help" explains the patterns.
)";

constexpr char DELETE_HELP[] =
    R"(With --twin, all rules before this one that mirror it go too, or if there is none
the first behind it. Without such a rule nothing is deleted. See --dry-run.
)";

constexpr char MOVE_HELP[] =
    R"(Identifiers belong to places: rules that change places exchange them too, and the
output says which rule has which identifier now. When the rule is at the end
already, nothing changes, and the exit status is 1.
)";

} // namespace callrecordingctl

#endif
