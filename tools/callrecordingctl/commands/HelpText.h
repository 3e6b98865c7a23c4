// The help that is not of one command.

#ifndef CALLRECORDINGCTL_COMMANDS_HELPTEXT_H
#define CALLRECORDINGCTL_COMMANDS_HELPTEXT_H

namespace callrecordingctl {

constexpr char kConfigDirHelp[] = "Directory with telephony/callrecordingdb, the rules\n"
                                  "(default: $QUVA_PATH, else /etc/quva-conf/)";

constexpr char kEscapeNote[] =
    "note: an escape is stored as a code, \\* \\? \\, \\- \\! as # ^ @ % :, and it is the code "
    "that is "
    "compared with an address; write ? for a character that an address has as it is";

constexpr char kMainHelp[] =
    R"(A rule has two sides, "from" (calling) and "to" (called), each with a call type
and a pattern. Rules are tried in the order of list. The first that is on and
whose two sides both match a call decides: the call is recorded, or the rule
forbids that. A call that no rule takes is not recorded.

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
  callrecordingctl add --everyone --disabled --description 'every call'
Finding out why a call is not recorded, or by which rule it is:
  callrecordingctl decide --from 213 --to 00331234 --explain
  callrecordingctl check                           looks for faults in the rules
  callrecordingctl example 7                       a call that rule 7 decides
  callrecordingctl prove --to 112 --recorded       that all such calls are
  callrecordingctl diff FILE                       calls that FILE decides otherwise
Looking back:
  callrecordingctl status                          rules, last edit, history
  callrecordingctl log --since monday -p           who changed what
  callrecordingctl revert 12                       takes back edit 12 alone
Changing rules; ID is the identifier that list shows, or the position, '#4':
  callrecordingctl up 4          one place up; "up 4 99" makes it the first
  callrecordingctl modify 4 --to '[2-4]??' --duration 3600
  callrecordingctl enable 5-7 12                   ranges, also '#5-#7'
  callrecordingctl modify --record-to-is archive:/a --record-to archive:/b
  callrecordingctl list --grep 213                 all rules about 213
  callrecordingctl edit 5-7                        in your editor
Moving exchanges identifiers: the output says which rule has which one now.
Every edit takes --dry-run. "callrecordingctl help COMMAND" has all options.

Reloading: an edit is in the file at once, but telephony processes decide by the
rules that they loaded, until they load them again: on their own command to
reload, or when they are restarted. (They call ReloadCallRecordingRules.)
Services (callrecordingd) load them by themselves; "status" asks which rules
they decide by, and an edit waits up to a second for them and says so.

Exit status: 0 yes or done; 1 no (no rule matches, malformed, something found,
nothing to do); 2 wrong usage; 3 rules cannot be read; 4 they cannot be saved;
5 no such rule; 6 undecided; 7 the file is not in the state of --if-state.
)";

} // namespace callrecordingctl

#endif
