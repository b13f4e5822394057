#include "platform/qt/WatchedTree.h"

namespace zolvar {

void WatchedTree::addRoot(int watch) { nodes_[watch] = Node{}; }

void WatchedTree::add(int watch, int parent, const std::string& name) {
  if (nodes_.contains(watch)) {
    move(watch, parent, name);
    return;
  }
  nodes_[watch] = Node{parent, name, {}};
  nodes_.at(parent).children[name] = watch;
}

std::vector<int> WatchedTree::remove(int watch) {
  std::vector<int> removed;
  if (!isKnown(watch)) return removed;
  detach(watch);
  removed.push_back(watch);
  for (std::size_t next = 0; next < removed.size(); ++next) {
    const auto node = nodes_.find(removed[next]);
    for (const auto& [name, child] : node->second.children) removed.push_back(child);
    nodes_.erase(node);
  }
  return removed;
}

void WatchedTree::move(int watch, int newParent, const std::string& newName) {
  for (int above = newParent; above != -1; above = nodes_.at(above).parent) {
    if (above == watch) return;  // no directory lies within itself
  }
  detach(watch);
  Node& node = nodes_.at(watch);
  node.parent = newParent;
  node.name = newName;
  nodes_.at(newParent).children[newName] = watch;
}

std::optional<int> WatchedTree::child(int parent, const std::string& name) const {
  const auto node = nodes_.find(parent);
  if (node == nodes_.end()) return std::nullopt;
  const auto found = node->second.children.find(name);
  if (found == node->second.children.end()) return std::nullopt;
  return found->second;
}

std::string WatchedTree::path(int watch, std::string_view name) const {
  std::vector<const Node*> steps;
  for (int each = watch; each != -1;) {
    const Node& node = nodes_.at(each);
    if (node.parent != -1) steps.push_back(&node);
    each = node.parent;
  }
  std::string path = rootPath_;
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) path += "/" + (*step)->name;
  if (!name.empty()) path.append("/").append(name);
  return path;
}

void WatchedTree::detach(int watch) {
  const Node& node = nodes_.at(watch);
  if (node.parent == -1) return;
  auto& siblings = nodes_.at(node.parent).children;
  // The name may have gone to another directory meanwhile.
  if (const auto own = siblings.find(node.name); own != siblings.end() && own->second == watch) {
    siblings.erase(own);
  }
}

}  // namespace zolvar
