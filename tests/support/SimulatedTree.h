#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Clock.h"
#include "platform/FileSystem.h"

namespace zolvar {

/// One inode. Hard links are several names for one node.
struct SimulatedNode {
  using Pointer = std::shared_ptr<SimulatedNode>;

  FileKind kind = FileKind::Regular;
  std::uint64_t inode = 0;
  std::uint64_t device = 1;
  std::uint32_t mode = 0644;
  std::int64_t modTime = 0;
  std::string content;                 ///< of a link: its target
  std::optional<std::string> durable;  ///< content after a power loss; none: the content itself
  bool isFlushed = true;
  int label = 0;
  bool isUnreadable = false;  ///< a directory that gives an I/O error

  std::map<std::string, Pointer, std::less<>> children;
  std::weak_ptr<SimulatedNode> parent;  ///< of directories
  std::string name;                     ///< of directories, in the parent
  Pointer covered;                      ///< what a mounted directory hides

  [[nodiscard]] FileAttributes attributes() const;
  [[nodiscard]] bool isDirectory() const { return kind == FileKind::Directory; }
};

/// The tree of inodes of one host, with the rules of a POSIX file system: directory times change
/// with their entries, a rename replaces, a hard link shares its node. Failures are error numbers.
class SimulatedTree {
 public:
  using Node = SimulatedNode::Pointer;
  template <class T>
  using Outcome = tl::expected<T, int>;  ///< the error is an errno value

  explicit SimulatedTree(const Clock& clock);

  [[nodiscard]] const Node& root() const { return root_; }
  /// Beneath `base`; a link as a step is ELOOP, as the last component the link itself.
  Outcome<Node> find(const Node& base, std::string_view relative) const;
  /// From the root, through links, the last one included when `followsLast`.
  Outcome<Node> resolve(std::string_view absolute, bool followsLast = true) const;

  struct Place {
    Node directory;
    std::string name;
  };
  /// Where a name is or would be; the directory must exist.
  Outcome<Place> place(const Node& base, std::string_view relative) const;

  Node make(FileKind kind, const Node& directory);    ///< not yet in the directory
  void insert(const Place& place, const Node& node);  ///< replaces what has the name
  Outcome<Node> detach(const Place& place);
  Outcome<Node> makeDirectories(const Node& base, std::string_view relative);
  Outcome<Node> writeFile(const Place& place, std::string_view content, bool isFlushed);
  Outcome<Node> replaceFile(const Place& place, std::string_view content, std::uint32_t mode,
                            bool isFlushed);
  Outcome<bool> rename(const Place& from, const Place& to, bool acrossDevices = false);

  /// Absolute path of a directory; none when it is no longer in the tree.
  [[nodiscard]] std::optional<std::string> pathOf(const Node& directory) const;
  [[nodiscard]] std::string pathOf(const Place& place) const;
  [[nodiscard]] std::int64_t now() const { return static_cast<std::int64_t>(clock_.now()); }

  void touchEntryTime(SimulatedNode& directory) const { directory.modTime = now(); }
  void tell(FileEvent::Type type, std::string path1, std::string path2 = {}, bool closed = false);
  /// Told of every change.
  std::function<void(const FileEvent&)> changed;

 private:
  const Clock& clock_;
  Node root_;
  std::uint64_t nextInode_ = 2;
};

}  // namespace zolvar
