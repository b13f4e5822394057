#pragma once

#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/Faults.h"
#include "support/SimulatedRunLoop.h"
#include "support/SimulatedTree.h"

namespace zolvar {

/// One host's files, in memory. Differs from the real one: times come from the simulated clock in
/// whole seconds, walks visit siblings in an order drawn from a seed, inode numbers are never used
/// again, locks know no process, observations are whole and told by the run loop. What the engine
/// writes is flushed; what write() and save() made since the last flush can be lost at powerLoss.
class SimulatedFileSystem : public FileSystem {
 public:
  SimulatedFileSystem(SimulatedClock& clock, SimulatedRunLoop& loop,
                      std::string home = "/home/user");
  ~SimulatedFileSystem() override;

  Result<std::unique_ptr<Folder>> open(const std::string& absolutePath) override;
  Result<> makeFolder(const std::string& absolutePath) override;
  [[nodiscard]] bool isFolder(const std::string& absolutePath) const override;
  [[nodiscard]] Result<FileIdentity> identity(const std::string& absolutePath) const override;
  [[nodiscard]] std::vector<std::string> subfolders(const std::string& absolutePath) const override;
  Result<> trashFolder(const std::string& absolutePath) override;
  Result<std::unique_ptr<FileLock>> lock(const std::string& absolutePath) override;
  Result<std::unique_ptr<FolderObservation>> observe(
      const std::string& absolutePath, std::function<void(const FileEvent&)> changed,
      std::function<void(const Failure&)> lost) override;
  [[nodiscard]] std::string homeFolder() const override { return home_; }
  Result<std::string> supportFolder() override;

  // What a person and other programs do; paths are absolute, missing folders are made, and a
  // mistake of the test throws std::logic_error.

  /// Writes in place, as an editor does that keeps the inode; the time is now unless given.
  void write(const std::string& path, const std::string& content, std::int64_t modTime = -1);
  /// Writes aside and renames over: a new inode.
  void save(const std::string& path, const std::string& content, std::int64_t modTime = -1);
  void makeLink(const std::string& path, const std::string& target, std::int64_t modTime = -1);
  void makeOther(const std::string& path);  ///< a socket
  void setTime(const std::string& path, std::int64_t modTime);
  void setMode(const std::string& path, std::uint32_t mode);
  [[nodiscard]] std::optional<std::string> readAll(const std::string& path) const;
  [[nodiscard]] std::optional<FileAttributes> attributesOf(const std::string& path) const;
  [[nodiscard]] std::string linkTarget(const std::string& path) const;
  [[nodiscard]] bool exists(const std::string& path) const {
    return attributesOf(path).has_value();
  }
  void remove(const std::string& path);  ///< with everything in it; absent is fine
  void move(const std::string& from, const std::string& to);
  /// Copies a file or a folder with all its contents and times, as by hand.
  void copy(const std::string& from, SimulatedFileSystem& other, const std::string& to) const;
  [[nodiscard]] int label(const std::string& path) const;
  /// Relative path → content ("/" for directories, "-> target" for links), the metadata folder
  /// left out.
  [[nodiscard]] std::map<std::string, std::string> contents(const std::string& folder) const;
  [[nodiscard]] std::set<std::string> everyContent() const;  ///< of all files, the Trash included

  // The Trash: items lie under homeFolder()/.local/share/Trash/files; what was ever moved there
  // is remembered even after it was emptied.
  struct TrashedFile {
    std::string path;  ///< absolute, where it was
    std::string content;
  };
  [[nodiscard]] const std::vector<TrashedFile>& trashed() const { return trashed_; }
  [[nodiscard]] bool wasTrashed(const std::string& content) const;

  // The disk's misfortunes.
  mutable Faults faults;
  std::uint64_t freeBytes = 1ULL << 40;
  bool isObservable = true;  ///< false: observe tells that this file system reports nothing
  void setWalkSeed(std::uint64_t seed);  ///< 0: sorted
  void setUnreadable(const std::string& directory, bool isUnreadable);
  /// Puts an empty file system (or the one that was unmounted) over the directory.
  void mount(const std::string& path, std::uint64_t device);
  void unmount(const std::string& path);
  void loseEvents();  ///< tells every observer that its observation is no longer whole
  /// Everything not flushed is as it was at the last flush, or empty.
  void powerLoss();
  void flush();
  /// Ends the locks of a process that died.
  void dropLocks() { locks_->clear(); }

  // For the other stand-ins.
  SimulatedTree& tree() { return tree_; }
  [[nodiscard]] bool isGone(std::uint64_t device) const { return gone_.contains(device); }
  std::mt19937_64* walkOrder() { return walkSeed_ == 0 ? nullptr : &walkOrder_; }
  Result<> moveToTrash(const SimulatedTree::Place& place);

 private:
  struct Observer;
  class Observation;
  SimulatedTree::Place placeFor(const std::string& path);
  SimulatedTree::Node nodeFor(const std::string& path) const;
  void remember(const SimulatedTree::Node& node, const std::string& path);
  void tellObservers(const FileEvent& event);

  SimulatedRunLoop& loop_;
  SimulatedTree tree_;
  std::string home_;
  std::uint64_t walkSeed_ = 1;
  std::mt19937_64 walkOrder_{1};
  std::set<std::uint64_t> gone_;
  std::map<std::uint64_t, SimulatedTree::Node> unmounted_;
  std::vector<TrashedFile> trashed_;
  std::shared_ptr<std::set<std::string>> locks_ = std::make_shared<std::set<std::string>>();
  std::vector<std::weak_ptr<Observer>> observers_;
};

}  // namespace zolvar
