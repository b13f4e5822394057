#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "net/DaemonConfiguration.h"
#include "net/KDPoolPresence.h"
#include "pool/KDFilePool.h"
#include "util/NotificationCenter.h"

namespace zolvar {

class KDBonjour;
class KDParticipant;
class Lane;
class ServerControl;
class TransferDaemon;
struct DaemonStart;
struct Platform;

/// The local peer: owns every pool by name and the daemon that serves the active ones, and keeps
/// their announcements. The daemon is started and stopped on a lane of the peer; the main thread
/// never waits for it and answers from what the last start or stop ended with. Owned by the
/// application; the platform, the centre, the KDBonjour and the delegate outlive it. Destroying it
/// stops the daemon and touches no folder. Main thread.
class KDPeer {
 public:
  /// Makes pools of one class.
  using PoolClass = std::function<std::shared_ptr<KDFilePool>(const std::string& path,
                                                              const KDFilePool::Options& options)>;
  using Done = std::function<void(Result<>)>;

  struct Settings {
    unsigned port = 49999;
    std::string basePath;
    std::string userId;  ///< empty: localUserId
    KDFilePoolDelegate* delegate = nullptr;
    PoolClass addressPoolClass;  ///< for paths that end in ".zolvaraddresses"; may be empty
    std::optional<DaemonOwner> owner = currentDaemonOwner();
    /// Neither served nor announced meanwhile; may be empty.
    std::function<bool(const std::string& poolName)> isPaused;
  };

  /// Makes the base path. Fails when it is no folder afterwards.
  static Result<std::unique_ptr<KDPeer>> make(Settings settings, Platform& platform,
                                              NotificationCenter& center, KDBonjour& bonjour);
  ~KDPeer();

  [[nodiscard]] const std::string& userId() const { return userId_; }
  [[nodiscard]] const std::string& basePath() const { return settings_.basePath; }
  [[nodiscard]] bool isMe(const KDParticipant& participant) const;
  [[nodiscard]] std::string description() const;

  // Pools.
  using Presences = std::map<std::string, std::unique_ptr<KDPoolPresence>>;
  [[nodiscard]] const Presences& filePoolsByName() const { return presences_; }
  [[nodiscard]] std::vector<std::shared_ptr<KDFilePool>> filePools() const;
  [[nodiscard]] std::shared_ptr<KDFilePool> poolNamed(const std::string& name) const;
  /// Null when there is no such pool.
  [[nodiscard]] KDPoolPresence* presence(const std::string& poolName) const;
  [[nodiscard]] KDPoolPresence* presence(const KDFilePool& pool) const;
  /// Stores the pool under its name, in place of any other of that name.
  void addPool(std::shared_ptr<KDFilePool> pool);
  /// Makes a pool of the class and adds it. Fails (Refused) when a pool's *name* equals the whole
  /// path, as happens for a name without a folder; that the name of the path's folder is not looked
  /// up is intended.
  Result<std::shared_ptr<KDFilePool>> addPoolWithPathUsingPoolClass(
      const std::string& path, const PoolClass& poolClass, const KDFilePool::Options& options);
  /// The same with the class that the path's extension asks for. The failure carries no text.
  Result<std::shared_ptr<KDFilePool>> addPoolWithPath(const std::string& path,
                                                      const KDFilePool::Options& options);
  /// Moves the pool's folder to the Trash, off the main thread; when that worked, forgets orphaned
  /// pools. `done` is told on the main thread.
  /// Requires: "Pool may not be active during removal."
  void removePool(KDFilePool& pool, Done done = {});
  /// Forgets the inactive pools that have no participants and whose folder does not exist.
  void removeOrphanedPools();
  /// Forgets a pool and leaves what is on the disk. Requires: not active ("Pool may not be
  /// active during removal.").
  void forgetPool(const KDFilePool& pool);

  // Daemon. Starting and stopping take effect later and tell `done` on the main thread; requests
  // made meanwhile are joined to one (see ServerControl).
  void startServer(Done done = {});
  void stopServer(Done done = {});
  [[nodiscard]] bool isServerRunning() const;
  /// Requires: a running daemon ("Requested port number before server was started.").
  [[nodiscard]] unsigned serverPort() const;
  [[nodiscard]] unsigned serverBandwidthLimit() const;  ///< KB/s, 0: none, else at least 10
  [[nodiscard]] unsigned clientBandwidthLimit() const;  ///< the same
  [[nodiscard]] std::string configFileContent() const;
  [[nodiscard]] std::string passwordFileContent() const;  ///< every pool with a password
  [[nodiscard]] std::string configFilePath() const;
  [[nodiscard]] std::string pidFilePath() const;
  [[nodiscard]] std::string lockFilePath() const;
  [[nodiscard]] std::string logFilePath() const;
  [[nodiscard]] std::string passwordFilePath() const;

  // Announcements.
  /// Requires: "Server not running."
  void announcePool(const std::string& poolName);
  void deannouncePool(const std::string& poolName);
  void reannounceAllPools();
  /// Restarts a running daemon with a configuration from the current pools, then announces the pool
  /// (if any) or withdraws it. A pool that is not ours is ignored.
  void criticalPoolDataDidChange(KDFilePool* pool);

  /// Reads the picture of a participant from the logs folder of its pool, off the main thread, and
  /// keeps it at the participant; `done` is told whether there is one (1 MB at most).
  void loadPicture(const std::shared_ptr<KDParticipant>& participant,
                   std::function<void(bool)> done);

  /// Stops the daemon, then deactivates every pool and moves its folder to the Trash. Nothing in
  /// the application calls it.
  void release();

 private:
  KDPeer(Settings settings, Platform& platform, NotificationCenter& center, KDBonjour& bonjour,
         const std::string& supportFolder);
  [[nodiscard]] bool isPaused(const KDFilePool& pool) const {
    return settings_.isPaused && settings_.isPaused(pool.name());
  }
  /// Why an active pool gets no module and no announcement, one sentence; none when it does.
  [[nodiscard]] std::optional<std::string> servingProblem(const KDPoolPresence& presence) const;
  [[nodiscard]] DaemonConfiguration configuration() const;
  void observeAll();
  [[nodiscard]] DaemonStart prepareStart();
  void serverDidChange(bool running, const std::string& trouble);
  void publish(KDPoolPresence& presence);
  void publishLater(const std::string& poolName);
  void netServiceDidAdd(const std::string& serviceName, const TxtRecord& txt);
  void netServiceDidFail(const std::string& serviceName, const Failure& failure);
  void didSeeAnnouncement(const std::string& serviceName, const TxtRecord& txt);
  void lookForOwnIdElsewhere(KDPoolPresence& presence);
  void suspectIfOwnId(KDPoolPresence& presence, const std::string& serviceName);
  void tellOwnIdElsewhere(KDPoolPresence& presence, const std::string& serviceName);
  void warn(KDPoolPresence& presence, const std::string& text);
  void after(double seconds, std::function<void()> task);
  void onLane(std::function<void()> job);

  Settings settings_;
  Platform& platform_;
  NotificationCenter& center_;
  KDBonjour& bonjour_;
  std::string userId_;
  Presences presences_;
  std::shared_ptr<TransferDaemon> daemon_;
  std::shared_ptr<Lane> lane_;
  std::unique_ptr<ServerControl> server_;
  std::vector<NotificationCenter::Observation> observations_;
  std::set<std::string> servedNames_;                ///< modules of the last configuration
  std::map<std::string, std::string> toldProblems_;  ///< last sentence told, by pool name
  std::map<std::string, int> failedPublications_;    ///< in a row, by pool name
  std::set<std::string> suspects_;                   ///< services that may be our own id elsewhere
  std::shared_ptr<bool> alive_;  ///< tasks that may outlive the peer hold it weakly
};

}  // namespace zolvar
