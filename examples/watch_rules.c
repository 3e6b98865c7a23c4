/* Decides calls while the rule file changes: one call for each line "CALLER CALLED" of standard input.
   Usage: watch_rules DIRECTORY

   The loop that decides never reads the file: a thread of its own does, since reading many rules takes as
   long as thousands of calls. That thread waits for the directory to change. (An edit replaces the rule
   file by rename, so a watch on the file itself would stay with the old file and never report again.) It
   also looks once a second: where the directory is a link that is pointed to another folder, as container
   platforms exchange configuration, nothing happens in the folder that is watched. */

#define _POSIX_C_SOURCE 200809L

#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <callrecordingutils/callrecordingutils.h>

/* Closed after writing (an editor), or moved into place (an edit of the library). */
static uint32_t const events_of_interest = IN_CLOSE_WRITE | IN_MOVED_TO;

struct watcher {
    int inotify;
    callrecording_rules *rules;
};

static int watch(char const *directory) {
    char path[PATH_MAX];
    int const inotify = inotify_init1(IN_CLOEXEC);
    snprintf(path, sizeof path, "%s/telephony", directory);
    if (inotify < 0 || inotify_add_watch(inotify, path, events_of_interest) < 0) {
        perror(path);
        return -1;
    }
    return inotify;
}

/* Says what came of a look at the file, and of a failure only what was not said before. */
static void report(callrecording_rules *rules, int32_t answer, callrecording_failure const *failure) {
    static char said[sizeof failure->text];
    if (answer != CALLRECORDING_ERROR)
        said[0] = '\0';
    if (answer == CALLRECORDING_ERROR && strcmp(said, failure->text) != 0)
        printf("the rules stay as they were: %s\n", strcpy(said, failure->text));
    else if (answer == CALLRECORDING_YES)
        printf("%d rules\n", (int)callrecording_count(rules));
}

/* Which file has changed, and whether events were lost, does not matter: one stat tells. */
static void *follow(void *argument) {
    struct watcher const *const watcher = argument;
    struct pollfd watched = {watcher->inotify, POLLIN, 0};
    char events[16 * (sizeof(struct inotify_event) + NAME_MAX + 1)];
    for (;;) {
        callrecording_failure failure = CALLRECORDING_FAILURE_INIT;
        if (poll(&watched, 1, 1000) > 0 && read(watcher->inotify, events, sizeof events) <= 0)
            break;
        report(watcher->rules, callrecording_reload_if_changed(watcher->rules, &failure), &failure);
    }
    return NULL;
}

static void decide(callrecording_rules *rules, char *line) {
    callrecording_party caller = CALLRECORDING_PARTY_INIT;
    callrecording_party called = CALLRECORDING_PARTY_INIT;
    int32_t answer;
    caller.text = strtok(line, " \n");
    called.text = strtok(NULL, " \n");
    answer = callrecording_decide_parties(rules, &caller, &called, NULL);
    puts(answer == CALLRECORDING_YES  ? "recorded"
         : answer == CALLRECORDING_NO ? "not recorded"
                                      : "undecided");
}

int main(int argc, char **argv) {
    char line[512];
    struct watcher watcher;
    pthread_t thread;
    callrecording_failure failure = CALLRECORDING_FAILURE_INIT;

    if (argc != 2) {
        fputs("Usage: watch_rules DIRECTORY\n", stderr);
        return 2;
    }
    setvbuf(stdout, NULL, _IOLBF, 0);
    watcher.inotify = watch(argv[1]); /* Before the rules are read: no change is missed. */
    watcher.rules = callrecording_open(argv[1]);
    report(watcher.rules, callrecording_reload(watcher.rules, &failure), &failure);
    if (watcher.inotify < 0 || pthread_create(&thread, NULL, follow, &watcher) != 0)
        return 1;
    while (fgets(line, sizeof line, stdin) != NULL)
        decide(watcher.rules, line);
    pthread_cancel(thread); /* Acted on between two functions of the library, never inside one. */
    pthread_join(thread, NULL);
    callrecording_close(watcher.rules);
    close(watcher.inotify);
    return 0;
}
