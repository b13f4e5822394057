#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/AddressFolders.h"
#include "app/FolderRules.h"
#include "app/ObserverList.h"
#include "app/PoolPlaces.h"
#include "app/SyncScheduler.h"
#include "net/KDPeer.h"
#include "platform/UserDefaults.h"
#include "pool/KDFilePool.h"

namespace zolvar {

class Contacts;
class DiscoveryReactions;
class EnvironmentChecks;
class FileLock;
class KDBonjour;
class KDParticipants;
class Outcomes;
class Pauses;
class PoolRestorer;
class TodoRetries;
class UserPicture;

/// The running program's spine: owns the peer, the participants, the sync queue and the reactions
/// to discovery, brings the pools of the last run back, and tells its observers what happens. One a
/// user, held by a lock file. Nothing here waits: outcomes come through `done` callbacks and
/// observers. The platform outlives it. Main thread.
class Application : public KDFilePoolDelegate, public SyncScheduler::Owner {
 public:
  struct Settings {
    std::string version;           ///< of the program
    bool asksPeople = false;       ///< a window asks about vanished files; else a setting answers
    std::optional<Pace> pace;      ///< none: as the default "Pace" says
    AddressBookMaker addressBook;  ///< none: there are no address folders
    unsigned port = 49999;
    std::string userId;          ///< empty: this machine's
    std::string ownProgram;      ///< path, answers "--time-query"; empty: the clock is not checked
    bool startsAtLogin = false;  ///< enters us into what the desktop starts, until it is undone
    std::string resourceFolder;  ///< where FolderBlacklist.plist lies; empty: there is none
  };
  using Done = std::function<void(Result<>)>;

  /// Takes the lock, for which another Zolvar of this user is ended and waited for, and makes the
  /// peer. Fails: Refused (the other one goes on), Transient (a folder of ours cannot be made).
  static Result<std::unique_ptr<Application>> make(Settings settings, Platform& platform);
  ~Application() override;

  /// Browses, ends a left-over daemon, restores the pools, starts the daemon once they are through.
  void start();
  /// Ends the running transfer and the daemon; `done` when both are gone. Nothing starts any more.
  void shutDown(std::function<void()> done);
  /// Restored pools are through and the daemon was started.
  [[nodiscard]] bool isStarted() const { return isStarted_; }

  void addObserver(ApplicationObserver& observer) { observers_.add(observer); }
  void removeObserver(ApplicationObserver& observer) { observers_.remove(observer); }

  /// Calls `call(observer)` for each observer.
  template <class Call>
  void tell(const Call& call) const {
    observers_.tell(call);
  }

  [[nodiscard]] KDPeer& peer() { return *peer_; }
  [[nodiscard]] SyncScheduler& scheduler() { return *scheduler_; }
  [[nodiscard]] const SyncScheduler& scheduler() const { return *scheduler_; }
  [[nodiscard]] Outcomes& outcomes() { return *outcomes_; }
  [[nodiscard]] const Outcomes& outcomes() const { return *outcomes_; }
  [[nodiscard]] Pauses& pauses() { return *pauses_; }
  [[nodiscard]] const Pauses& pauses() const { return *pauses_; }
  [[nodiscard]] const Contacts& contacts() const { return *contacts_; }
  /// Null without an address book.
  [[nodiscard]] AddressFolders* addresses() { return addresses_.get(); }
  [[nodiscard]] PoolPlaces& places() { return *places_; }
  [[nodiscard]] NotificationCenter& center() { return center_; }
  [[nodiscard]] Platform& platform() { return platform_; }
  [[nodiscard]] const Settings& settings() const { return settings_; }
  [[nodiscard]] const Pace& pace() const { return pace_; }
  [[nodiscard]] const FolderBlacklist& blacklist() const { return blacklist_; }
  [[nodiscard]] bool autoSyncingEnabled() const;
  /// The last announcement of a service; null when it is not announced.
  [[nodiscard]] const TxtRecord* announcement(const std::string& serviceName) const;
  /// What the clock check has found: seconds that this computer's clock is off, at most about 10 of
  /// which do no harm.
  void noteClock(double badSeconds);
  [[nodiscard]] bool isClockOff() const { return isClockOff_; }
  /// Subscribed folders of the last run that are not there (a drive that is not mounted).
  [[nodiscard]] const std::vector<StoredPlace>& missingPlaces() const;
  [[nodiscard]] bool isWaitingForDrive(const std::string& poolName) const;
  /// Ends the subscription to such a folder; where it lay stays known.
  void giveUpMissing(const std::string& poolName);

  /// Activates (from the network, where our own log is missing) or deactivates a pool and remembers
  /// it. `done` is told when the pool is active, waits for its own log, or is left.
  void setFilePool(KDFilePool& pool, bool active, Done done = {});
  /// Leaves the pool if need be, puts its folder with all data into the Trash and forgets its
  /// place.
  void removePool(KDFilePool& pool, Done done);
  /// Logs a sentence and tells the observers. `poolName` is empty when it is about the program.
  void warn(const std::string& poolName, const std::string& sentence);
  /// Pools came or went, or one moved, by a front end's doing.
  void noteListChanged();

 private:
  Application(Settings settings, Platform& platform);
  Result<> prepare();
  Result<> takeLock();
  void observeNotifications();
  void observeDefaults();

  // Start-up.
  void restorePools();
  void restoredPool(KDFilePool& pool, bool hasLog);
  void poolIsThrough();
  void startServer();
  void checkTransferTool();
  void lookAfterThings();
  void forgetGonePools();
  void pruneVersions();

  // Activation.
  void leave(KDFilePool& pool);
  void recover(KDFilePool& pool, const Done& done);
  void activate(KDFilePool& pool, Done done);
  void queueAllParticipants(KDFilePool& pool);
  void noteMissingFiles(KDFilePool& pool);

  /// Pauses began or ended: of one pool, or of all ("").
  void pausesChanged(const std::string& poolName);

  // What pools ask.
  void poolPathsNotAccessible(KDFilePool& pool) override;
  void shouldDeleteFiles(KDFilePool& pool, const DeleteQuestion& question) override;
  bool isSyncing(const ParticipantAddress& participant) override;
  void poolDidMove(KDFilePool& pool) override;

  // What the scheduler asks.
  KDPoolPresence* presence(const std::string& poolName) override;
  unsigned clientBandwidthLimit() override;
  void completeActivation(KDFilePool& pool) override;
  [[nodiscard]] bool isPaused(const std::string& poolName) const override;

  Settings settings_;
  Platform& platform_;
  Pace pace_;
  FolderBlacklist blacklist_;
  NotificationCenter center_;
  ObserverList observers_;
  std::unique_ptr<FileLock> lock_;
  std::unique_ptr<PoolPlaces> places_;
  std::unique_ptr<Pauses> pauses_;
  std::unique_ptr<Contacts> contacts_;
  std::unique_ptr<Outcomes> outcomes_;
  std::unique_ptr<KDParticipants> participants_;
  std::unique_ptr<KDBonjour> bonjour_;
  std::unique_ptr<AddressFolders> addresses_;
  std::unique_ptr<UserPicture> picture_;
  std::unique_ptr<KDPeer> peer_;
  std::unique_ptr<SyncScheduler> scheduler_;
  std::unique_ptr<TodoRetries> retries_;
  std::unique_ptr<PoolRestorer> restorer_;
  std::unique_ptr<DiscoveryReactions> discovery_;
  std::unique_ptr<EnvironmentChecks> environment_;
  std::vector<NotificationCenter::Observation> observations_;
  std::vector<std::unique_ptr<UserDefaults::Observation>> defaultsObservations_;
  std::shared_ptr<Lane> checks_;
  RunLoop::Id housekeeping_ = 0;
  double lastPruning_ = 0;                   ///< seconds since 1970
  std::map<std::string, double> goneSince_;  ///< folders of others who are gone; as lastPruning_
  unsigned poolsToGo_ = 0;                   ///< restored pools whose activation is not through
  bool isClockOff_ = false;
  bool isRestoring_ = false;
  bool isStarted_ = false;
  bool isShuttingDown_ = false;
  std::shared_ptr<bool> alive_ =
      std::make_shared<bool>(true);  ///< tasks that outlive us look at it
};

}  // namespace zolvar
