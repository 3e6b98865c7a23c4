/// @file
/// The recording decision: is this call to be recorded, and under which rule?
///
/// A rule has a pattern for the calling and one for the called side. Patterns are matched here in
/// the matched form, in which they are stored:
///
///     Written        Matches
///     a literal      the same character; a letter or digit or one of #^/_=+%~@;().:$&'
///     ?              exactly one character of any kind
///     *              any run of characters, also an empty one
///     [items]        one character that some item accepts and no exclusion rejects
///     <items>        a run of one or more characters that, as a whole, some item accepts and no
///                    exclusion rejects
///     anything else  ends the match with success; what follows is not looked at
///
/// Items are separated by ",": a value (5, 12, 1?3), a range of numbers (1-20; 00-59 compares two
/// characters wide), a range of letters (a-f), or an exclusion ("!" and a value). The bytes of a
/// text are compared as they are: case counts, and no character encoding is assumed.
///
///     Pattern           matches                  does not match
///     12*               12, 12345                1
///     *45               45, 12345                451
///     1?3               123, 1x3                 13, 1234
///     [1-3]00           100, 300                 400, 1100
///     9<1-20>           91, 915                  921, 9
///     <100-199,!150>    100, 199                 150, 99
///     <00-59>           07, 59                   7, 60
///
/// The entry form, in which people write patterns and PatternValidation.h checks them, has "{" and
/// "}" in the place of "<" and ">". A stored "{" ends the match with success, so convert before
/// storing.

#ifndef CALLRECORDINGUTILS_CCALLRECORDINGASSISTANT_H
#define CALLRECORDINGUTILS_CCALLRECORDINGASSISTANT_H

#include <cstdint>
#include <string>

#include <callrecordingutils/CallRecordingRuleParams.h>
#include <callrecordingutils/Export.h>
#include <callrecordingutils/platform/CallParams.h>
#include <callrecordingutils/platform/ThreadMutex.h>

namespace CallRecordingUtils {

class CCallRecordingDB;
class CCallRecordingLogger;

/// What a pattern consists of, and what a match consumed. The operations below only ever add.
struct wild_card_counts {
    std::int32_t symbol_count = 0;           ///< Literals outside sets and range expressions.
    std::int32_t grouped_symbol_count = 0;   ///< Characters that the items of groups consumed.
    std::int32_t question_count = 0;         ///< "?" outside sets and range expressions.
    std::int32_t grouped_question_count = 0; ///< "?" of items consumed inside groups.
    std::int32_t symbol_set_count = 0;       ///< "[...]".
    std::int32_t range_expression_count = 0; ///< "<...>".
    std::int32_t star_count = 0;             ///< "*".
};

/// Decides calls for one telephony process or one part of it.
///
/// An assistant holds one reference on the process-wide CCallRecordingDB from its construction to
/// its destruction; any number may exist at once and share it.
///
/// Threads: one assistant may be used by any number of threads. A decision and a reload made
/// through the same assistant never overlap. A reload through another assistant, or an edit or
/// reload made on the database itself, is not held off: callers that mix these on several threads
/// put a lock of their own around them. Construct assistants while no load or reload runs, through
/// whichever object: both would load. The matching operations touch no state and need no lock at
/// all.
///
/// Reloads: a decision waits while a decision or a reload through the same assistant runs. A reload
/// reads the file and arranges its rules, which takes about 20 ms for 20,000 rules on a server's
/// processor, and several times as long where other threads keep the processors busy. Hosts that
/// cannot let calls wait that long use the interface in C, callrecordingutils.h: a handle reads the
/// rules aside, and its decisions wait only for the moment of the exchange.
///
/// fork: in the child of a process with threads, until it calls exec, the matching operations may
/// be called, and an assistant may decide that no other thread was using when the process forked,
/// while no reload or edit ran. Nothing else: what another thread held stays locked for ever.
///
/// Errors: nothing is thrown but std::bad_alloc, and every lock is released then.
class CALLRECORDINGUTILS_EXPORT CCallRecordingAssistant {
  public:
    /// Takes a reference on the database and makes sure that its rules are loaded. A rule file that
    /// cannot be read leaves the list empty or partial; the trace log says so. To be told, call
    /// CCallRecordingDB::GetInstance without load, and then Load, before. withLogger asks for the
    /// trace log. It has an effect only on the first reference of the process.
    explicit CCallRecordingAssistant(bool withLogger);

    /// Gives the reference back; the last one destroys the database and the trace log.
    /// REQUIRES: no operation of this assistant is running.
    virtual ~CCallRecordingAssistant();

    CCallRecordingAssistant(CCallRecordingAssistant const&) = delete;
    CCallRecordingAssistant& operator=(CCallRecordingAssistant const&) = delete;

    /// Returns whether an enabled rule matches the call: the first one, in list order, whose two
    /// sides both match (see IsSideMatched). On true the rule is copied to *rule; rule may be null.
    /// On false *rule is left as it was. Reads memory only: no file access, no log line.
    bool IsCallRecordingAllowed(CallParams const& caller, CallType const& callerType,
                                CallParams const& called, CallType const& calledType,
                                CallRecordingRuleParams* rule);

    /// Reads the rule file again, in the current view mode. Returns false when it could not be
    /// read; the list is then empty or partial, and the rules listed before are gone. Records
    /// borrowed from the database become invalid.
    bool ReloadCallRecordingRules();

    /// The process-wide trace log, or null when there is none. Borrowed: it lives as long as some
    /// reference on the database.
    CCallRecordingLogger* GetLogger();

    /// Returns whether one side of a call satisfies one side of a rule. Types that differ never
    /// match unless ruleType is CALL_TYPE_ANY. Compared is, by callType:
    ///   CALL_TYPE_NUMBER, CALL_TYPE_NUMBER2   params.user
    ///   CALL_TYPE_SIP                         params.user when ruleType is CALL_TYPE_ANY, else
    ///                                         user@host:port with "*" for an empty port
    ///   anything else                         the empty text
    /// A SIP rule pattern is brought into the form user@host:port too, with "*" for a port that it
    /// lacks; without an "@" it never matches. An empty pattern never matches.
    bool IsSideMatched(CallParams const& params, CallType const& callType,
                       std::string const& pattern, CallType const& ruleType) const;

    /// Splits address at its last "@". Returns false, and leaves both outputs as they were, when
    /// there is none.
    bool ParseSIPAddress(std::string const& address, std::string& user, std::string& host) const;

    /// Splits off the port behind the last ":", then splits the text before it like the
    /// three-argument form, whose result is returned. port is always written; it is empty when
    /// there is no ":".
    bool ParseSIPAddress(std::string const& address, std::string& user, std::string& host,
                         std::string& port) const;

    /// Returns whether the whole address matches the whole pattern. Note the order of the
    /// arguments. On true, counts has grown by what the match consumed, where every "*" and every
    /// range expression takes the shortest run with which the rest still matches. On false counts
    /// is as it was.
    ///
    /// A group that is not closed does not match once the match reaches it; an item that holds a
    /// character outside the pattern language accepts nothing once the reading gets there.
    ///
    /// Time is bounded by (pattern length) x (address length) steps; a range expression takes at
    /// each place of the address (longest run that it can accept) x (length of its list) of them.
    /// Stack use is fixed. Heap is used only where range expressions follow each other without a
    /// "*" between and the address has more than 120 characters, some 33 bytes for each of them,
    /// and for items such as a-bc, whose range goes on.
    bool IsMatching(std::string const& address, std::string const& pattern,
                    wild_card_counts& counts) const;

    /// Returns whether some positive item of itemList (the text between the brackets of a group)
    /// accepts the whole candidate; exclusions are passed over. An empty candidate is never
    /// accepted. On true counts has grown by what was consumed: in the grouped_ counters when
    /// grouped, else in symbol_count and question_count. What items before the accepting one
    /// consumed of the candidate stays counted, unless such an item used up the whole candidate too
    /// early or held a character outside the pattern language. On false counts is as it was.
    bool IsInRange(std::string const& itemList, std::string const& candidate,
                   wild_card_counts& counts, bool const& grouped) const;

    /// Returns whether candidate survives the exclusions of itemList: true when none accepts it.
    bool Exclude(std::string const& itemList, std::string const& candidate) const;

    /// Returns whether c is a literal of the pattern language.
    bool IsAvailableSymbol(char const& c) const;

    /// Returns whether text is exactly one ASCII letter.
    bool IsCharacter(std::string const& text) const;

    /// Adds the constructs of pattern to counts; what stands inside groups is not counted. A group
    /// that is not closed counts as one group, and the counting ends there.
    void GetCountOfWildCard(std::string const& pattern, wild_card_counts& counts) const;

  private:
    CCallRecordingDB* mpCallRecordingDB; // Shared; given back through CloseInstance.
    ThreadMutex* mpMutex;                // Owned.
};

} // namespace CallRecordingUtils

#endif
