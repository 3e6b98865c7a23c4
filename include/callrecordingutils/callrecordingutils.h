/**
 * @file
 * The library in C: decide calls, reload the rules, check patterns.
 *
 *     callrecording_rules *rules = callrecording_open(NULL);
 *     callrecording_rule const *rule;
 *     int32_t answer;
 *     answer = callrecording_decide(rules, "201@pbx:5060", CALLRECORDING_SIP,
 *                                   "150", CALLRECORDING_NUMBER, &rule);
 *     if (answer == CALLRECORDING_YES) {
 *         start_recording(rule->record_to, rule->recording_duration);
 *         callrecording_rule_free(rule);
 *     }
 *     callrecording_close(rules);
 *
 * A handle has the rules of one rule file in memory. Handles are independent of each other, and of
 * the C++ classes of this library. Rules are edited elsewhere, by callrecordingctl or with those
 * classes.
 *
 * Texts are NUL-terminated bytes, in and out. What is handed in stays the caller's and is not
 * needed any more when the function returns. Out comes only what the caller provides the room for,
 * and the rule of a decision, which callrecording_rule_free takes back.
 *
 * Threads: any number of threads may use one handle at once; only callrecording_close must be alone
 * with it. A decision never waits for a reload that reads the file. The child of a fork may use a
 * handle if no thread was inside a function of this library when it forked. Not for signal
 * handlers.
 *
 * No function throws, prints, ends the process or changes its state. All integers are 32 bits wide
 * but the sizes; constants are macros, so that their values are the same in every language.
 */

#ifndef CALLRECORDINGUTILS_CALLRECORDINGUTILS_H
#define CALLRECORDINGUTILS_CALLRECORDINGUTILS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default) /* For the build of the library. */

#define CALLRECORDING_VERSION_MAJOR 1 /**< Of this header. */
#define CALLRECORDING_VERSION_MINOR 0 /**< Of this header. */
#define CALLRECORDING_VERSION_PATCH 0 /**< Of this header. */
/** The version of this header, 1.2.3 as 10203; callrecording_version() has that of the library. */
#define CALLRECORDING_VERSION                                                                      \
    (CALLRECORDING_VERSION_MAJOR * 10000 + CALLRECORDING_VERSION_MINOR * 100 +                     \
     CALLRECORDING_VERSION_PATCH)

/* Answers. Never anything else. */
#define CALLRECORDING_ERROR (-1) /**< Undecided: an argument is none, or there is no memory. */
#define CALLRECORDING_NO 0       /**< Not recorded, not done, malformed. */
#define CALLRECORDING_YES 1      /**< Recorded, done, well formed. */
#define CALLRECORDING_DOUBTFUL 2 /**< Of callrecording_check_pattern only. */

/* Call types, of a side of a call and of a side of a rule. */
#define CALLRECORDING_NUMBER 0  /**< A number, as 150. */
#define CALLRECORDING_SIP 1     /**< user@host or user@host:port. */
#define CALLRECORDING_NUMBER2 2 /**< A number of a second kind. */
#define CALLRECORDING_ANY 3 /**< A side of a rule only: a number, or the user of a SIP address. */

/** The rules of one rule file. */
typedef struct callrecording_rules callrecording_rules;

/**
 * A rule. Only the library makes one; later versions may add members at the end. The texts are
 * never null, and live as long as the rule.
 */
typedef struct callrecording_rule {
    int32_t place;                  /**< Where it stands among the rules, counted from 0. */
    int32_t id;                     /**< Its identifier. */
    int32_t recording_type;         /**< 0 or 1; what it means is up to who records. */
    int32_t caller_call_type;       /**< Of the calling side. */
    int32_t called_call_type;       /**< Of the called side. */
    char const* caller_pattern;     /**< Of the calling side, in the form that the file holds. */
    char const* called_pattern;     /**< Of the called side, as caller_pattern. */
    char const* record_to;          /**< Where to record to. */
    char const* recording_duration; /**< How long to record. */
    char const* description;        /**< Free text. */
} callrecording_rule;

/** Returns the version of the library, in the form of CALLRECORDING_VERSION. */
int32_t callrecording_version(void);

/**
 * Opens the rule file telephony/callrecordingdb in directory and reads it. directory may lack the
 * slash at its end; NULL stands for the one that the environment variable QUVA_PATH names, or
 * "/etc/quva-conf/" when that is unset. A missing file is one without rules.
 *
 * Returns the handle, NULL only when there is no memory. When the file cannot be read the handle
 * has no rules: callrecording_last_failure says why, and callrecording_reload tries again.
 */
callrecording_rules* callrecording_open(char const* directory);

/** Ends the life of a handle. Rules of decisions live on. NULL is left alone. */
void callrecording_close(callrecording_rules* rules);

/**
 * Reads the rule file again. Returns CALLRECORDING_YES when the handle has the rules of the file
 * now; CALLRECORDING_ERROR when the file could not be read to its end: the handle then keeps the
 * rules that it has, and callrecording_last_failure says why.
 */
int32_t callrecording_reload(callrecording_rules* rules);

/** Returns how many rules the handle has, the disabled ones included; CALLRECORDING_ERROR for NULL.
 */
int32_t callrecording_count(callrecording_rules* rules);

/**
 * Returns whether the call is recorded: CALLRECORDING_YES or CALLRECORDING_NO, or
 * CALLRECORDING_ERROR when rules, caller or called is NULL, when a call type is none of a call (0
 * to 2), or when there is no memory. On YES the rule that decides, the first enabled one whose two
 * sides match, is written to *rule; give it back with callrecording_rule_free. In all other cases
 * *rule is NULL. rule may be NULL for those who do not want it.
 *
 * Addresses are compared as they are, byte for byte. In a SIP address the last "@" ends the user
 * part, and the last ":" behind it, unless inside of [ ], begins the port.
 */
int32_t callrecording_decide(callrecording_rules* rules, char const* caller, int32_t caller_type,
                             char const* called, int32_t called_type,
                             callrecording_rule const** rule);

/** Gives a rule back. NULL is left alone. */
void callrecording_rule_free(callrecording_rule const* rule);

/**
 * Writes why the last reading of the file by this handle failed: path, line where there is one, and
 * reason; the empty text when it did not fail. The text is cut to fit into size bytes with its NUL;
 * buffer may be NULL when size is 0. Returns the length of the whole text, 0 when nothing failed.
 * For NULL, which is what callrecording_open returns without memory, the text says that.
 */
size_t callrecording_last_failure(callrecording_rules* rules, char* buffer, size_t size);

/**
 * Checks a pattern for the side of a rule with this call type (0 to 3), in the form that people
 * write, as in 0{10-20}* or \*72. Returns
 *
 *     CALLRECORDING_YES       it is well formed;
 *     CALLRECORDING_DOUBTFUL  it is well formed, but surely not meant;
 *     CALLRECORDING_NO        it is malformed;
 *     CALLRECORDING_ERROR     pattern is NULL, the call type is none, or there is no memory.
 *
 * For DOUBTFUL and NO *position is the byte of pattern to look at, counted from 0 and at most its
 * length, and reason one English sentence that says what to change, cut to fit into size bytes with
 * its NUL (256 are enough). In the other cases *position is 0 and reason empty. position may be
 * NULL; so may reason when size is 0.
 */
int32_t callrecording_check_pattern(char const* pattern, int32_t call_type, size_t* position,
                                    char* reason, size_t size);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
