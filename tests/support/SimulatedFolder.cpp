#include "support/SimulatedFolder.h"

#include <algorithm>
#include <cerrno>
#include <random>

namespace zolvar {
namespace {

template <class Outcome>
tl::unexpected<Failure> failed(const Outcome& outcome, const char* operation,
                               std::string_view path) {
  return tl::unexpected(failureFromErrno(outcome.error(), operation, std::string(path)));
}

tl::unexpected<Failure> failedWith(int error, const char* operation, std::string_view path) {
  return tl::unexpected(failureFromErrno(error, operation, std::string(path)));
}

void flushBelow(const SimulatedTree::Node& node) {
  node->durable.reset();
  node->isFlushed = true;
  for (const auto& [name, child] : node->children) flushBelow(child);
}

}  // namespace

SimulatedFolder::SimulatedFolder(SimulatedFileSystem& files, SimulatedTree::Node root)
    : files_(files), tree_(files.tree()), root_(std::move(root)) {}

Result<> SimulatedFolder::begin(const char* operation, std::string_view path) const {
  if (auto failure = files_.faults.next(operation, path)) return tl::unexpected(*failure);
  if (files_.isGone(root_->device)) return failedWith(EIO, operation, path);
  return {};
}

Result<SimulatedTree::Node> SimulatedFolder::file(const char* operation, std::string_view path) {
  if (const auto begun = begin(operation, path); !begun) return tl::unexpected(begun.error());
  const auto node = tree_.find(root_, path);
  if (!node) return failed(node, operation, path);
  return *node;
}

Result<std::string> SimulatedFolder::currentPath() const {
  if (const auto begun = begin("currentPath", ""); !begun) return tl::unexpected(begun.error());
  const auto path = tree_.pathOf(root_);
  if (!path) return failedWith(ENOENT, "find", "");
  return *path;
}

FileIdentity SimulatedFolder::identity() const { return {root_->device, root_->inode}; }

SimulatedFolder::WalkGoesOn SimulatedFolder::walkBelow(const SimulatedTree::Node& directory,
                                                       std::string& path, const Visitor& visit,
                                                       const WalkErrors& errors) {
  if (directory->isUnreadable || files_.isGone(directory->device)) {
    errors(path, failureFromErrno(EIO, "read the folder", path));
    return WalkGoesOn::Yes;
  }
  // A copy: the visitor may change the tree.
  std::vector<std::pair<std::string, SimulatedTree::Node>> entries(directory->children.begin(),
                                                                   directory->children.end());
  if (auto* order = files_.walkOrder()) std::shuffle(entries.begin(), entries.end(), *order);
  const std::size_t length = path.size();
  for (const auto& [name, node] : entries) {
    const auto still = directory->children.find(name);
    if (still == directory->children.end()) continue;
    const SimulatedTree::Node current = still->second;
    if (length > 0) path += '/';
    path += name;
    const Visit next = visit(path, current->attributes());
    const bool goesOn =
        next != Visit::Stop && (next == Visit::Skip || !current->isDirectory() ||
                                walkBelow(current, path, visit, errors) == WalkGoesOn::Yes);
    path.resize(length);
    if (!goesOn) return WalkGoesOn::No;
  }
  return WalkGoesOn::Yes;
}

void SimulatedFolder::walk(std::string_view start, const Visitor& visit, const WalkErrors& errors) {
  const auto node = file("walk", start);
  if (!node) {
    errors(start, node.error());
  } else if (!(*node)->isDirectory()) {
    errors(start, failureFromErrno(ENOTDIR, "walk", std::string(start)));
  } else {
    std::string path(start);
    walkBelow(*node, path, visit, errors);
  }
}

Result<std::vector<std::pair<std::string, FileAttributes>>> SimulatedFolder::list(
    std::string_view directory) {
  const auto node = file("list", directory);
  if (!node) return tl::unexpected(node.error());
  if (!(*node)->isDirectory()) return failedWith(ENOTDIR, "list", directory);
  if ((*node)->isUnreadable) return failedWith(EIO, "list", directory);
  std::vector<std::pair<std::string, FileAttributes>> entries;
  for (const auto& [name, child] : (*node)->children)
    entries.emplace_back(name, child->attributes());
  return entries;
}

Result<FileAttributes> SimulatedFolder::attributes(std::string_view path) {
  const auto node = file("attributes", path);
  if (!node) return tl::unexpected(node.error());
  return (*node)->attributes();
}

Result<std::string> SimulatedFolder::read(std::string_view path, std::uint64_t offset,
                                          std::uint64_t limit) {
  const auto node = file("read", path);
  if (!node) return tl::unexpected(node.error());
  if ((*node)->kind == FileKind::Link) return failedWith(ELOOP, "read", path);
  if ((*node)->kind != FileKind::Regular) return failedWith(EISDIR, "read", path);
  const std::string& content = (*node)->content;
  if (offset >= content.size()) return std::string();
  if (content.size() - offset > limit) return fail(FailureKind::Damaged, "read", std::string(path));
  return content.substr(offset);
}

Result<Folder::Reader> SimulatedFolder::open(std::string_view path, std::uint64_t offset) {
  const auto node = file("open", path);
  if (!node) return tl::unexpected(node.error());
  if ((*node)->kind == FileKind::Link) return failedWith(ELOOP, "open", path);
  if ((*node)->kind != FileKind::Regular) return failedWith(EISDIR, "open", path);
  return Reader([this, node = *node, position = offset, name = std::string(path)](
                    char* buffer, std::size_t size) mutable -> Result<std::size_t> {
    if (const auto begun = begin("readPiece", name); !begun) return tl::unexpected(begun.error());
    if (position >= node->content.size()) return 0U;
    const std::size_t count = node->content.copy(buffer, size, position);
    position += count;
    return count;
  });
}

Result<> SimulatedFolder::append(std::string_view path, std::string_view bytes) {
  if (const auto begun = begin("append", path); !begun) return begun;
  const auto place = tree_.place(root_, path);
  if (!place) return failed(place, "append", path);
  std::string content;
  if (const auto old = tree_.find(root_, path); old && (*old)->kind == FileKind::Regular) {
    content = (*old)->content;
    if (bytes.empty()) {  // only flushes what others wrote
      (*old)->durable.reset();
      (*old)->isFlushed = true;
      return {};
    }
  }
  const auto written = tree_.writeFile(*place, content.append(bytes), true);
  if (!written) return failed(written, "append", path);
  return {};
}

Result<> SimulatedFolder::replace(std::string_view path, std::string_view bytes, std::uint32_t mode,
                                  const Check& check) {
  if (const auto begun = begin("replace", path); !begun) return begun;
  if (const auto checked = check ? check() : Result<>(); !checked) return checked;
  const auto place = tree_.place(root_, path);
  if (!place) return failed(place, "replace", path);
  const auto written = tree_.replaceFile(*place, bytes, mode, true);
  if (!written) return failed(written, "replace", path);
  return {};
}

Result<> SimulatedFolder::flush() {
  if (const auto begun = begin("flush", ""); !begun) return begun;
  flushBelow(root_);
  return {};
}

Result<> SimulatedFolder::clear(std::string_view path) { return replace(path, "", 0644, {}); }

Result<> SimulatedFolder::link(std::string_view from, std::string_view to) {
  const auto node = file("link", from);
  if (!node) return tl::unexpected(node.error());
  if ((*node)->isDirectory()) return failedWith(EPERM, "link", from);
  const auto place = tree_.place(root_, to);
  if (!place) return failed(place, "link", to);
  if (place->directory->children.contains(place->name)) return failedWith(EEXIST, "link", to);
  if (place->directory->device != (*node)->device) return failedWith(EXDEV, "link", to);
  tree_.insert(*place, *node);
  tree_.tell(FileEvent::Type::CreateFile, tree_.pathOf(*place));
  return {};
}

Result<> SimulatedFolder::makeSymbolicLink(std::string_view path, std::string_view target) {
  if (const auto begun = begin("makeSymbolicLink", path); !begun) return begun;
  const auto place = tree_.place(root_, path);
  if (!place) return failed(place, "link", path);
  if (place->directory->children.contains(place->name)) return failedWith(EEXIST, "link", path);
  const auto node = tree_.make(FileKind::Link, place->directory);
  node->content = target;
  tree_.insert(*place, node);
  tree_.tell(FileEvent::Type::CreateFile, tree_.pathOf(*place));
  return {};
}

Result<> SimulatedFolder::rename(std::string_view from, std::string_view to) {
  if (const auto begun = begin("rename", from); !begun) return begun;
  const auto source = tree_.place(root_, from);
  if (!source) return failed(source, "rename", from);
  const auto target = tree_.place(root_, to);
  if (!target) return failed(target, "rename", to);
  const auto renamed = tree_.rename(*source, *target);
  if (!renamed) return failed(renamed, "rename", from);
  return {};
}

Result<> SimulatedFolder::moveIn(const std::string& absoluteSource, std::string_view path,
                                 const std::optional<FileAttributes>& replaced) {
  if (const auto begun = begin("moveIn", path); !begun) return begun;
  const auto source = tree_.resolve(absoluteSource, false);
  if (!source) return failed(source, "move in", absoluteSource);
  if ((*source)->isDirectory()) return failedWith(EISDIR, "move in", absoluteSource);
  const std::size_t slash = absoluteSource.rfind('/');
  const auto from = tree_.resolve(absoluteSource.substr(0, slash));
  const auto to = tree_.place(root_, path);
  if (!from) return failed(from, "move in", absoluteSource);
  if (!to) return failed(to, "move in", path);
  const auto there = to->directory->children.find(to->name);
  const bool isThere = there != to->directory->children.end();
  if (isThere != replaced.has_value() ||
      (isThere && !there->second->attributes().isSameAs(*replaced))) {
    return fail(FailureKind::Transient, "move in", std::string(path),
                "another file was put there meanwhile");
  }
  if ((*from)->device != to->directory->device) (*source)->device = to->directory->device;
  const auto moved = tree_.rename({*from, absoluteSource.substr(slash + 1)}, *to, true);
  if (!moved) return failed(moved, "move in", path);
  return {};
}

Result<> SimulatedFolder::removeFile(std::string_view path) {
  const auto node = file("removeFile", path);
  if (!node) return tl::unexpected(node.error());
  if ((*node)->isDirectory()) return failedWith(EISDIR, "remove", path);
  const auto place = tree_.place(root_, path);
  if (!place) return failed(place, "remove", path);
  tree_.tell(FileEvent::Type::Delete, tree_.pathOf(*place));
  (void)tree_.detach(*place);
  return {};
}

Result<> SimulatedFolder::removeTree(std::string_view path) {
  if (const auto begun = begin("removeTree", path); !begun) return begun;
  const auto place = tree_.place(root_, path);
  if (!place) {
    if (place.error() == ENOENT) return {};
    return failed(place, "remove", path);
  }
  const std::string absolute = tree_.pathOf(*place);
  if (tree_.detach(*place)) tree_.tell(FileEvent::Type::Delete, absolute);
  return {};
}

Result<> SimulatedFolder::makeDirectories(std::string_view path) {
  if (const auto begun = begin("makeDirectories", path); !begun) return begun;
  if (!tree_.pathOf(root_)) return failedWith(ENOENT, "make the folder", path);
  const auto made = tree_.makeDirectories(root_, path);
  if (!made) return failed(made, "make the folder", path);
  return {};
}

Result<std::string> SimulatedFolder::readLink(std::string_view path) {
  const auto node = file("readLink", path);
  if (!node) return tl::unexpected(node.error());
  if ((*node)->kind != FileKind::Link) return failedWith(EINVAL, "read the link", path);
  return (*node)->content;
}

Result<> SimulatedFolder::setModTime(std::string_view path, std::int64_t seconds) {
  const auto node = file("setModTime", path);
  if (!node) return tl::unexpected(node.error());
  (*node)->modTime = seconds;
  if (const auto root = tree_.pathOf(root_)) {
    tree_.tell(FileEvent::Type::StatChanged, *root + "/" + std::string(path));
  }
  return {};
}

Result<std::uint64_t> SimulatedFolder::freeSpace() {
  if (const auto begun = begin("freeSpace", ""); !begun) return tl::unexpected(begun.error());
  return files_.freeBytes;
}

Result<> SimulatedFolder::trash(std::string_view path) {
  const auto node = file("trash", path);
  if (!node) return tl::unexpected(node.error());
  const auto place = tree_.place(root_, path);
  if (!place) return failed(place, "trash", path);
  return files_.moveToTrash(*place);
}

Result<> SimulatedFolder::setLabel(std::string_view path, int number) {
  const auto node = file("setLabel", path);
  if (!node) return tl::unexpected(node.error());
  (*node)->label = number;
  return {};
}

}  // namespace zolvar
