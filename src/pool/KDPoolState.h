#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "log/KDEntryStore.h"
#include "log/KDLogFile.h"
#include "platform/FileSystem.h"
#include "pool/ChangedFolders.h"
#include "pool/HeldLogs.h"
#include "pool/IgnoreRules.h"
#include "pool/KDDiskRecord.h"
#include "pool/KDVersionTree.h"
#include "pool/LogGuard.h"
#include "pool/Pace.h"
#include "pool/PoolSnapshot.h"
#include "pool/PoolStateListener.h"
#include "pool/PoolSyncSteps.h"

namespace zolvar {

class CopyRunRecord;
class HeldLogs;
struct FileChange;
struct FileHistory;
struct Platform;

/// Everything that a pool knows about its files: logs, version tree, selections, to-do list,
/// conflicts, disk record, the open question. Every operation is a job on the pool's state lane,
/// which is serial, so there is no lock; what others may see is published as an immutable snapshot
/// at the end of each job. A detached state (the pool was left) finishes what runs and changes
/// nothing any more. Disk failures become warnings and the pool's trouble text.
///
/// The sources are divided by concern: KDPoolState.cpp (life, logs, publishing), KDPoolStateScan,
/// KDPoolStateRemote, KDPoolStateTodo, KDPoolStateBranches, KDPoolStateSync.
class KDPoolState final : public PoolSyncSteps, private KDLogFileDelegate {
 public:
  struct Settings {
    std::string poolName;
    std::string folderPath;
    std::string userId;
    Pace pace;
    std::shared_ptr<ChangedFolders> changed{};  ///< none: every scan looks at everything
  };
  KDPoolState(Settings settings, Platform& platform, std::unique_ptr<PoolStateListener> listener);
  ~KDPoolState() override;

  void detach() { isDetached_ = true; }  ///< any thread

  // Life.
  Result<> startRecovering();
  /// Opens folder, log and to-do list, reads all logs and scans for the first time.
  Result<> activate();
  /// Saves what is to be kept; the last job before detach.
  void leave();

  // A person's decisions; refusals are sentences.
  Result<> selectBranch(const std::string& path, const VersionId& version);
  Result<> deleteBranch(const std::string& path, const VersionId& version);
  Result<> answerQuestion(std::uint64_t questionId, int code);
  Result<> deleteMissing(const std::set<std::string>& paths);
  [[nodiscard]] Result<std::string> treeDescription(const std::string& path) const;
  [[nodiscard]] Result<FileHistory> history(const std::string& path) const;
  /// Puts a kept version back in place; the next scan logs it as a change of ours.
  Result<> restoreVersion(const std::string& path, const std::string& id);
  /// Carries out and logs what the pool itself wants changed in its folder; what lies there
  /// otherwise than expected, or is still to be fetched, is left alone. Tells whether nothing was.
  Result<bool> changeFiles(const std::vector<FileChange>& changes);
  /// Modification time of a version, for fetching it.
  [[nodiscard]] Result<double> modTimeOf(const std::string& path, const VersionId& version) const;
  /// Whether another living branch has a version of that time.
  [[nodiscard]] bool sharesSecond(const std::string& path, const VersionId& version) const;

  // PoolSyncSteps
  [[nodiscard]] bool isDetached() const override { return isDetached_; }
  [[nodiscard]] bool isRecovering() const override { return isRecovering_; }
  Result<std::string> accessibleFolderPath() override;
  void checkFileSystemChanges() override;
  Result<> prepareLogLoad() override;
  void finishLogLoad() override;
  std::map<std::string, std::uint64_t> logSizesOnDisk() override;
  std::set<std::string> wantedFiles() override;
  CopyPlan decideListing(const std::vector<ListingEntry>& listed,
                         const ParticipantAddress& participant) override;
  std::set<std::string> prepareCopy(const std::set<std::string>& files) override;
  std::set<std::string> timeWarpedFilesFromSet(const std::set<std::string>& files) override;
  bool settleReplacedFiles(const std::vector<ReplacedFile>& replaced) override;
  std::set<std::string> checkTodoFiles() override;
  [[nodiscard]] bool awaitsDisk() const override { return isRecordHeld_; }
  void filesAreOnDisk() override;
  [[nodiscard]] std::set<std::string> todoFiles() const override;

 private:
  struct Scan;

  // Life and logs (KDPoolState.cpp).
  Result<> openFolder();
  Result<> readEverything();
  Result<> readAllLogs();
  bool isAccessible();
  Result<> reopenIfBack();
  void noteInaccessible();
  Result<> flush();
  void publish();
  void refreshLogState();
  void logFileDidChange(KDLogFile& log) override;
  [[nodiscard]] std::string ownLogPath() const;
  LogReadSummary readLog(const std::string& name, std::uint64_t offset);
  void warnOnce(const std::string& key, const std::string& text);

  // Making and merging entries (KDPoolStateBranches.cpp).
  [[nodiscard]] double notBefore(std::string_view path) const;
  [[nodiscard]] double afterDeletions(const KDPathRecord& path) const;
  void appendOwn(const KDEntryStore::Made& made);
  bool mergeEntry(KDLogFileEntry* entry);
  void logSelectionOfBranchEntry(KDLogFileEntry& entry);
  void logDeletionOfBranchLeaf(KDLogFileEntry& leaf);
  KDVersionTree::Selected selectedLeaf(KDPathRecord& path);
  KDLogFileEntry* versionOnDisk(const KDPathRecord& path);
  void notePassedOn(const std::string& path, KDLogFileEntry& version);
  void forgetPassedOn();
  [[nodiscard]] double rememberedSince() const;
  [[nodiscard]] bool cameFromAnotherFile(const KDLogFileEntry& entry) const;
  [[nodiscard]] bool isEditedCopy(const std::string& path, const FileAttributes& here) const;
  void setConflict(bool isConflict, KDPathRecord& path);
  void repair(KDPathRecord& path);
  Result<KDLogFileEntry*> decidableLeaf(const std::string& attempt, const std::string& path,
                                        const VersionId& version);
  Result<KDLogFileEntry*> requireVersion(const std::string& path, const VersionId& version) const;

  // Scan (KDPoolStateScan.cpp).
  void scan();
  Folder::Visit visit(Scan& scan, std::string_view path, const FileAttributes& attributes);
  void carryOut(Scan& scan, std::string_view path, KDPathRecord* record,
                const FileAttributes& attributes);
  KDLogFileEntry* logModification(Scan& scan, std::string_view path, FileAttributes attributes,
                                  KDLogFileEntry* parent);
  void chooseOwn(const Scan& scan);
  void chooseWhatLiesHere();
  void wantWhatWasChosen(Scan& scan);
  void tellApart();
  void logWritten(const std::vector<std::string>& paths);
  void putAwayLeftovers(const Scan& scan);
  void settleVanished(Scan& scan);
  void look(Scan& scan);
  void lookAtFolders(Scan& scan);
  void noteUnseen(Scan& scan, std::string_view directory, const Failure& failure);
  void noteChanged(std::string_view path);

  // What stays out of the folder (KDPoolStateIgnore.cpp).
  void refreshIgnoreRules();
  [[nodiscard]] bool isIgnored(const KDPathRecord& path) const;
  [[nodiscard]] bool holdsOnlyIgnored(std::string_view directory);
  void logFileSystemDeletionsAtPaths(const std::set<std::string>& paths);
  void raiseQuestion();

  // Remote entries and deletions (KDPoolStateRemote.cpp).
  void applyRemoteLogEntries(std::vector<KDLogFileEntry*> entries);
  void applyRemoteLogEntry(KDLogFileEntry& entry, std::set<std::string>& toLoad,
                           std::set<std::string>& toDelete);
  void deleteFiles(const std::set<std::string>& paths);
  // Entries whose parent has not come yet (KDPoolStateWaiting.cpp).
  void noteLogged(const std::vector<KDLogFileEntry*>& entries);
  [[nodiscard]] bool mayHaveToWait(const KDLogFileEntry& entry) const;
  [[nodiscard]] bool mustWait(KDLogFileEntry& entry);
  void appendAll(std::vector<KDLogFileEntry*>& entries);
  bool mayDelete(const KDPathRecord& path, const FileAttributes& attributes) const;
  bool goesAsAWhole(const std::string& directory, const std::set<std::string>& paths);
  void trashOne(const std::string& path);

  // What a listing tells about files that lie here (KDPoolStateSync.cpp).
  [[nodiscard]] std::set<std::string> toBeCompared() const;
  void askForListings(double now);
  [[nodiscard]] KDLogFileEntry* sameTimed(const KDPathRecord& path) const;
  [[nodiscard]] KDLogFileEntry* twin(const KDPathRecord& path) const;
  void compareWithListing(KDPathRecord& path, const ListingEntry& entry,
                          const std::string& participant, const HeldLogs& held);

  bool makeRealDirectory(std::string_view directory);
  [[nodiscard]] bool canGiveWay(std::string_view directory) const;

  // To-do list (KDPoolStateTodo.cpp).
  void loadTodoFiles();
  Result<> saveTodoFiles();
  bool addTodoFiles(const std::set<std::string>& paths);
  void removeTodoFiles(const std::set<std::string>& paths);

  Settings settings_;
  Platform& platform_;
  std::unique_ptr<PoolStateListener> listener_;
  std::atomic<bool> isDetached_{false};
  bool isRecovering_ = false;
  bool isActive_ = false;
  bool isFirstRun_ = false;
  std::set<std::string, std::less<>> tooFreshAtStart_;  ///< the first scan came too early for these

  std::unique_ptr<Folder> folder_;
  std::unique_ptr<Folder> supportFolder_;
  std::unique_ptr<KDEntryStore> store_;
  std::unique_ptr<KDVersionTree> tree_;
  std::unique_ptr<KDDiskRecord> record_;
  bool isAnnouncementDue_ = false;  ///< the logs have changed since the last publish()
  bool isRecordHeld_ = false;       ///< not written: it names files that may not be on the disk yet
  std::unique_ptr<CopyRunRecord> copyRuns_;
  std::unique_ptr<KDLogFile> localLog_;
  std::unique_ptr<LogGuard> guard_;
  double ownLastLogTime_ = 0;
  /// Interned user id → time of the last entry here.
  std::unordered_map<const std::string*, double> loggedUntil_;
  std::vector<KDLogFileEntry*> waiting_;                ///< not merged: the parent is still to come
  std::map<std::string, std::uint64_t> mergedOffsets_;  ///< log name → end of its last merged line

  std::set<std::string, std::less<>> todo_;
  bool isTodoDirty_ = false;
  std::set<std::string, std::less<>> inQuestion_;
  std::uint64_t questionId_ = 0;
  std::unordered_set<const KDPathRecord*> conflicts_;
  SeenFiles seen_;
  /// What the copy run in progress may bring, and which version that is.
  std::map<std::string, KDLogFileEntry*> copying_;
  std::map<std::string, KDLogFileEntry*> listed_;     ///< the same, as the last listing told
  std::map<std::string, std::uint64_t> listedSizes_;  ///< bytes
  std::string listedBy_;                              ///< that listing's user id
  /// Replaced files that turned out to be known versions, of runs that stay open because of others;
  /// absolute. Looked at later, by the newer records, they would seem to be edits.
  std::set<std::string> judged_;
  std::map<std::string, ToldLogs> toldLogs_;  ///< user id → what its listings told
  /// A version that came lately from somebody who is not its author.
  struct PassedOn {
    std::string from;  ///< user id
    KDLogFileEntry* version;
  };
  std::map<std::string, PassedOn, std::less<>> passedOn_;
  std::set<std::string> unverified_;  ///< whose disk state may be a guess
  std::set<std::string> noTwins_;     ///< of another size than they would have to be
  double listingsAskedAt_ = 0;
  double listingsPause_ = 0;  ///< seconds until they are asked for again

  std::uint32_t scanNumber_ = 0;
  double lastScan_ = 0;
  std::unordered_set<const KDPathRecord*> missingOnce_;  ///< absent in the last scan
  IgnoreRules ignore_;
  std::optional<FileAttributes> ignoreFile_;  ///< as it was when the rules were read
  std::set<std::string> warned_;
  bool isInaccessible_ = false;
  std::string trouble_;
  std::map<std::string, std::string> stuck_;  ///< what cannot go to the Trash → why

  PoolSnapshot published_;
  bool areMissingStale_ = true;
  bool areConflictsStale_ = true;
  bool isSeenStale_ = true;
  bool isQuestionStale_ = true;
};

}  // namespace zolvar
