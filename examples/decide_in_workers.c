/* Decides calls in processes that fork, as the workers of a proxy do: the rules are read before the fork, so
   that the workers share their memory, and each worker looks at the file when a call comes.
   Usage: decide_in_workers DIRECTORY WORKERS CALLER CALLED */

#define _POSIX_C_SOURCE 200809L

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <callrecordingutils/callrecordingutils.h>

static int32_t decide(callrecording_rules *rules, char const *from, char const *to) {
    callrecording_party caller = CALLRECORDING_PARTY_INIT;
    callrecording_party called = CALLRECORDING_PARTY_INIT;
    callrecording_failure failure = CALLRECORDING_FAILURE_INIT;
    caller.text = from;
    called.text = to;
    /* One stat. The call that comes first after an edit waits for the new rules. */
    if (callrecording_reload_if_changed(rules, &failure) == CALLRECORDING_ERROR)
        fprintf(stderr, "the rules stay as they were: %s\n", failure.text);
    return callrecording_decide_parties(rules, &caller, &called, NULL);
}

int main(int argc, char **argv) {
    callrecording_rules *rules;
    int worker, status, recorded = 0, workers;

    if (argc != 5) {
        fputs("Usage: decide_in_workers DIRECTORY WORKERS CALLER CALLED\n", stderr);
        return 2;
    }
    workers = atoi(argv[2]);
    rules = callrecording_open(argv[1]);
    for (worker = 0; worker < workers; ++worker)
        if (fork() == 0) {
            int32_t const answer = decide(rules, argv[3], argv[4]);
            callrecording_close(rules);
            _exit(answer == CALLRECORDING_YES ? 0 : 1);
        }
    while (wait(&status) > 0)
        recorded += WIFEXITED(status) && WEXITSTATUS(status) == 0;
    callrecording_close(rules);
    printf("%d of %d workers record the call\n", recorded, workers);
    return 0;
}
