/* Asks whether a call is to be recorded, and prints the rule that says so.
   Usage: decide_call_c DIRECTORY CALLER CALLED, each side a number or user@host[:port] */

#include <stdio.h>
#include <string.h>

#include <callrecordingutils/callrecordingutils.h>

static int32_t call_type(char const *address) {
    return strchr(address, '@') != NULL ? CALLRECORDING_SIP : CALLRECORDING_NUMBER;
}

static int decide(callrecording_rules *rules, char const *caller, char const *called) {
    callrecording_rule const *rule;
    int32_t const answer =
        callrecording_decide(rules, caller, call_type(caller), called, call_type(called), &rule);
    if (answer == CALLRECORDING_YES)
        printf("recorded under rule %d (%s) to %s\n", (int)rule->id, rule->description,
               rule->record_to);
    else
        puts(answer == CALLRECORDING_NO ? "not recorded" : "undecided");
    callrecording_rule_free(rule);
    return answer == CALLRECORDING_YES ? 0 : 1;
}

int main(int argc, char **argv) {
    char failure[512];
    callrecording_rules *rules;
    int status;

    if (argc != 4) {
        fputs("Usage: decide_call_c DIRECTORY CALLER CALLED\n", stderr);
        return 2;
    }
    rules = callrecording_open(argv[1]);
    if (callrecording_last_failure(rules, failure, sizeof failure) > 0) {
        fprintf(stderr, "%s\n", failure);
        callrecording_close(rules);
        return 3;
    }
    status = decide(rules, argv[2], argv[3]);
    callrecording_close(rules);
    return status;
}
