/// @file
/// The recording decision: is this call to be recorded, and under which rule?
///
/// A rule has one pattern for the calling and one for the called side. Patterns are matched in the
/// matched form, in which they are also stored:
///
///     Written        Matches
///     a literal      the same character: a letter, a digit, or one of #^/_=+%~@;().:$&'
///     ?              exactly one character of any kind
///     *              any run of characters, even an empty one
///     [items]        one character that some item accepts and no exclusion rejects
///     <items>        a run of one or more characters that, as a whole, some item accepts and no
///                    exclusion rejects
///     anything else  ends the match with success; what follows is ignored
///
/// Items are separated by ",": a value (5, 12, 1?3), a range of numbers (1-20; 00-59 takes exactly
/// two characters), a range of letters (a-f), or an exclusion ("!" and a value). Bytes are compared
/// as they are: case matters, and no character encoding is assumed.
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
/// In the entry form, which people write and PatternValidation.h checks, range expressions are
/// written between "{" and "}" instead of "<" and ">". A "{" that is stored ends the match with
/// success, so convert patterns before storing them.

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

/// What a pattern consists of, and what a match consumed. The operations below only add to these.
struct wild_card_counts {
    std::int32_t symbol_count = 0;           ///< Literals outside sets and range expressions.
    std::int32_t grouped_symbol_count = 0;   ///< Characters that the items of groups consumed.
    std::int32_t question_count = 0;         ///< "?" outside sets and range expressions.
    std::int32_t grouped_question_count = 0; ///< Characters that a "?" in a group consumed.
    std::int32_t symbol_set_count = 0;       ///< "[...]".
    std::int32_t range_expression_count = 0; ///< "<...>".
    std::int32_t star_count = 0;             ///< "*".
};

/// Decides calls for a telephony process or a part of it.
///
/// An assistant holds a reference to the process-wide CCallRecordingDB from its construction to its
/// destruction. Any number of assistants may exist at once; they share the database.
///
/// Threads: any number of threads may use one assistant. It makes one decision or reload at a time,
/// and the others wait; a reload reads the file. It does not wait for a reload through another
/// assistant, nor for an edit or reload of the database itself: callers that do these in several
/// threads put a lock of their own around them. Do not construct an assistant while any object
/// loads or reloads, since both would load. The matching operations use no shared state and no
/// lock.
///
/// Reloads: a decision waits while a decision or a reload through the same assistant runs. A reload
/// reads the file and arranges its rules, which takes about 20 ms for 20,000 rules on a server's
/// processor, and several times as long where other threads keep the processors busy. Hosts that
/// cannot let calls wait that long use the interface in C, callrecordingutils.h: a handle reads the
/// rules aside, and its decisions wait only for the moment of the exchange.
///
/// fork: in the child of a process with threads, before it calls exec, only two things are allowed:
/// the matching operations, and decisions of an assistant that no other thread was using when the
/// process forked, if no reload or edit was running. What another thread had locked stays locked
/// for ever.
///
/// Errors: only std::bad_alloc is thrown, and every lock is released then.
class CALLRECORDINGUTILS_EXPORT CCallRecordingAssistant {
  public:
    /// Takes a reference to the database and loads the rules unless they are loaded. When the rule
    /// file cannot be read, the list is empty or incomplete, and only the trace log says so; to get
    /// the result, call CCallRecordingDB::GetInstance without load and then Load before this.
    /// withLogger asks for the trace log. Only the first reference of the process can create it.
    explicit CCallRecordingAssistant(bool withLogger);

    /// Gives the reference back. The last one destroys the database and the trace log.
    /// REQUIRES: no operation of this assistant is running.
    virtual ~CCallRecordingAssistant();

    CCallRecordingAssistant(CCallRecordingAssistant const&) = delete;
    CCallRecordingAssistant& operator=(CCallRecordingAssistant const&) = delete;

    /// Returns whether an enabled rule matches the call: the first one, in list order, whose two
    /// sides both match (see IsSideMatched). On true the rule is copied to *rule; rule may be null.
    /// On false *rule is unchanged. Neither reads the file nor writes to the log.
    bool IsCallRecordingAllowed(CallParams const& caller, CallType const& callerType,
                                CallParams const& called, CallType const& calledType,
                                CallRecordingRuleParams* rule);

    /// Reads the rule file again, in the current view mode. Returns false when it could not be
    /// read; the list is then empty or incomplete, and the earlier rules are gone. Records borrowed
    /// from the database become invalid.
    bool ReloadCallRecordingRules();

    /// Returns the process-wide trace log, or null when there is none. It is borrowed, and lives as
    /// long as there is a reference to the database.
    CCallRecordingLogger* GetLogger();

    /// Returns whether one side of a call satisfies one side of a rule. Types that differ do not
    /// match unless ruleType is CALL_TYPE_ANY. What is compared with pattern depends on callType:
    ///   CALL_TYPE_NUMBER, CALL_TYPE_NUMBER2   params.user
    ///   CALL_TYPE_SIP                         params.user when ruleType is CALL_TYPE_ANY, else
    ///                                         user@host:port with "*" for an empty port
    ///   anything else                         the empty text
    /// A pattern with the rule type CALL_TYPE_SIP is read as user@host:port too, with "*" for a
    /// missing port; without an "@" it never matches. Nor does an empty pattern, whatever its type.
    bool IsSideMatched(CallParams const& params, CallType const& callType,
                       std::string const& pattern, CallType const& ruleType) const;

    /// Splits address at its last "@". When there is none, returns false and leaves both outputs
    /// unchanged.
    bool ParseSIPAddress(std::string const& address, std::string& user, std::string& host) const;

    /// Splits off the port after the last ":", then splits the text before the ":" like the form
    /// with three arguments and returns its result. port is always written; it is empty when there
    /// is no ":".
    bool ParseSIPAddress(std::string const& address, std::string& user, std::string& host,
                         std::string& port) const;

    /// Returns whether the whole address matches the whole pattern. Note the order of the
    /// arguments. On true, what the match consumed has been added to counts; every "*" and every
    /// range expression consumes the shortest run with which the rest still matches. On false
    /// counts is unchanged.
    ///
    /// A match that reaches a group without its closing bracket fails. An item with a character
    /// outside the pattern language accepts nothing once that character is reached.
    ///
    /// Time is bounded by (pattern length) x (address length) steps, where a range expression takes
    /// (longest run that it can accept) x (length of its list) steps at each place of the address.
    /// Stack use is fixed. The heap is used only for two range expressions without a "*" between
    /// them, when the address has more than 120 characters, or when there are many elements beside
    /// them or long items in them; and for items such as a-bc, in which text follows the range.
    bool IsMatching(std::string const& address, std::string const& pattern,
                    wild_card_counts& counts) const;

    /// Returns whether some positive item of itemList (the text between the brackets of a group)
    /// accepts the whole candidate; exclusions are skipped. An empty candidate is never accepted.
    /// On true, what was consumed has been added to counts: to the grouped_ counters when grouped
    /// is true, else to symbol_count and question_count. This includes what the items before the
    /// accepting one consumed of the candidate, unless such an item consumed all of it before its
    /// own end or has a character outside the pattern language. On false counts is unchanged.
    bool IsInRange(std::string const& itemList, std::string const& candidate,
                   wild_card_counts& counts, bool const& grouped) const;

    /// Returns true when no exclusion of itemList accepts candidate, false when one does.
    bool Exclude(std::string const& itemList, std::string const& candidate) const;

    /// Returns whether c is a literal of the pattern language.
    bool IsAvailableSymbol(char const& c) const;

    /// Returns whether text is exactly one ASCII letter.
    bool IsCharacter(std::string const& text) const;

    /// Adds the constructs of pattern to counts; the items inside groups are not counted. A group
    /// without its closing bracket counts as one group, and ends the counting.
    void GetCountOfWildCard(std::string const& pattern, wild_card_counts& counts) const;

  private:
    CCallRecordingDB* mpCallRecordingDB; // A reference, given back by CloseInstance.
    ThreadMutex* mpMutex;                // Owned.
};

} // namespace CallRecordingUtils

#endif
