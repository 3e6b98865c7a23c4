/* Decides calls while the rule file changes: one call for each line "CALLER CALLED" of standard input.
   Usage: watch_rules DIRECTORY

   What is watched is the directory. An edit replaces the rule file by rename, so a watch on the file
   itself would stay with the old one and never tell again. A reload reads the whole file before it takes
   anything of it: rules that cannot be read leave the ones in place that are. */

#define _POSIX_C_SOURCE 200809L

#include <limits.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <callrecordingutils/callrecordingutils.h>

/* Closed after writing (an editor), or moved into place (an edit of the library). */
static uint32_t const events_of_interest = IN_CLOSE_WRITE | IN_MOVED_TO;

static int watch(char const *directory) {
    char path[PATH_MAX];
    int const inotify = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    snprintf(path, sizeof path, "%s/telephony", directory);
    if (inotify < 0 || inotify_add_watch(inotify, path, events_of_interest) < 0) {
        perror(path);
        return -1;
    }
    return inotify;
}

/* Takes all events that there are; several edits are one reload. Returns whether the rules changed. */
static int rules_changed(int inotify) {
    union {
        struct inotify_event event;
        char bytes[16 * (sizeof(struct inotify_event) + NAME_MAX + 1)];
    } buffer;
    int changed = 0;
    ssize_t length;
    while ((length = read(inotify, buffer.bytes, sizeof buffer.bytes)) > 0) {
        char const *at = buffer.bytes;
        while (at < buffer.bytes + length) {
            struct inotify_event const *event = (struct inotify_event const *)(void const *)at;
            /* Lost events may have been ours. */
            if ((event->mask & IN_Q_OVERFLOW) != 0 ||
                (event->len > 0 && strcmp(event->name, "callrecordingdb") == 0))
                changed = 1;
            at += sizeof *event + event->len;
        }
    }
    return changed;
}

static void reload(callrecording_rules *rules) {
    char failure[512];
    if (callrecording_reload(rules) == CALLRECORDING_YES) {
        printf("%d rules\n", (int)callrecording_count(rules));
        return;
    }
    callrecording_last_failure(rules, failure, sizeof failure);
    printf("the rules stay as they were: %s\n", failure);
}

static void decide(callrecording_rules *rules, char *line) {
    char const *const caller = strtok(line, " \n");
    char const *const called = strtok(NULL, " \n");
    int32_t const answer = callrecording_decide(rules, caller, CALLRECORDING_NUMBER, called,
                                                CALLRECORDING_NUMBER, NULL);
    puts(answer == CALLRECORDING_YES  ? "recorded"
         : answer == CALLRECORDING_NO ? "not recorded"
                                      : "undecided");
}

int main(int argc, char **argv) {
    char line[512];
    struct pollfd polled[2];
    callrecording_rules *rules;

    if (argc != 2) {
        fputs("Usage: watch_rules DIRECTORY\n", stderr);
        return 2;
    }
    setvbuf(stdin, NULL, _IONBF, 0); /* So that poll sees every line. */
    setvbuf(stdout, NULL, _IOLBF, 0);
    polled[0].fd = watch(argv[1]); /* Before the rules are read: no change is missed. */
    polled[1].fd = STDIN_FILENO;
    polled[0].events = polled[1].events = POLLIN;
    rules = callrecording_open(argv[1]);
    reload(rules);
    while (polled[0].fd >= 0 && poll(polled, 2, -1) > 0) {
        if (polled[0].revents != 0 && rules_changed(polled[0].fd))
            reload(rules);
        if (polled[1].revents != 0) {
            if (fgets(line, sizeof line, stdin) == NULL)
                break;
            decide(rules, line);
        }
    }
    callrecording_close(rules);
    close(polled[0].fd);
    return 0;
}
