/// @file
/// The rule database: the process's one list of call-recording rules, and the one place where the
/// rule file is edited.
///
/// The rule file is "telephony/callrecordingdb" in the directory that the environment variable
/// QUVA_PATH names, "/etc/quva-conf/" when it is unset. The two are joined as plain text, so the
/// value has to end in "/". Every operation that opens the file reads the variable again.

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

/// Guards CCallRecordingDB's statics and the load in GetInstance. Only GetInstance and
/// CloseInstance lock it; clients need not.
CALLRECORDINGUTILS_EXPORT extern ThreadMutex cfgThreadMutex;

/// The rule database.
///
/// Life: there is one instance. Get it with GetInstance, and call CloseInstance once for each
/// GetInstance.
///
/// Records: the instance owns every record in its list. Records that GetCallRecordingRules or
/// GetSelectedRule return are borrowed, and stay valid until the list is next rebuilt: by Reload,
/// by a Load that reads the file, by Cleanup, or by the last CloseInstance. Records that are passed
/// in remain the caller's.
///
/// Edits: every edit opens the rule file afresh, makes its change and saves the file. Two edits can
/// make several changes, and save after each: ModifyRule with updateTwin, and DeleteRule by record.
/// A save replaces the whole file at once, so at every instant the file is complete, with each
/// change made or not made. When an edit returns true its changes are on disk (ReOrderRule is
/// different, see there). Lines that an edit does not change keep their bytes: comments, unknown
/// keys, order. Unless noted otherwise an edit does not change the list in memory; call Reload so
/// that decisions follow it.
///
/// A malformed file is never written. Nor is one that somebody else has saved since the edit read
/// it: the save fails, and the edit can be repeated. To keep others out, hold a CRuleFileLock
/// around edits. Patterns are stored as they are: check and convert them first. The
/// platform decides which texts it can store (a plain host: one line of at most 65535 bytes without
/// a NUL). If a text cannot be stored, no field of the rule is written. A call type other than 0 to
/// 3 reads back as any.
///
/// Errors: no file operation lets an exception out. A failure is traced at level 0, the result is
/// false, and GetLastFailure says why. (ReOrderRule returns true even when its save failed; see
/// there.) If the very last step of a save fails, the result is false although the new file is in
/// place; it may not survive a loss of power.
///
/// Threads: GetInstance and CloseInstance may be called from any thread. Nothing else takes a lock:
/// callers serialise edits, reloads, SetMode and lookups with each other, with decisions, and with
/// a GetInstance that loads. The environment is read with getenv, so set it before starting
/// threads. While a thread loads, edits or traces, its cancellation is held off. Not for signal
/// handlers, and not for the child of a fork in a process with threads before it calls exec.
class CALLRECORDINGUTILS_EXPORT CCallRecordingDB {
  public:
    /// An empty, unloaded database. Clients use GetInstance.
    CCallRecordingDB();
    virtual ~CCallRecordingDB();

    CCallRecordingDB(CCallRecordingDB const&) = delete;
    CCallRecordingDB& operator=(CCallRecordingDB const&) = delete;

    // --- Life cycle ---

    /// Returns the instance, never null, and adds a reference. The first call creates the instance,
    /// and with it the trace log if withLogger is true; later calls create no log. With load, the
    /// rules are loaded unless they have been already. If that fails the trace log says so, and the
    /// list is empty or incomplete. The file is read while cfgThreadMutex is locked, so other
    /// callers wait. Throws std::bad_alloc only; no reference is added then.
    static CCallRecordingDB* GetInstance(bool load, bool withLogger);

    /// Gives a reference back. The last one destroys the instance, its records and the trace log.
    /// Does nothing when there is no reference. Whoever calls it more often than GetInstance takes
    /// away the references of others. The last call must not run at the same time as any other
    /// operation.
    static void CloseInstance();

    /// Chooses how the next load that reads the file lists the rules. true, the initial mode, is
    /// the advanced view: one record per section. false is the basic view: each rule is merged with
    /// its mirrored twin, rules are listed by their key patterns, and a rule without a twin never
    /// matches. A process that decides calls stays in the advanced view.
    static void SetMode(bool advanced);

    /// Loads the rule file unless it has been loaded already. Returns false when the file could not
    /// be read: the list then holds the rules read so far in the advanced view, and none in the
    /// basic view. Either way the database counts as loaded, and only Reload reads the file again.
    bool Load();

    /// Reads the rule file again, whatever was loaded before. The result is that of Load.
    bool Reload();

    /// Returns why the last edit or load failed, whichever came later (a load that did not read the
    /// file does not count): path, line if there is one, what failed, and the system's reason. If
    /// several steps failed, their reasons follow each other, separated by "; ". Empty when nothing
    /// failed. For people to read; the wording may change. Takes no lock, and does not touch the
    /// file.
    std::string GetLastFailure() const;

    /// Empties the list and clears mHasAdvancedRules. The database still counts as loaded.
    void Cleanup();

    /// Deletes every record and empties the list.
    void DestroyCallRecordList();

    // --- The rules in memory ---

    /// Calls visit for every rule, in the order in which they are evaluated. Lets exceptions of
    /// visit through. REQUIRES: visit changes neither the rules nor the list.
    void VisitRules(std::function<void(CallRecordingRuleParams const&)> const& visit) const;

    /// Copies the first rule whose identifier is the number at the start of ruleId (0 if there is
    /// no number) to rule and returns true. If there is no such rule, returns false and leaves rule
    /// unchanged.
    bool CopyRule(std::string const& ruleId, CallRecordingRuleParams& rule) const;

    /// Returns the rules in the order in which they are evaluated. The records are borrowed; every
    /// operation skips null entries. Do not change the list or its records: decisions would follow
    /// the change, but it would never reach the file.
    ///
    /// Decisions find their rule through an index. Since the caller could change the list at any
    /// time, this instance no longer uses the index once it has handed the list out: from then on a
    /// decision walks the list, which takes some nanoseconds more for each rule. To look at the
    /// rules, use VisitRules.
    std::list<CallRecordingRuleParams*>& GetCallRecordingRules();

    /// Returns the record that CopyRule would copy, or null. The record is borrowed. Until the next
    /// load that reads the file, decisions walk the list instead of using the index; to look at a
    /// rule, use CopyRule.
    CallRecordingRuleParams* GetSelectedRule(std::string const& ruleId);

    /// Returns whether a listed rule has exactly these two patterns, byte for byte: wildcards have
    /// no meaning here. A rule with the two patterns exchanged does not count.
    bool Find(std::string const& callerPattern, std::string const& calledPattern);

    // --- Edits of the rule file ---

    /// Adds rule at the end of the file, so that it is evaluated last, under a new identifier. The
    /// identifier is also written to rule->callrecordingrule_id, where it stays even if the edit
    /// fails later. Returns false at once when rule is null or nothing has been loaded yet.
    bool AddRule(CallRecordingRuleParams* rule);

    /// Rewrites all ten fields of the section with rule's identifier and saves the file. With
    /// updateTwin it then copies the recording type, destination, duration and state of rule to its
    /// twin and saves again; the twin is the first section that mirrors the rule as it was before.
    ///
    /// Returns true when everything is on disk. Also true, with nothing changed, when no section
    /// has the identifier, when rule is null, and when nothing has been loaded yet.
    ///
    /// After a failure the file may have one of the two changes without the other: that of the rule
    /// when the twin cannot be searched for or saved, that of the twin when the rule cannot be
    /// stored. (When the first save fails and the second does not, it has both.)
    ///
    /// A section with a value that is too long for the platform's buffer can be rewritten: this is
    /// traced and kept for GetLastFailure, and the twin is then the section that mirrors what was
    /// read before that value, with the defaults of a record for the rest.
    bool ModifyRule(CallRecordingRuleParams const* rule, bool updateTwin);

    /// Deletes the section with rule's identifier, patterns and call types, and also the sections
    /// that mirror it, whatever their identifiers: all of those before it in the file, or, if there
    /// are none, the first one after it. If no section is the rule itself, every section that
    /// mirrors it is deleted. The file is saved after each deletion, so when the edit fails, the
    /// sections deleted until then are gone. Returns false only on a failure. Does nothing and
    /// returns true when rule is null.
    bool DeleteRule(CallRecordingRuleParams const* rule);

    /// Deletes the first section whose identifier is exactly the text ruleId; "05" does not find 5.
    /// A twin stays. Returns false only on a failure. Does nothing and returns true when ruleId
    /// does not consist of digits.
    bool DeleteRule(std::string const& ruleId);

    /// Moves a rule one place up (towards the front) or down by exchanging the contents of two
    /// neighbouring sections. The sections keep their identifiers, so the moved rule and its
    /// neighbour exchange theirs, in the file and in memory. ruleId is compared as text. Both
    /// sections are written in one save.
    ///
    /// Returns false only when the file cannot be read. Does nothing and returns true when ruleId
    /// does not consist of digits, when no section has it, when there is no rule on that side, and
    /// when the list and the file no longer agree about the two rules. Also true when the save
    /// failed; that is traced and kept for GetLastFailure, and the identifiers in memory stay
    /// exchanged until the next Reload. REQUIRES: the list is as loaded in the advanced view. Call
    /// Reload after each move.
    bool ReOrderRule(std::string const& ruleId, bool up);

    /// Moves a rule to place, counted from 0, in one save; the rules in between move up or down by
    /// one. As with ReOrderRule, the sections keep their identifiers: each rule takes over the
    /// identifier of its new place, in the file and, after the save, in memory. The order of the
    /// list in memory stays until the next Reload.
    ///
    /// Returns true when the rule is at that place. Returns false, with file and memory unchanged,
    /// when no section has exactly the text ruleId as identifier, when the file has no such place,
    /// when the list and the file no longer agree about the rules in between, and when the file
    /// cannot be read or saved. REQUIRES: the list is as loaded in the advanced view. Call Reload
    /// after each move.
    bool MoveRule(std::string const& ruleId, std::size_t place);

    /// Enables or disables a listed rule, in memory at once and then in the file. The identifier is
    /// compared as a number: 07 finds 7. Returns false when ruleId does not consist of digits and
    /// on a failure; the rule in memory may have changed then. Does nothing and returns true when
    /// no listed rule has the identifier. Changes memory only when the rule is not in the file.
    bool SetRuleState(std::string const& ruleId, bool enable);

    // --- Steps of loads and edits ---

    /// Writes all fields of rule into the current section of file and saves the file. Returns true
    /// on success and when file is null. Returns false on a failure, which is traced; the fields
    /// written before it stay set in file, unsaved. REQUIRES: rule is not null.
    bool SaveSelectedRule(Configuration::MultiSectionFile* file,
                          CallRecordingRuleParams const* rule);

    /// Returns one more than the greatest identifier in file, at least 0, and leaves the cursor
    /// after the last section. Lets exceptions of file through, and throws std::overflow_error when
    /// the greatest identifier is 2147483647. REQUIRES: file is not null.
    std::int32_t GenerateRuleID(Configuration::MultiSectionFile* file);

    /// Reads every field but the identifier from the current section of file into rule. Returns
    /// true on success and when file is null. Returns false on a failure, which is traced; rule
    /// then has the fields read until then.
    bool GetCurrentSection(Configuration::MultiSectionFile* file, CallRecordingRuleParams& rule);

    /// Sets the state of entry to RULE_NOT_SHOWABLE when one of its sides has call type number and
    /// the other side is not "*" with call type any. Changes nothing else.
    void VerifyBasicViewModeRuleValidation(CallRecordingRuleMapParams& entry);

    /// Returns whether rule says the same as entry, side for side or with the sides exchanged;
    /// identifier and description are not compared. Whatever the result, sets entry.has_mirror when
    /// the side with call type number is the caller in one of them and the called side in the
    /// other. Returns false when rule is null.
    bool IsIdenticallRules(CallRecordingRuleParams const* rule, CallRecordingRuleMapParams& entry);

    // --- Statics ---

    static CCallRecordingDB* mpInstance;   ///< The instance, or null.
    static std::int32_t mInstancesCount;   ///< References that have not been given back.
    static CCallRecordingLogger* mpLogger; ///< The trace log, or null.
    static bool mIsAdvancedMode;           ///< The view of the next load that reads the file.

  private:
    bool mIsLoaded;

  public:
    /// Whether the last load was in the basic view and found a rule that this view cannot show in
    /// full.
    bool mHasAdvancedRules;

  private:
    friend class CCallRecordingAssistant; // It decides by the list and the index.

    [[gnu::visibility("hidden")]] void ReadRuleFile();
    [[gnu::visibility("hidden")]] void PrepareDecisions() noexcept;
    [[gnu::visibility("hidden")]] CallRecordingRuleParams*
    FindRecord(std::string const& ruleId) const;

    std::list<CallRecordingRuleParams*> mCallRecordList;
    std::unique_ptr<RuleIndex> const mpIndex; // Of the list as loaded; never null.
    std::string mLastFailure;                 // Why the last load or edit failed, or empty.
};

} // namespace CallRecordingUtils

#endif
