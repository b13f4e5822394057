#include "support/SimulatedTree.h"

#include <cerrno>
#include <vector>

namespace zolvar {
namespace {

std::string_view takeComponent(std::string_view& path) {
  while (path.starts_with('/')) path.remove_prefix(1);
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string_view component = path.substr(0, end);
  path.remove_prefix(end);
  while (path.starts_with('/')) path.remove_prefix(1);
  return component;
}

bool isAncestorOrSelf(const SimulatedNode* ancestor, SimulatedNode::Pointer node) {
  for (; node != nullptr; node = node->parent.lock()) {
    if (node.get() == ancestor) return true;
  }
  return false;
}

}  // namespace

FileAttributes SimulatedNode::attributes() const {
  FileAttributes result;
  result.kind = kind;
  result.size = isDirectory() ? 4096 : content.size();
  result.modTime = modTime;
  result.inode = inode;
  result.device = device;
  result.mode = mode;
  return result;
}

SimulatedTree::SimulatedTree(const Clock& clock)
    : clock_(clock), root_(std::make_shared<SimulatedNode>()) {
  root_->kind = FileKind::Directory;
  root_->mode = 0755;
  root_->inode = nextInode_++;
  root_->modTime = now();
}

SimulatedTree::Outcome<SimulatedTree::Node> SimulatedTree::find(const Node& base,
                                                                std::string_view relative) const {
  if (relative.starts_with('/')) return tl::unexpected(EXDEV);
  Node node = base;
  while (!relative.empty()) {
    const std::string_view name = takeComponent(relative);
    if (name == ".." || name == ".") return tl::unexpected(EXDEV);
    if (name.size() > 255) return tl::unexpected(ENAMETOOLONG);
    if (node->kind == FileKind::Link) return tl::unexpected(ELOOP);
    if (!node->isDirectory()) return tl::unexpected(ENOTDIR);
    if (node->isUnreadable) return tl::unexpected(EIO);
    const auto found = node->children.find(name);
    if (found == node->children.end()) return tl::unexpected(ENOENT);
    node = found->second;
  }
  return node;
}

SimulatedTree::Outcome<SimulatedTree::Node> SimulatedTree::resolve(std::string_view absolute,
                                                                   bool followsLast) const {
  std::string rest(absolute);
  Node node = root_;
  for (int links = 0; links < 40;) {
    std::string_view view = rest;
    const std::string name(takeComponent(view));
    if (name.empty()) return node;
    const std::string remaining(view);
    if (!node->isDirectory()) return tl::unexpected(ENOTDIR);
    if (name == "." || name == "..") {
      if (const auto parent = node->parent.lock(); name == ".." && parent) node = parent;
      rest = remaining;
      continue;
    }
    const auto found = node->children.find(name);
    if (found == node->children.end()) return tl::unexpected(ENOENT);
    if (found->second->kind == FileKind::Link && (followsLast || !remaining.empty())) {
      const std::string& target = found->second->content;
      if (target.starts_with('/')) node = root_;
      rest = target + (remaining.empty() ? "" : "/" + remaining);
      ++links;
      continue;
    }
    node = found->second;
    rest = remaining;
  }
  return tl::unexpected(ELOOP);
}

SimulatedTree::Outcome<SimulatedTree::Place> SimulatedTree::place(const Node& base,
                                                                  std::string_view relative) const {
  while (relative.ends_with('/')) relative.remove_suffix(1);
  const std::size_t slash = relative.rfind('/');
  const std::string_view name =
      slash == std::string_view::npos ? relative : relative.substr(slash + 1);
  if (name.empty() || name == "." || name == "..") return tl::unexpected(EINVAL);
  if (name.size() > 255) return tl::unexpected(ENAMETOOLONG);
  auto directory =
      find(base, slash == std::string_view::npos ? std::string_view() : relative.substr(0, slash));
  if (!directory) return tl::unexpected(directory.error());
  if ((*directory)->kind == FileKind::Link) return tl::unexpected(ELOOP);
  if (!(*directory)->isDirectory()) return tl::unexpected(ENOTDIR);
  if ((*directory)->isUnreadable) return tl::unexpected(EIO);
  return Place{*directory, std::string(name)};
}

SimulatedTree::Node SimulatedTree::make(FileKind kind, const Node& directory) {
  auto node = std::make_shared<SimulatedNode>();
  node->kind = kind;
  node->inode = nextInode_++;
  node->device = directory->device;
  node->modTime = now();
  node->mode = kind == FileKind::Directory ? 0755 : kind == FileKind::Link ? 0777 : 0644;
  return node;
}

void SimulatedTree::insert(const Place& place, const Node& node) {
  place.directory->children[place.name] = node;
  if (node->isDirectory()) {
    node->parent = place.directory;
    node->name = place.name;
  }
  touchEntryTime(*place.directory);
}

SimulatedTree::Outcome<SimulatedTree::Node> SimulatedTree::detach(const Place& place) {
  const auto found = place.directory->children.find(place.name);
  if (found == place.directory->children.end()) return tl::unexpected(ENOENT);
  const Node node = found->second;
  place.directory->children.erase(found);
  if (node->isDirectory()) node->parent.reset();
  touchEntryTime(*place.directory);
  return node;
}

SimulatedTree::Outcome<SimulatedTree::Node> SimulatedTree::makeDirectories(
    const Node& base, std::string_view relative) {
  Node node = base;
  while (!relative.empty()) {
    const std::string_view name = takeComponent(relative);
    if (name.empty()) break;
    const auto next = find(node, name);
    if (next) {
      if ((*next)->kind == FileKind::Link) return tl::unexpected(ELOOP);
      if (!(*next)->isDirectory()) return tl::unexpected(ENOTDIR);
      node = *next;
      continue;
    }
    if (next.error() != ENOENT) return tl::unexpected(next.error());
    const Node made = make(FileKind::Directory, node);
    insert({node, std::string(name)}, made);
    if (const auto path = pathOf(made)) tell(FileEvent::Type::CreateDir, *path);
    node = made;
  }
  return node;
}

SimulatedTree::Outcome<SimulatedTree::Node> SimulatedTree::writeFile(const Place& place,
                                                                     std::string_view content,
                                                                     bool isFlushed) {
  const auto found = place.directory->children.find(place.name);
  if (found == place.directory->children.end()) {
    const Node node = make(FileKind::Regular, place.directory);
    node->content = content;
    node->isFlushed = isFlushed;
    insert(place, node);
    tell(FileEvent::Type::CreateFile, pathOf(place));
    tell(FileEvent::Type::ContentModified, pathOf(place), {}, true);
    return node;
  }
  const Node node = found->second;
  if (node->kind == FileKind::Link) return tl::unexpected(ELOOP);
  if (node->kind != FileKind::Regular) return tl::unexpected(EISDIR);
  if (!isFlushed && node->isFlushed) node->durable = node->content;
  if (isFlushed) node->durable.reset();
  node->isFlushed = isFlushed;
  node->content = content;
  node->modTime = now();
  tell(FileEvent::Type::ContentModified, pathOf(place), {}, true);
  return node;
}

SimulatedTree::Outcome<SimulatedTree::Node> SimulatedTree::replaceFile(const Place& place,
                                                                       std::string_view content,
                                                                       std::uint32_t mode,
                                                                       bool isFlushed) {
  const auto found = place.directory->children.find(place.name);
  if (found != place.directory->children.end() && found->second->isDirectory()) {
    return tl::unexpected(EISDIR);
  }
  const Node node = make(FileKind::Regular, place.directory);
  node->content = content;
  node->mode = mode;
  node->isFlushed = isFlushed;
  insert(place, node);
  tell(FileEvent::Type::Rename, pathOf(place) + ".new", pathOf(place));
  return node;
}

SimulatedTree::Outcome<bool> SimulatedTree::rename(const Place& from, const Place& to,
                                                   bool acrossDevices) {
  const auto source = from.directory->children.find(from.name);
  if (source == from.directory->children.end()) return tl::unexpected(ENOENT);
  const Node node = source->second;
  if (!acrossDevices && from.directory->device != to.directory->device) {
    return tl::unexpected(EXDEV);
  }
  if (node->covered != nullptr) return tl::unexpected(EBUSY);
  if (isAncestorOrSelf(node.get(), to.directory)) return tl::unexpected(EINVAL);
  const auto target = to.directory->children.find(to.name);
  if (target != to.directory->children.end()) {
    if (target->second == node) return true;  // two names of one node both stay
    if (target->second->isDirectory() != node->isDirectory()) {
      return tl::unexpected(node->isDirectory() ? ENOTDIR : EISDIR);
    }
    if (target->second->isDirectory() && !target->second->children.empty()) {
      return tl::unexpected(ENOTEMPTY);
    }
    (void)detach(to);
  }
  const std::string path1 = pathOf(from);
  (void)detach(from);
  insert(to, node);
  tell(FileEvent::Type::Rename, path1, pathOf(to));
  return true;
}

std::optional<std::string> SimulatedTree::pathOf(const Node& directory) const {
  std::string path;
  for (Node node = directory; node != root_;) {
    const Node parent = node->parent.lock();
    if (parent == nullptr) return std::nullopt;
    path = "/" + node->name + path;
    node = parent;
  }
  return path.empty() ? "/" : path;
}

std::string SimulatedTree::pathOf(const Place& place) const {
  const auto directory = pathOf(place.directory);
  return directory.value_or("(removed)") + (directory == "/" ? "" : "/") + place.name;
}

void SimulatedTree::tell(FileEvent::Type type, std::string path1, std::string path2, bool closed) {
  if (changed) changed({type, std::move(path1), std::move(path2), closed});
}

}  // namespace zolvar
