/**
 * @file
 * The library in C: decide calls, keep up with the rule file, explain decisions, check patterns.
 *
 *     callrecording_rules *rules = callrecording_open(NULL);
 *     callrecording_party caller = CALLRECORDING_PARTY_INIT;
 *     callrecording_party called = CALLRECORDING_PARTY_INIT;
 *     callrecording_rule const *rule;
 *
 *     caller.text = "sip:201@pbx.example.com";
 *     called.text = "tel:+49-30-1234";
 *     if (callrecording_decide_parties(rules, &caller, &called, &rule) == CALLRECORDING_YES)
 *         start_recording(rule->record_to, rule->recording_duration);
 *     callrecording_rule_free(rule);
 *     callrecording_close(rules);
 *
 * A handle holds the rules of one rule file in memory, in the order of the file. Handles are
 * independent of each other and of this library's C++ classes. Rules are edited elsewhere: with
 * callrecordingctl or with those classes.
 *
 * Texts are bytes. They end with a NUL where no length goes with them. The caller owns what it
 * passes in; the library does not need it after the function has returned. What comes out goes into
 * memory of the caller, apart from rules, which callrecording_rule_free takes back.
 *
 * Structures begin with their size, so that later versions can add members at the end. Set it to
 * sizeof the structure before you pass one in (the INIT macros do): the library reads and writes
 * no more than that. In a structure that the library makes, size says how much of it there is.
 *
 * Threads: any number of threads may use a handle at once; only callrecording_close must be alone
 * with it. Deciding threads do not wait for each other, nor for a reload. The child of a fork may
 * use a handle if no thread was inside a function of this library when it forked. Do not call the
 * library from a signal handler.
 *
 * No function throws, prints, ends the process or changes the process's state. Integers have 32
 * bits, apart from sizes, times and counts; constants are macros, so that every language sees the
 * same values.
 */

#ifndef CALLRECORDINGUTILS_CALLRECORDINGUTILS_H
#define CALLRECORDINGUTILS_CALLRECORDINGUTILS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default) /* For the build of the library. */

/* The version of this header, which the build takes for that of the library. */
#define CALLRECORDING_VERSION_MAJOR 1 /**< Of this header. */
#define CALLRECORDING_VERSION_MINOR 0 /**< Of this header. */
#define CALLRECORDING_VERSION_PATCH 0 /**< Of this header. */
/** The version of this header, 1.2.3 as 10203; callrecording_version() has that of the library. */
#define CALLRECORDING_VERSION                                                                      \
    (CALLRECORDING_VERSION_MAJOR * 10000 + CALLRECORDING_VERSION_MINOR * 100 +                     \
     CALLRECORDING_VERSION_PATCH)

/* Answers. A function returns no others than its description names. */
#define CALLRECORDING_ERROR (-1) /**< Undecided: see the function. */
#define CALLRECORDING_NO 0       /**< Not recorded, nothing to do, malformed. */
#define CALLRECORDING_YES 1      /**< Recorded, done, well formed. */
#define CALLRECORDING_DOUBTFUL 2 /**< From callrecording_check_pattern only. */

/* Call types, of one side of a call and of one side of a rule. */
#define CALLRECORDING_NUMBER 0  /**< A number, such as 150. */
#define CALLRECORDING_SIP 1     /**< user@host or user@host:port. */
#define CALLRECORDING_NUMBER2 2 /**< A number of a second kind. */
#define CALLRECORDING_ANY 3     /**< Sides of rules only: a number, or the user of a SIP address. */

/* States of a rule. */
#define CALLRECORDING_ENABLED 0  /**< The rule takes part in decisions. */
#define CALLRECORDING_DISABLED 1 /**< The rule takes no calls. */

/* Kinds of failures. */
#define CALLRECORDING_FAILURE_NONE 0       /**< Nothing failed. */
#define CALLRECORDING_FAILURE_MISSING 1    /**< There is no such file, or no such directory. */
#define CALLRECORDING_FAILURE_PERMISSION 2 /**< This process may not read it. */
#define CALLRECORDING_FAILURE_MALFORMED 3  /**< It can be opened, but is not a rule file. */
#define CALLRECORDING_FAILURE_MEMORY 4     /**< There is not enough memory. */
#define CALLRECORDING_FAILURE_OTHER 5      /**< Something else; the text says what. */

/** As the length of a text: it ends with a NUL. */
#define CALLRECORDING_NUL_TERMINATED ((size_t)-1)

/** The record_to of a rule that forbids recording. */
#define CALLRECORDING_NEVER "never:"

/** Instead of a place: the rule that a call comes nearest to. */
#define CALLRECORDING_NEAREST (-1)

/** The rules of one rule file. Since 1.0. */
typedef struct callrecording_rules callrecording_rules;

/**
 * A rule. Only the library makes one; its texts are never null and live as long as the rule. Since
 * 1.0.
 */
typedef struct callrecording_rule {
    size_t size;                    /**< Of this structure, in the library that made it. */
    int32_t place;                  /**< Its place among the rules, counted from 0. */
    int32_t id;                     /**< Its identifier. */
    int32_t state;                  /**< CALLRECORDING_ENABLED or CALLRECORDING_DISABLED. */
    int32_t forbids_recording;      /**< 1 when record_to is CALLRECORDING_NEVER, else 0. */
    int32_t recording_type;         /**< 0 or 1; what it means is up to who records. */
    int32_t caller_call_type;       /**< The call type of the calling side. */
    int32_t called_call_type;       /**< The call type of the called side. */
    char const* caller_pattern;     /**< The pattern of the calling side, in the stored form. */
    char const* called_pattern;     /**< The pattern of the called side, in the stored form. */
    char const* record_to;          /**< Where to record to. */
    char const* recording_duration; /**< How long to record. */
    char const* description;        /**< Free text. */
} callrecording_rule;

/**
 * One side of a call, as a telephone system has it: either text, an address such as
 * "Alice" <sip:201@pbx>;tag=1, sip:201@pbx:5060, 201@pbx or +49301234; or, when text is NULL, the
 * three parts of one. Each text has a length, which may be CALLRECORDING_NUL_TERMINATED; a NULL is
 * an empty text. An anonymous caller is empty. docs/calls.md says what is read out of an address;
 * there is none that cannot be read. Since 1.0.
 *
 * The user is as it stands in the URI, with its %XX. (PJSIP has already decoded it: give PJSIP's
 * URIs as text.) A port of 0 is an empty text.
 */
typedef struct callrecording_party {
    size_t size;        /**< sizeof(callrecording_party). */
    char const* text;   /**< The whole address, or NULL. */
    size_t text_length; /**< Of text. */
    char const* user;   /**< When text is NULL: the user or the number. */
    size_t user_length; /**< Of user. */
    char const* host;   /**< When text is NULL: the host. */
    size_t host_length; /**< Of host. */
    char const* port;   /**< When text is NULL: the port, in digits. */
    size_t port_length; /**< Of port. */
} callrecording_party;

/** An empty party. Its lengths are CALLRECORDING_NUL_TERMINATED. Since 1.0. */
#define CALLRECORDING_PARTY_INIT                                                                   \
    {                                                                                              \
        sizeof(callrecording_party), NULL, CALLRECORDING_NUL_TERMINATED, NULL,                     \
            CALLRECORDING_NUL_TERMINATED, NULL, CALLRECORDING_NUL_TERMINATED, NULL,                \
            CALLRECORDING_NUL_TERMINATED                                                           \
    }

/** Why the rule file could not be read. Since 1.0. */
typedef struct callrecording_failure {
    size_t size;     /**< sizeof(callrecording_failure). */
    int32_t kind;    /**< One of CALLRECORDING_FAILURE_...; NONE when nothing failed. */
    char text[1020]; /**< Path, line where there is one, and reason, cut to fit; or empty. */
} callrecording_failure;

/** A failure to be filled in. Since 1.0. */
#define CALLRECORDING_FAILURE_INIT                                                                 \
    { sizeof(callrecording_failure), CALLRECORDING_FAILURE_NONE, "" }

/** What a handle holds, how it came to hold it, and what it has answered. Since 1.0. */
typedef struct callrecording_state {
    size_t size;         /**< sizeof(callrecording_state). */
    int32_t is_loaded;   /**< 1 when rules were ever loaded, else 0: every answer is ERROR then. */
    int32_t rule_count;  /**< How many rules there are, the disabled ones included. */
    char digits[12];     /**< The state of the file when it was loaded: the first eight digits of
                              the SHA-256 of its bytes, as callrecordingctl prints it; empty when
                              nothing was loaded yet. A missing file has that of an empty one. */
    int32_t failed_kind; /**< The kind of the last failed load; NONE when none ever failed. */
    int64_t loaded_time; /**< When the rules were loaded, in seconds since 1970; 0 for never. */
    int64_t failed_time; /**< When a load last failed, likewise. */
    uint64_t loads;      /**< How many times the rules were read, failures included. */
    uint64_t failed_loads;      /**< How many of these failed. */
    uint64_t answers_yes;       /**< How many calls were answered YES, */
    uint64_t answers_no;        /**< NO, because no rule took them, */
    uint64_t answers_forbidden; /**< NO, because a rule forbids to record them, */
    uint64_t answers_error;     /**< and ERROR. (On 32-bit systems modulo 2 to the power of 32.) */
    char failed_text[1024]; /**< Why the last failed load failed, whatever was loaded after it; cut
                                 to fit; empty when none ever failed. */
} callrecording_state;

/** A state to be filled in. Since 1.0. */
#define CALLRECORDING_STATE_INIT                                                                   \
    { sizeof(callrecording_state), 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, "" }

/** How a call fares with a rule. Since 1.0. */
typedef struct callrecording_explanation {
    size_t size;            /**< sizeof(callrecording_explanation). */
    int32_t place;          /**< The rule's place; -1 when there is none. */
    int32_t is_enabled;     /**< 1 when the rule is enabled. */
    int32_t caller_matches; /**< 1 when the calling side matches. */
    int32_t called_matches; /**< 1 when the called side matches. */
    char reason[1024]; /**< Why the rule does not take the call, such as "caller does not match 2*:
                            character 1: "5" is not 2"; cut to fit. Empty when it takes the call. */
} callrecording_explanation;

/** An explanation to be filled in. Since 1.0. */
#define CALLRECORDING_EXPLANATION_INIT                                                             \
    { sizeof(callrecording_explanation), -1, 0, 0, 0, "" }

/** Returns the version of the library, in the form of CALLRECORDING_VERSION. Since 1.0. */
int32_t callrecording_version(void);

/**
 * Opens the rule file telephony/callrecordingdb in directory and reads it. The directory's name may
 * lack its last slash. NULL stands for the directory that the environment variable QUVA_PATH names,
 * or "/etc/quva-conf/" when that is unset. A file that is missing from a directory that exists is
 * one without rules.
 *
 * Returns the handle; NULL only when there is no memory. When the file cannot be read the handle
 * answers CALLRECORDING_ERROR until a reload succeeds; callrecording_last_failure says why. Since
 * 1.0.
 */
callrecording_rules* callrecording_open(char const* directory);

/**
 * Makes a handle of rules that are in memory: text is what a rule file would hold, and length may
 * be CALLRECORDING_NUL_TERMINATED. Returns as callrecording_open; a malformed text counts as a file
 * that cannot be read. Needs /proc to be mounted. Since 1.0.
 */
callrecording_rules* callrecording_open_text(char const* text, size_t length);

/** Closes a handle. Rules that it has returned live on. NULL is ignored. Since 1.0. */
void callrecording_close(callrecording_rules* rules);

/**
 * Reads the rule file again. Returns
 *
 *     CALLRECORDING_YES    the handle now holds the rules of the file;
 *     CALLRECORDING_ERROR  the file could not be read to its end; the handle keeps its rules.
 *
 * On YES without a file the handle holds no rules, and *failure is of kind MISSING. On ERROR
 * *failure says why.
 *
 * failure may be NULL; nobody else writes to it, however many threads reload. rules may come from a
 * text, or be NULL: ERROR. Since 1.0.
 */
int32_t callrecording_reload(callrecording_rules* rules, callrecording_failure* failure);

/**
 * Reads the rule file again if it is no longer the file that was last read; to find out takes one
 * stat. Returns CALLRECORDING_YES and CALLRECORDING_ERROR as callrecording_reload does, and
 * CALLRECORDING_NO when the rules are those of the file, or another thread is just reading it.
 * While a file that could not be read stays the same, the answer stays ERROR, and the file is not
 * read again. For rules that come from a text the answer is NO.
 *
 * Two changes within one tick of the system's clock can look alike. So a file that had changed less
 * than 50 ms before it was read is read once more by the first call after these 50 ms. Since 1.0.
 */
int32_t callrecording_reload_if_changed(callrecording_rules* rules, callrecording_failure* failure);

/**
 * Writes why the last attempt of this handle to read its rules failed: path, line where there is
 * one, and reason; that the file is missing, where that left the handle without rules; or the empty
 * text. The text is cut to fit into size bytes with its NUL; buffer may be NULL when size is 0.
 * Returns the length of the whole text. For NULL, which is what callrecording_open returns without
 * memory, the text says that. Since 1.0.
 */
size_t callrecording_last_failure(callrecording_rules* rules, char* buffer, size_t size);

/**
 * Returns how many rules the handle holds, the disabled ones included; CALLRECORDING_ERROR for
 * NULL. Since 1.0.
 */
int32_t callrecording_count(callrecording_rules* rules);

/**
 * Fills in *state. Returns CALLRECORDING_YES; CALLRECORDING_ERROR when an argument is NULL, when
 * state->size is smaller than in version 1.0, or when there is no memory. Since 1.0.
 */
int32_t callrecording_get_state(callrecording_rules* rules, callrecording_state* state);

/**
 * Decides whether the call between two parties is recorded. The first enabled rule whose two sides
 * match decides. A rule side of type number sees a party's user if that is a number, whatever the
 * host; one of type any sees the user; one of type SIP sees user@host:port if there is a host; one
 * of type number2 sees no party. Returns
 *
 *     CALLRECORDING_YES    record, as the rule says;
 *     CALLRECORDING_NO     do not record;
 *     CALLRECORDING_ERROR  undecided.
 *
 * On NO either no rule takes the call, and *rule is NULL, or the rule that takes it forbids to
 * record it (its record_to is CALLRECORDING_NEVER). On ERROR *rule is NULL: an argument is NULL or
 * a party's size is smaller than in version 1.0, rules were never loaded, or there is no memory.
 *
 * Give the rule back with callrecording_rule_free. rule may be NULL for those who do not want it.
 * Since 1.0.
 */
int32_t callrecording_decide_parties(callrecording_rules* rules, callrecording_party const* caller,
                                     callrecording_party const* called,
                                     callrecording_rule const** rule);

/**
 * Decides about a call as the C++ class CCallRecordingAssistant does: each side is one text of one
 * call type, compared byte for byte. In a SIP address the last "@" ends the user, and the last ":"
 * after it, unless inside [ ], begins the port. A telephone system does better to ask
 * callrecording_decide_parties, which knows what rules of each type compare.
 *
 * Returns CALLRECORDING_YES, with the rule as callrecording_decide_parties; CALLRECORDING_NO when
 * no rule takes the call, or the one that does forbids to record it; CALLRECORDING_ERROR also when
 * a call type is not 0 to 2. On NO and ERROR *rule is NULL. Since 1.0.
 */
int32_t callrecording_decide(callrecording_rules* rules, char const* caller, int32_t caller_type,
                             char const* called, int32_t called_type,
                             callrecording_rule const** rule);

/**
 * Returns CALLRECORDING_YES and in *rule the rule at a place, counted from 0, enabled or not; give
 * it back with callrecording_rule_free. Returns CALLRECORDING_NO when there is no such place,
 * CALLRECORDING_ERROR when an argument is NULL or there is no memory; *rule is NULL then.
 * Since 1.0.
 */
int32_t callrecording_rule_at(callrecording_rules* rules, int32_t place,
                              callrecording_rule const** rule);

/** Gives a rule back. NULL is ignored. Since 1.0. */
void callrecording_rule_free(callrecording_rule const* rule);

/**
 * Explains why the rule at a place does not take the call between two parties.
 * CALLRECORDING_NEAREST as the place chooses, of the rules that do not take it, the one that the
 * call comes nearest to; the time for that grows with the number of rules. Returns
 *
 *     CALLRECORDING_YES    both sides match and the rule is enabled (an earlier one may decide);
 *     CALLRECORDING_NO     the rule does not take the call, and explanation->reason says why;
 *     CALLRECORDING_ERROR  it cannot be explained.
 *
 * NO for CALLRECORDING_NEAREST may also mean that there is no such rule. ERROR: there is no such
 * place, an argument is NULL, a size is smaller than in version 1.0, or there is no memory.
 *
 * Since 1.0.
 */
int32_t callrecording_explain(callrecording_rules* rules, callrecording_party const* caller,
                              callrecording_party const* called, int32_t place,
                              callrecording_explanation* explanation);

/**
 * Checks a pattern for the side of a rule with this call type (0 to 3), in the entry form, the one
 * that people write, as in 0{10-20}* or \*72. Returns
 *
 *     CALLRECORDING_YES       it is well formed;
 *     CALLRECORDING_DOUBTFUL  it is well formed, but surely not meant;
 *     CALLRECORDING_NO        it is malformed;
 *     CALLRECORDING_ERROR     pattern is NULL, there is no such call type, or no memory.
 *
 * For DOUBTFUL and NO *position is the byte of pattern to look at, counted from 0 and at most its
 * length, and reason one English sentence that says what to change, cut to fit into size bytes with
 * its NUL (256 are enough). In the other cases *position is 0 and reason empty. position may be
 * NULL; so may reason when size is 0. Since 1.0.
 */
int32_t callrecording_check_pattern(char const* pattern, int32_t call_type, size_t* position,
                                    char* reason, size_t size);

/**
 * Writes the stored form of a pattern in the entry form: what the rule file holds and the matcher
 * reads, such as 0<10-20>* and #72. Returns CALLRECORDING_YES; CALLRECORDING_NO when the pattern is
 * malformed, which callrecording_check_pattern explains; CALLRECORDING_ERROR as that function does.
 * *length, unless length is NULL, becomes the length of the whole text, which is cut to fit into
 * size bytes with its NUL; buffer may be NULL when size is 0. On NO and ERROR the text is empty.
 * Since 1.0.
 */
int32_t callrecording_stored_form(char const* entry, int32_t call_type, char* buffer, size_t size,
                                  size_t* length);

/**
 * Writes the entry form of a stored pattern, as callrecording_stored_form does the reverse. Returns
 * CALLRECORDING_NO, and writes the pattern as it is, when no entry form has that stored form. Since
 * 1.0.
 */
int32_t callrecording_entry_form(char const* stored, int32_t call_type, char* buffer, size_t size,
                                 size_t* length);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
