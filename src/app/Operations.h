#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/Contacts.h"
#include "app/FolderState.h"
#include "pool/FileHistory.h"
#include "pool/ParticipantAddress.h"
#include "pool/PoolSnapshot.h"
#include "pool/VersionStore.h"
#include "util/Failure.h"

namespace zolvar {

class Application;
class KDFilePool;
class KDPoolPresence;
class SyncWait;
enum class PasswordState;

struct PoolInfo {
  std::string name;
  std::string displayName;       ///< as people know it; of contacts their group's name
  bool isAddressFolder = false;  ///< its files are contacts, see describe
  std::string folder;            ///< empty while it has no place on this machine
  PoolPhase phase = PoolPhase::Inactive;
  bool isAnnounced = false;      ///< by us or by others
  std::size_t participants = 0;  ///< others
  std::size_t missing = 0;
  std::size_t conflicts = 0;
  bool passwordRequired = false;
  bool isSyncing = false;
  std::string trouble;  ///< one sentence while something keeps it from working
  FolderState state;
  std::optional<double> pausedUntil;  ///< seconds since 1970; 0: until resumed; none: not paused
};

struct ParticipantInfo {
  ParticipantAddress address;
  bool isLocal = false;
  bool isIgnored = false;
  double lastSync = 0;  ///< seconds since 1970; 0: never
  bool passwordRequired = false;
  Contact contact;
};

struct MissingFile {
  std::string path;
  std::string description;            ///< as people know it; of a contact its name
  std::vector<std::string> holders;   ///< user ids that were seen to have it
  std::optional<std::uint64_t> size;  ///< bytes, where a listing told them
};

struct OpenQuestion {
  std::string poolName;
  DeleteQuestion question;
};

struct SyncInProgress {
  std::string poolName;
  std::string participant;  ///< user id
  std::optional<TransferProgress> progress;
};

struct ProgramStatus {
  std::string userId;
  std::string version;
  std::optional<unsigned> port;  ///< none while the daemon does not run
  bool isStarted = false;        ///< the pools of the last run are back
  std::optional<SyncInProgress> sync;
  std::vector<std::pair<std::string, FolderState>> folders;  ///< subscribed ones, by name
  std::optional<double> pausedUntil;                         ///< of everything; as in PoolInfo
};

/// How a sync with everyone went.
struct SyncOutcome {
  struct Problem {
    std::string participant;
    std::string error;
  };
  std::vector<std::string> synced;  ///< user ids
  std::vector<Problem> failed;
  std::size_t missing = 0;
};

/// Everything that a person can do, for every front end: checks what is asked for, and does it with
/// the application. A refusal is a Failure whose `reason` is the whole sentence (see refusalText).
/// Folders are full paths. Outcomes that take time come through `done`. Main thread.
class Operations {
 public:
  using Done = std::function<void(Result<>)>;

  explicit Operations(Application& application);
  ~Operations();

  // Folders.
  void share(const std::string& folder, const std::optional<std::string>& password, Done done);
  /// Shares a group of the address book, as the folder of its name in the sync folder directory.
  void shareAddresses(const std::string& group, const std::optional<std::string>& password,
                      Done done);
  /// Groups of the address book by name. Fails (Refused) without one, else as the book does.
  [[nodiscard]] Result<std::vector<std::string>> addressGroups() const;
  /// Without a folder: where it lay before, or in the sync folder directory. A folder of another
  /// name is the parent in which one of the pool's name is made.
  void subscribe(const std::string& name, const std::string& folder,
                 const std::optional<std::string>& password, Done done);
  Result<> unsubscribe(const std::string& name);
  void remove(const std::string& name, Done done);
  void setPassword(const std::string& name, const std::string& password, Done done);
  /// Something to know of a folder that can be shared all the same; none for nothing.
  [[nodiscard]] std::optional<std::string> warningAbout(const std::string& folder) const;

  // What is there.
  [[nodiscard]] std::vector<PoolInfo> list() const;
  [[nodiscard]] PoolInfo info(const KDPoolPresence& presence) const;
  [[nodiscard]] Result<std::vector<ParticipantInfo>> participants(const std::string& name) const;
  [[nodiscard]] Result<std::vector<MissingFile>> missing(const std::string& name) const;
  /// A file of the pool as people know it: its path, or a contact's name.
  [[nodiscard]] std::string describe(const std::string& name, const std::string& path) const;
  [[nodiscard]] Result<std::vector<Conflict>> conflicts(const std::string& name) const;
  void tree(const std::string& name, const std::string& path,
            std::function<void(Result<std::string>)> done);
  /// The same as a value.
  void history(const std::string& name, const std::string& path,
               std::function<void(Result<FileHistory>)> done);
  [[nodiscard]] std::vector<OpenQuestion> questions() const;
  [[nodiscard]] ProgramStatus status() const;

  // Versions.
  void useVersion(const std::string& name, const std::string& path, const std::string& id,
                  Done done);
  void dropVersion(const std::string& name, const std::string& path, const std::string& id,
                   Done done);
  void fetchVersion(const std::string& name, const std::string& path, const std::string& id,
                    const std::string& to, Done done);
  /// Asks (a question to be answered) whether missing files are to be deleted on the whole network;
  /// without paths: all that are missing.
  Result<> deleteQueuedFiles(const std::string& name, std::vector<std::string> paths);
  /// `deletes`: on the whole network; else the files are fetched again.
  void answer(const std::string& name, bool deletes, Done done);

  // Versions that fetches have replaced.
  void versions(const std::string& name, const std::string& path,
                std::function<void(Result<std::vector<StoredVersion>>)> done);
  /// `when`: the id of a kept version, or the beginning of the time it was kept at, see whenText.
  void restore(const std::string& name, const std::string& path, const std::string& when,
               Done done);
  /// Keeps what lies here now, so that it can be restored; `done` is told its id.
  void keep(const std::string& name, const std::string& path,
            std::function<void(Result<std::string>)> done);

  // Pauses; without a name: of everything.
  Result<> pause(const std::optional<std::string>& name, std::optional<double> seconds);
  Result<> resume(const std::optional<std::string>& name);
  /// No further complaints about the participant's different password, until the program ends.
  Result<> ignore(const std::string& name, const std::string& userId, bool ignored);

  // Syncs.
  Result<> sync(const std::optional<std::string>& name);
  /// With one participant.
  Result<> syncWith(const std::string& name, const std::string& userId);
  /// Syncs with all participants of the pool; `progressed` is called while files come, `done` when
  /// everybody was tried.
  Result<> syncAndWait(const std::string& name,
                       std::function<void(const TransferProgress&)> progressed,
                       std::function<void(Result<SyncOutcome>)> done);

  // Settings.
  /// "activePools" reads as a JSON array of names.
  [[nodiscard]] std::optional<std::string> setting(const std::string& key) const;
  /// An empty value removes the setting. Writing "activePools" subscribes and unsubscribes; writing
  /// "QMPool-NAME" says where a folder lies that is not subscribed to.
  Result<> set(const std::string& key, const std::string& value);

 private:
  [[nodiscard]] Result<KDPoolPresence*> known(const std::string& name) const;
  /// Why nothing comes while everybody who is there fails to be synced with; else empty.
  [[nodiscard]] std::string troubleOf(const KDPoolPresence& presence,
                                      const FolderState& state) const;
  [[nodiscard]] Result<KDFilePool*> subscribed(const std::string& name) const;
  /// The same for what a folder can do while its drive is away.
  [[nodiscard]] Result<> wanted(const std::string& name) const;
  [[nodiscard]] Failure everythingIsPaused() const;
  void place(KDFilePool& pool, const std::optional<std::string>& password, Done done);
  Result<> setActivePools(const std::string& value);
  Result<> setPlace(const std::string& name, const std::string& value);
  [[nodiscard]] std::optional<Failure> pauseProblem(const std::string& name) const;
  void onVersion(const std::string& name, const std::string& path, const std::string& id,
                 const Done& done, const std::function<void(KDFilePool&, const VersionId&)>& act);

  Application& application_;
  std::set<std::unique_ptr<SyncWait>> waits_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< later tasks hold it weakly
};

/// When a version was kept, in local time: "2026-11-22T19:33:47".
std::string whenText(std::int64_t seconds);
/// A refusal by a rule; `sentence` is all there is to say.
tl::unexpected<Failure> refusal(std::string sentence);
/// What to tell a person: a refusal's own sentence, else the failure's message.
std::string refusalText(const Failure& failure);

}  // namespace zolvar
