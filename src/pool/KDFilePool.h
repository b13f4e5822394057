#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/RunLoop.h"
#include "pool/FileHistory.h"
#include "pool/Pace.h"
#include "pool/ParticipantAddress.h"
#include "pool/PoolNotifications.h"
#include "pool/PoolSnapshot.h"
#include "pool/VersionStore.h"
#include "util/Failure.h"
#include "util/NotificationCenter.h"

namespace zolvar {

struct FileChange;
struct Platform;
class KDPoolState;
class KDPoolSync;
class Lane;

/// What a pool asks of the application. Main thread.
class KDFilePoolDelegate {
 public:
  virtual ~KDFilePoolDelegate() = default;
  /// The pool's folder cannot be reached (told once until it is back).
  virtual void poolPathsNotAccessible(KDFilePool& pool) = 0;
  /// A question about vanished files was raised or replaced; answer with answerQuestion when a
  /// person (or the setting) has decided.
  virtual void shouldDeleteFiles(KDFilePool& pool, const DeleteQuestion& question) = 0;
  /// Whether this sync is still the one that the queue runs; its end is only told if so.
  virtual bool isSyncing(const ParticipantAddress& participant) = 0;
  /// The folder was found at another place.
  virtual void poolDidMove(KDFilePool& pool) = 0;
};

enum class PasswordState {
  Unknown,  ///< being read from the secret store
  None,
  Set,
  Unreadable,  ///< there is one, but the store does not give it: no module, no announcement, no
               ///< sync
};

/// One synced folder, as the main thread sees it: identity, phase, password, timers, and the doors
/// to its two lanes. All state about files lives in KDPoolState on the state lane; syncs run in
/// KDPoolSync on the transfer lane; what they did is read from snapshots. Main thread, except where
/// said. Owned by KDPeer through a shared pointer; the platform, the centre and the delegate
/// outlive it. Destroying it saves the to-do list and removes nothing.
class KDFilePool : public std::enable_shared_from_this<KDFilePool> {
 public:
  struct Options {
    std::string userId;  ///< empty: localUserId
    Pace pace;
    bool secretsAreRead = true;  ///< false: the pool has no password until setPassword
  };
  using Done = std::function<void(Result<>)>;

  /// `path` is a folder's full path, or only a name while the pool has no place on disk. A full
  /// path in a Trash is reduced to its name. Requires: a name that poolNameProblem accepts.
  static std::shared_ptr<KDFilePool> make(const std::string& path, const Options& options,
                                          Platform& platform, NotificationCenter& center,
                                          KDFilePoolDelegate* delegate);
  virtual ~KDFilePool();

  /// "%@@%@" of login name and this machine's name: the first of its names that ends in ".local" or
  /// ".lan", else the last, unless that is "localhost", then the first.
  static std::string localUserId(const Platform& platform);

  // Identity.
  [[nodiscard]] const std::string& userId() const { return userId_; }
  [[nodiscard]] const std::string& folderPath() const { return folderPath_; }
  [[nodiscard]] bool hasFullFolderPath() const;
  [[nodiscard]] std::string name() const;
  [[nodiscard]] virtual std::string displayName() const { return name(); }
  /// A file as people know it.
  [[nodiscard]] virtual std::string descriptionForFile(const std::string& path) const {
    return path;
  }
  [[nodiscard]] std::string logsPath() const;
  [[nodiscard]] std::string nameHash() const;  ///< hexHash of the name: the daemon's user name
  [[nodiscard]] std::string description() const;
  /// A pool can move, but its last path component never changes and it never lies in a Trash
  /// (InconsistencyError). Posts KDPoolDidChangeCriticalData when active.
  void setFolderPath(const std::string& path);
  /// Whether this machine's log of the pool exists on disk (a stat).
  [[nodiscard]] bool hasLocalLog() const;
  /// Makes the folder, the metadata folder and the local log. Fails with what could not be made.
  Result<> startLocalLog();

  // Password.
  [[nodiscard]] PasswordState passwordState() const { return passwordState_; }
  [[nodiscard]] std::string password() const { return password_; }  ///< "" without one
  /// Empty removes it. At most 500 bytes, no control character (Refused, nothing changes). Written
  /// to the secret store on a lane; `done` tells how that went. Posts KDPoolDidChangeCriticalData
  /// when active.
  void setPassword(const std::string& password, Done done);
  /// Asks the store once more for a password that it did not give, such as a locked keyring.
  void readPasswordAgain();

  // Lifecycle. docs/architecture.md has the table of what each event does in each phase.
  [[nodiscard]] PoolPhase phase() const { return phase_; }
  [[nodiscard]] bool isActive() const { return phase_ == PoolPhase::Active; }
  /// Starts the activation; Active, and KDPoolDidChangeCriticalData posted, when its reading and
  /// first scan are through. `done` is told the outcome. Nothing in other phases than Inactive and
  /// Recovering.
  void activate(Done done);
  /// Inactive → Recovering: syncs load logs only, and when every log that a participant listed has
  /// arrived the sync's end has status 0 and the caller activates.
  Result<> recover();
  /// Active, Activating or Recovering → Inactive; nothing otherwise.
  void deactivate();

  // Work.
  void syncWithParticipant(const ParticipantAddress& participant);
  [[nodiscard]] bool hasRunningTask() const;
  void terminateTask();
  void setBandwidthLimit(unsigned kilobytesPerSecond) { bandwidthLimit_ = kilobytesPerSecond; }
  void noteAnnouncementNeeded();  ///< any thread
  void noteFullSyncNeeded();      ///< any thread
  void checkFileSystemChanges(std::function<void()> done = {});
  [[nodiscard]] std::shared_ptr<const PoolSnapshot> snapshot() const;  ///< any thread
  [[nodiscard]] std::optional<TransferProgress> progress() const;      ///< any thread

  // What a person decides. Outcomes on the main thread; a refusal is one sentence.
  void selectBranch(const std::string& path, const VersionId& version, Done done);
  void deleteBranch(const std::string& path, const VersionId& version, Done done);
  void answerQuestion(std::uint64_t questionId, int code, Done done);  ///< 1000 re-get, 1001 delete
  void deleteMissing(const std::set<std::string>& paths, Done done);   ///< logs them as deleted
  void treeDescription(const std::string& path, std::function<void(Result<std::string>)> done);
  void history(const std::string& path, std::function<void(Result<FileHistory>)> done);
  /// Keeps the content that lies here among the versions to be had back; `done` is told its id.
  void keepVersion(const std::string& path, std::function<void(Result<std::string>)> done);
  /// Versions of a file that fetches have replaced, newest first.
  void keptVersions(const std::string& path,
                    std::function<void(Result<std::vector<StoredVersion>>)> done);
  /// Puts one of them back in place as a change of ours; what lies there is kept in turn.
  void restoreVersion(const std::string& path, const std::string& id, Done done);
  /// Fetches one version to a file outside the folder, from whichever of `participants` has it;
  /// where another version has its second, from its author.
  void fetchVersion(const std::string& path, const VersionId& version, const std::string& to,
                    const std::vector<ParticipantAddress>& participants, Done done);

 protected:
  KDFilePool(const std::string& path, const Options& options, Platform& platform,
             NotificationCenter& center, KDFilePoolDelegate* delegate);
  /// What making a pool ends with.
  void readPassword(const Options& options);

  // What a pool of another kind does at these points. Main thread.
  virtual void didActivate() {}
  virtual void willDeactivate() {}  ///< changeFiles is still carried out
  /// A sync is over; its end is told to everyone by `tell`.
  virtual void noteTaskDidEnd(const std::set<std::string>& /*loadedFiles*/,
                              const std::function<void()>& tell) {
    tell();
  }
  /// Peers deleted these, and they are gone.
  virtual void didDeleteFiles(const std::set<std::string>& /*paths*/) {}
  /// Files vanished here. True: the pool answers the question itself, and nobody is asked.
  virtual bool didLoseFiles(const DeleteQuestion& /*question*/) { return false; }
  /// Whether the folder is looked at by itself, and not only when a sync begins.
  [[nodiscard]] virtual bool isPolled() const { return true; }

  /// Writes and deletes files in the folder and logs that, see KDPoolState.
  void changeFiles(std::vector<FileChange> changes, std::function<void(Result<bool>)> done);
  /// Runs the job where disks may be waited for, after the state's jobs that were asked for before.
  void onFilesLane(std::function<void()> job);
  [[nodiscard]] Platform& platform() const { return platform_; }
  [[nodiscard]] NotificationCenter& center() const { return center_; }

 private:
  class StateToMain;
  friend class StateToMain;
  struct Parts;

  void tookPassword(const Result<std::optional<std::string>>& found, bool isExpected);
  void startState();
  void stopState();
  void activationEnded(std::uint64_t generation, const Result<>& outcome, const Done& done);
  void startTimers();
  void stopTimers();
  void startWatch();
  void scanSoon(double seconds);
  void announcementNeededInMainThread();
  void fullSyncNeededInMainThread();
  void syncEnded(const ParticipantAddress& participant, const struct SyncEnd& end);
  void folderMoved(const std::string& newPath);
  void took(std::shared_ptr<const PoolSnapshot> snapshot);
  void setPhase(PoolPhase phase);
  void warn(const std::string& text);
  template <class Value>
  void onStateLane(std::function<Result<Value>(KDPoolState&)> job,
                   std::function<void(Result<Value>)> done);

  std::string folderPath_;
  std::string userId_;
  Pace pace_;
  Platform& platform_;
  NotificationCenter& center_;
  KDFilePoolDelegate* delegate_;
  PoolPhase phase_ = PoolPhase::Inactive;
  PasswordState passwordState_ = PasswordState::Unknown;
  std::string password_;
  unsigned bandwidthLimit_ = 0;
  std::unique_ptr<Parts> parts_;
};

}  // namespace zolvar
