/// @file
/// The rule database: the process's one list of call-recording rules, and the one place where the
/// rule file is edited.
///
/// The rule file is "telephony/callrecordingdb" in the directory that the environment variable
/// QUVA_PATH names (joined as plain text, so the value ends in "/"; "/etc/quva-conf/" when unset).
/// The environment is read again by every operation that opens the file.

#ifndef CALLRECORDINGUTILS_CCALLRECORDINGDB_H
#define CALLRECORDINGUTILS_CCALLRECORDINGDB_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include <callrecordingutils/CallRecordingRuleParams.h>
#include <callrecordingutils/Export.h>
#include <callrecordingutils/platform/MultiSectionFile.h>
#include <callrecordingutils/platform/ThreadMutex.h>

namespace CallRecordingUtils {

class CCallRecordingLogger;
class RuleIndex;

/// Guards CCallRecordingDB's statics and the load that GetInstance makes. Taken by GetInstance and
/// CloseInstance only; a client has no need to take it.
CALLRECORDINGUTILS_EXPORT extern ThreadMutex cfgThreadMutex;

/// The rule database.
///
/// Life: obtain the one instance with GetInstance, give it back with CloseInstance, once for each
/// time.
///
/// Records: the instance owns every record of its list. Records reached through
/// GetCallRecordingRules or GetSelectedRule are borrowed and stay valid until the list is next
/// rebuilt: by Reload, by a Load that reads the file, by Cleanup, or by the last CloseInstance.
/// Records passed in stay the caller's.
///
/// Edits: each edit opens the rule file afresh, changes it and saves it once, so at every instant
/// the file is the one before the edit or the one after it. It is on disk when the edit returns
/// true, ReOrderRule excepted. What an edit does not touch (comments, unknown keys, order) keeps
/// its bytes. Except where noted an edit leaves the list in memory alone; Reload makes it visible
/// to decisions. A malformed file is never written. Nor is one that somebody else has saved since
/// the edit read it: the edit fails then, and may be repeated; hold a CRuleFileLock around edits to
/// keep others out. Patterns are stored as they are: check and convert them first. What texts fit
/// the file is the platform's to say (on a plain host: one line of at most 65535 bytes without a
/// NUL); one that does not fails the edit with none of the rule's fields written. Call types
/// outside 0 to 3 read back as any.
///
/// Errors: no file operation lets an exception out; a failure is traced at level 0, gives false,
/// and GetLastFailure says why. (ReOrderRule gives true when only its save failed; see there.) When
/// the very last step of a save fails, false means that the new file is in place and may not
/// survive a loss of power.
///
/// Threads: GetInstance and CloseInstance may be called from any thread. Everything else takes no
/// lock: callers serialise edits, reloads, SetMode and lookups with each other, with decisions, and
/// with a GetInstance that loads. Not for signal handlers. The environment is read with getenv, so
/// set it before there are threads. The cancellation of a thread is held off while it loads, edits
/// or traces. Not for the child of a fork either, where the process has threads, until it calls
/// exec.
class CALLRECORDINGUTILS_EXPORT CCallRecordingDB {
  public:
    /// An empty, unloaded database. Clients use GetInstance.
    CCallRecordingDB();
    virtual ~CCallRecordingDB();

    CCallRecordingDB(CCallRecordingDB const&) = delete;
    CCallRecordingDB& operator=(CCallRecordingDB const&) = delete;

    // --- Life cycle ---

    /// Returns the instance and counts one more reference. The first call creates it, and with it
    /// the trace log when withLogger is true; later calls create no log. With load the rules are
    /// loaded unless they are already; a failure shows in the trace log and in an empty or partial
    /// list. The file is read under cfgThreadMutex, so others wait. Never null. Throws
    /// std::bad_alloc only, and counts nothing then.
    static CCallRecordingDB* GetInstance(bool load, bool withLogger);

    /// Gives one reference back. The last one destroys the instance, its records and the trace log.
    /// Does nothing when there is no reference. Calls beyond one's own take away the references of
    /// others; the last one must not run beside any other operation.
    static void CloseInstance();

    /// Chooses how the next load that reads the file lists the rules. true, the initial mode:
    /// advanced view, one record per section. false: basic view, each rule merged with its mirrored
    /// twin, listed by its key pattern, and never matching without a twin. A process that decides
    /// calls stays in advanced view.
    static void SetMode(bool advanced);

    /// Loads the rule file unless that was done before. Returns true when loaded or already loaded,
    /// false when the file could not be read: in advanced view the rules read so far are then
    /// listed, in basic view none. Either way the database counts as loaded; only Reload reads
    /// again.
    bool Load();

    /// Reads the rule file again, whatever was loaded before. Result as Load.
    bool Reload();

    /// Returns why the last load that read the file, or the last edit, failed, whichever came
    /// later: path, line where there is one, what failed, and the system's words for it. Where
    /// several steps failed their reasons follow each other, separated by "; ". The empty text when
    /// nothing failed. It is for people to read; the wording may change. Takes no lock, like the
    /// loads and edits that write it. Looking at a failure never touches the file.
    std::string GetLastFailure() const;

    /// Empties the list and clears mHasAdvancedRules. The database still counts as loaded.
    void Cleanup();

    /// Deletes every record and empties the list.
    void DestroyCallRecordList();

    // --- The rules in memory ---

    /// Calls visit for every rule, in the order in which they are evaluated. Exceptions of visit
    /// pass through. REQUIRES: visit changes neither the rules nor the list.
    void VisitRules(std::function<void(CallRecordingRuleParams const&)> const& visit) const;

    /// Copies the first rule whose identifier is the leading decimal number of ruleId (0 when it
    /// has none) to rule and returns true. Returns false, and leaves rule as it is, when there is
    /// none.
    bool CopyRule(std::string const& ruleId, CallRecordingRuleParams& rule) const;

    /// The rules in the order in which they are evaluated. The records are borrowed; null entries
    /// are passed over by every operation. Leave list and records as they are: a change would act
    /// on decisions and never reach the file.
    ///
    /// Decisions find their rule through an index. Who holds the list can change it at any time, so
    /// once it was lent, the decisions of this instance walk the list instead, for good: some
    /// nanoseconds longer for each rule. To look at the rules take VisitRules.
    std::list<CallRecordingRuleParams*>& GetCallRecordingRules();

    /// Returns the first record that CopyRule would copy, or null. The record is borrowed.
    /// Decisions walk the list from then on until the next load that reads the file; to look at a
    /// rule take CopyRule.
    CallRecordingRuleParams* GetSelectedRule(std::string const& ruleId);

    /// Returns whether a listed rule has exactly these two patterns. Bytes are compared; wildcards
    /// mean nothing here, and a rule with the two patterns exchanged does not count.
    bool Find(std::string const& callerPattern, std::string const& calledPattern);

    // --- Edits of the rule file ---

    /// Appends rule to the file, as the last to be evaluated, under a new identifier, which is also
    /// written to rule->callrecordingrule_id (on a failure after that point it stays there).
    /// Returns false at once when rule is null or nothing has been loaded yet.
    bool AddRule(CallRecordingRuleParams* rule);

    /// Rewrites all ten fields of the section with rule's identifier. With updateTwin the recording
    /// type, destination, duration and state also go to the first section that mirrored the rule as
    /// it was before, in the same save. Returns true when both are on disk, when no section has the
    /// identifier (nothing is changed then), when rule is null, and when nothing has been loaded
    /// yet. Two failures leave one of the two changes on disk, and return false: a rule that cannot
    /// be stored (the twin alone is brought up to date), and a file that cannot be searched for the
    /// twin (the rule alone is rewritten). Where the rule as it was cannot be read, a field being
    /// too long for the platform's buffer, this is traced and kept as a failure, but the rewrite
    /// goes on: the twin is then what mirrors the fields in front of that one, with the others as
    /// in a new record.
    bool ModifyRule(CallRecordingRuleParams const* rule, bool updateTwin);

    /// Deletes the section that has rule's identifier, patterns and call types, and with it the
    /// sections that mirror it, whatever their identifier: all that stand before it or, when there
    /// is none, the first that stands behind it. When no section is the rule itself, every section
    /// that mirrors it is deleted. All of them go in one save; where a section on the way cannot be
    /// read, those before it. Returns false only on a failure; true without effect when rule is
    /// null.
    bool DeleteRule(CallRecordingRuleParams const* rule);

    /// Deletes the first section whose identifier is the very text ruleId; "05" does not find 5. A
    /// twin is not touched. Returns false only on a failure; true without effect when ruleId is not
    /// made of digits.
    bool DeleteRule(std::string const& ruleId);

    /// Moves a rule one place up (toward the front) or down by exchanging the contents of two
    /// neighbouring sections, which keep their identifiers: the moved rule takes over its
    /// neighbour's identifier, in the file and in memory. ruleId is compared as text. Both sections
    /// are saved at once. Nothing changes when ruleId is not made of digits or unknown, when the
    /// rule stands first or last, or when the list no longer mirrors the file. Returns false only
    /// when the file cannot be read; after a failed save, which is traced and kept for
    /// GetLastFailure, the identifiers in memory stay exchanged until the next Reload. REQUIRES:
    /// the list is as loaded in advanced view. Call Reload after each move.
    bool ReOrderRule(std::string const& ruleId, bool up);

    /// Moves a rule to the place with this index, counted from 0, in one save; the rules between
    /// make room. As with ReOrderRule, of which this is the general case, the sections keep their
    /// identifiers: each rule takes over that of the place that it comes to, in the file and, once
    /// the file is saved, in memory, where the order stays until the next Reload. Returns true when
    /// the rule is at that place; false, with file and memory unchanged, when no rule has the very
    /// text ruleId as identifier, when there are not so many places, when the list no longer
    /// mirrors the file between the two, and when the file cannot be read or saved. REQUIRES: the
    /// list is as loaded in advanced view. Call Reload after each move.
    bool MoveRule(std::string const& ruleId, std::size_t place);

    /// Enables or disables a listed rule in memory, at once, and in the file. Returns false when
    /// ruleId is not made of digits and on a failure; memory may have changed then. True without
    /// effect when no listed rule has the identifier, which is compared as a number (07 finds 7),
    /// and without effect on the file when it holds no such rule.
    bool SetRuleState(std::string const& ruleId, bool enable);

    // --- Pieces of the edits ---

    /// Writes all fields of rule into the current section of file and saves the file. Returns true
    /// on success and when file is null; false, with a trace, on a failure. REQUIRES: rule is not
    /// null.
    bool SaveSelectedRule(Configuration::MultiSectionFile* file,
                          CallRecordingRuleParams const* rule);

    /// Returns one more than the greatest identifier in file, at least 0, and leaves the cursor
    /// behind the last section. Lets the exceptions of file through, and throws std::overflow_error
    /// when the greatest identifier is 2147483647. REQUIRES: file is not null.
    std::int32_t GenerateRuleID(Configuration::MultiSectionFile* file);

    /// Reads the current section of file into rule, every field but the identifier. Returns true on
    /// success and when file is null; false, with a trace and rule partly read, on a failure.
    bool GetCurrentSection(Configuration::MultiSectionFile* file, CallRecordingRuleParams& rule);

    /// Sets the state of entry to RULE_NOT_SHOWABLE when a side of call type number stands opposite
    /// to anything but "*" of call type any. Changes nothing else.
    void VerifyBasicViewModeRuleValidation(CallRecordingRuleMapParams& entry);

    /// Returns whether rule says the same as entry, side for side or with the sides exchanged;
    /// identifier and description are not compared. Sets entry.has_mirror when rule is keyed on the
    /// side opposite to entry's, whatever the result. False when rule is null.
    bool IsIdenticallRules(CallRecordingRuleParams const* rule, CallRecordingRuleMapParams& entry);

    // --- Statics ---

    static CCallRecordingDB* mpInstance;   ///< The instance, or null.
    static std::int32_t mInstancesCount;   ///< References not yet given back.
    static CCallRecordingLogger* mpLogger; ///< The trace log, or null.
    static bool mIsAdvancedMode;           ///< View mode of the next load that reads the file.

  private:
    bool mIsLoaded;

  public:
    /// The last load, made in basic view mode, met a rule that this view cannot show in full.
    bool mHasAdvancedRules;

  private:
    friend class CCallRecordingAssistant; // It decides by the list and the index.

    [[gnu::visibility("hidden")]] void ReadRuleFile();
    [[gnu::visibility("hidden")]] void PrepareDecisions() noexcept;
    [[gnu::visibility("hidden")]] CallRecordingRuleParams*
    FindRecord(std::string const& ruleId) const;

    std::list<CallRecordingRuleParams*> mCallRecordList;
    std::unique_ptr<RuleIndex> const mpIndex; // Of the list as loaded; never null.
    std::string mLastFailure; // Of the last load or edit; empty when there was none.
};

} // namespace CallRecordingUtils

#endif
