#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zolvar {

/// Which inotify watch stands for which directory of one observed tree. Keeps names and parents,
/// not paths, so that a renamed directory with all in it is one change. Watch numbers are the
/// caller's; the first one added is the root. Caller synchronises.
class WatchedTree {
 public:
  explicit WatchedTree(std::string rootPath) : rootPath_(std::move(rootPath)) {}

  void addRoot(int watch);
  /// Adds a directory; a watch or a name that is known already is moved there.
  void add(int watch, int parent, const std::string& name);
  /// Forgets a directory and everything beneath it; returns all their watches.
  std::vector<int> remove(int watch);
  /// Follows a rename within the tree. Both parents are known.
  void move(int watch, int newParent, const std::string& newName);

  [[nodiscard]] bool isKnown(int watch) const { return nodes_.contains(watch); }
  [[nodiscard]] std::optional<int> child(int parent, const std::string& name) const;
  /// Absolute path of a directory, or of `name` in it.
  [[nodiscard]] std::string path(int watch, std::string_view name = {}) const;
  [[nodiscard]] std::size_t size() const { return nodes_.size(); }

 private:
  struct Node {
    int parent = -1;  ///< -1 for the root
    std::string name;
    std::map<std::string, int> children;
  };

  void detach(int watch);

  const std::string rootPath_;
  std::unordered_map<int, Node> nodes_;
};

}  // namespace zolvar
