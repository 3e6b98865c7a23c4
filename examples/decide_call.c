/* Asks whether a call is to be recorded, and prints the rule that says so, or why the nearest one does not.
   Usage: decide_call_c DIRECTORY CALLER CALLED, each side as a telephone system has it, such as
          201, sip:201@pbx:5060, "Alice" <sip:201@pbx>;tag=1 or tel:+49-30-1234 */

#include <stdio.h>

#include <callrecordingutils/callrecordingutils.h>

static callrecording_party party_of(char const *text) {
    callrecording_party party = CALLRECORDING_PARTY_INIT;
    party.text = text;
    return party;
}

static void explain(callrecording_rules *rules, callrecording_party const *caller,
                    callrecording_party const *called) {
    callrecording_explanation nearest = CALLRECORDING_EXPLANATION_INIT;
    puts("not recorded");
    if (callrecording_explain(rules, caller, called, CALLRECORDING_NEAREST, &nearest) ==
            CALLRECORDING_NO &&
        nearest.place >= 0)
        printf("nearest is rule #%d: %s\n", (int)nearest.place + 1, nearest.reason);
}

static int decide(callrecording_rules *rules, char const *from, char const *to) {
    callrecording_party const caller = party_of(from);
    callrecording_party const called = party_of(to);
    callrecording_rule const *rule;
    int32_t const answer = callrecording_decide_parties(rules, &caller, &called, &rule);
    if (answer == CALLRECORDING_YES)
        printf("recorded under rule %d (%s) to %s\n", (int)rule->id, rule->description,
               rule->record_to);
    else if (answer == CALLRECORDING_ERROR)
        puts("undecided"); /* What happens to such a call is the operator's choice. */
    else if (rule != NULL)
        printf("not recorded: rule %d says never\n", (int)rule->id);
    else
        explain(rules, &caller, &called);
    callrecording_rule_free(rule);
    return answer == CALLRECORDING_YES ? 0 : answer == CALLRECORDING_NO ? 1 : 3;
}

int main(int argc, char **argv) {
    char failure[1024];
    callrecording_rules *rules;
    int status;

    if (argc != 4) {
        fputs("Usage: decide_call_c DIRECTORY CALLER CALLED\n", stderr);
        return 2;
    }
    rules = callrecording_open(argv[1]);
    if (callrecording_last_failure(rules, failure, sizeof failure) > 0)
        fprintf(stderr, "%s\n", failure);
    status = decide(rules, argv[2], argv[3]);
    callrecording_close(rules);
    return status;
}
