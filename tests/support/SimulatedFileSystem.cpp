#include "support/SimulatedFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "support/SimulatedFolder.h"

namespace zolvar {
namespace {

constexpr std::string_view TrashFolder = "/.local/share/Trash/files";

template <class Outcome>
void expect(const Outcome& outcome, const std::string& path) {
  if (!outcome) {
    throw std::logic_error("The test cannot do that to '" + path +
                           "': " + failureFromErrno(outcome.error(), "", "").reason);
  }
}

std::string parentOf(const std::string& path) { return path.substr(0, path.rfind('/')); }
std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

bool isBelow(const std::string& path, const std::string& folder) {
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

void eachNode(const SimulatedTree::Node& node, const std::string& path,
              const std::function<void(const SimulatedTree::Node&, const std::string&)>& visit) {
  visit(node, path);
  for (const auto& [name, child] : node->children) {
    eachNode(child, path.empty() ? name : path + "/" + name, visit);
  }
}

}  // namespace

struct SimulatedFileSystem::Observer {
  std::string path;
  std::function<void(const FileEvent&)> changed;
  std::function<void(const Failure&)> lost;
};

class SimulatedFileSystem::Observation : public FolderObservation {
 public:
  explicit Observation(std::shared_ptr<Observer> observer) : observer_(std::move(observer)) {}

 private:
  std::shared_ptr<Observer> observer_;
};

SimulatedFileSystem::SimulatedFileSystem(SimulatedClock& clock, SimulatedRunLoop& loop,
                                         std::string home)
    : loop_(loop), tree_(clock), home_(std::move(home)) {
  expect(tree_.makeDirectories(tree_.root(), home_.substr(1)), home_);
  tree_.changed = [this](const FileEvent& event) { tellObservers(event); };
}

SimulatedFileSystem::~SimulatedFileSystem() = default;

Result<std::unique_ptr<Folder>> SimulatedFileSystem::open(const std::string& absolutePath) {
  if (auto failure = faults.next("openFolder", absolutePath)) return tl::unexpected(*failure);
  const auto node = tree_.resolve(absolutePath);
  const int error = !absolutePath.starts_with('/') ? EINVAL
                    : !node                        ? node.error()
                    : !(*node)->isDirectory()      ? ENOTDIR
                                                   : 0;
  if (error != 0) return tl::unexpected(failureFromErrno(error, "open the folder", absolutePath));
  return std::make_unique<SimulatedFolder>(*this, *node);
}

Result<> SimulatedFileSystem::makeFolder(const std::string& absolutePath) {
  if (auto failure = faults.next("makeFolder", absolutePath)) return tl::unexpected(*failure);
  if (!absolutePath.starts_with('/')) {
    return tl::unexpected(failureFromErrno(EINVAL, "make the folder", absolutePath));
  }
  if (const auto node = tree_.resolve(absolutePath); node && (*node)->isDirectory()) return {};
  const auto made = tree_.makeDirectories(tree_.root(), absolutePath.substr(1));
  if (!made) return tl::unexpected(failureFromErrno(made.error(), "make the folder", absolutePath));
  return {};
}

bool SimulatedFileSystem::isFolder(const std::string& absolutePath) const {
  if (faults.next("isFolder", absolutePath)) return false;
  const auto node = tree_.resolve(absolutePath);
  return absolutePath.starts_with('/') && node && (*node)->isDirectory();
}

Result<FileIdentity> SimulatedFileSystem::identity(const std::string& absolutePath) const {
  if (auto failure = faults.next("identity", absolutePath)) return tl::unexpected(*failure);
  const auto node = tree_.resolve(absolutePath);
  if (!node) return tl::unexpected(failureFromErrno(node.error(), "look at", absolutePath));
  return FileIdentity{(*node)->device, (*node)->inode};
}

std::vector<std::string> SimulatedFileSystem::subfolders(const std::string& absolutePath) const {
  std::vector<std::string> found;
  const auto node = tree_.resolve(absolutePath);
  if (faults.next("subfolders", absolutePath) || !node) return found;
  for (const auto& [name, child] : (*node)->children) {
    if (child->isDirectory()) found.push_back(absolutePath + "/" + name);
  }
  return found;
}

Result<> SimulatedFileSystem::trashFolder(const std::string& absolutePath) {
  if (auto failure = faults.next("trashFolder", absolutePath)) return tl::unexpected(*failure);
  const auto place = tree_.place(tree_.root(), absolutePath.substr(1));
  if (!place) return tl::unexpected(failureFromErrno(place.error(), "trash", absolutePath));
  return moveToTrash(*place);
}

Result<std::unique_ptr<FileLock>> SimulatedFileSystem::lock(const std::string& absolutePath) {
  struct Lock : FileLock {
    ~Lock() override { locks->erase(path); }
    std::shared_ptr<std::set<std::string>> locks;
    std::string path;
  };
  if (auto failure = faults.next("lock", absolutePath)) return tl::unexpected(*failure);
  if (locks_->contains(absolutePath)) return fail(FailureKind::Refused, "lock", absolutePath);
  write(absolutePath, "4711\n");
  auto lock = std::make_unique<Lock>();
  lock->locks = locks_;
  lock->path = absolutePath;
  locks_->insert(absolutePath);
  return lock;
}

Result<std::unique_ptr<FolderObservation>> SimulatedFileSystem::observe(
    const std::string& absolutePath, std::function<void(const FileEvent&)> changed,
    std::function<void(const Failure&)> lost) {
  if (auto failure = faults.next("observe", absolutePath)) return tl::unexpected(*failure);
  if (!isFolder(absolutePath)) return fail(FailureKind::Absent, "observe", absolutePath);
  auto observer =
      std::make_shared<Observer>(Observer{absolutePath, std::move(changed), std::move(lost)});
  observers_.push_back(observer);
  if (!isObservable) loseEvents();
  return std::make_unique<Observation>(std::move(observer));
}

Result<std::string> SimulatedFileSystem::supportFolder() {
  const std::string path = home_ + "/.local/share/Zolvar";
  const auto made = makeFolder(path);
  if (!made) return tl::unexpected(made.error());
  setMode(path, 0700);
  return path;
}

SimulatedTree::Node SimulatedFileSystem::nodeFor(const std::string& path) const {
  const auto node = tree_.resolve(path, false);
  expect(node, path);
  return *node;
}

SimulatedTree::Place SimulatedFileSystem::placeFor(const std::string& path) {
  const std::string folder = parentOf(path);
  if (const auto node = tree_.resolve(folder)) return {*node, nameOf(path)};
  const auto made = tree_.makeDirectories(tree_.root(), folder.substr(1));
  expect(made, path);
  return {*made, nameOf(path)};
}

void SimulatedFileSystem::write(const std::string& path, const std::string& content,
                                std::int64_t modTime) {
  const auto node = tree_.writeFile(placeFor(path), content, false);
  expect(node, path);
  if (modTime >= 0) (*node)->modTime = modTime;
}

void SimulatedFileSystem::save(const std::string& path, const std::string& content,
                               std::int64_t modTime) {
  const auto node = tree_.replaceFile(placeFor(path), content, 0644, false);
  expect(node, path);
  if (modTime >= 0) (*node)->modTime = modTime;
}

void SimulatedFileSystem::makeLink(const std::string& path, const std::string& target,
                                   std::int64_t modTime) {
  const auto place = placeFor(path);
  const auto node = tree_.make(FileKind::Link, place.directory);
  node->content = target;
  if (modTime >= 0) node->modTime = modTime;
  tree_.insert(place, node);
  tree_.tell(FileEvent::Type::CreateFile, path);
}

void SimulatedFileSystem::makeOther(const std::string& path) {
  const auto place = placeFor(path);
  tree_.insert(place, tree_.make(FileKind::Other, place.directory));
}

void SimulatedFileSystem::setTime(const std::string& path, std::int64_t modTime) {
  nodeFor(path)->modTime = modTime;
  tree_.tell(FileEvent::Type::StatChanged, path);
}

void SimulatedFileSystem::setMode(const std::string& path, std::uint32_t mode) {
  nodeFor(path)->mode = mode;
}

std::optional<std::string> SimulatedFileSystem::readAll(const std::string& path) const {
  const auto node = tree_.resolve(path);
  if (!node || (*node)->kind != FileKind::Regular) return std::nullopt;
  return (*node)->content;
}

std::optional<FileAttributes> SimulatedFileSystem::attributesOf(const std::string& path) const {
  const auto node = tree_.resolve(path, false);
  return node ? std::optional((*node)->attributes()) : std::nullopt;
}

std::string SimulatedFileSystem::linkTarget(const std::string& path) const {
  return nodeFor(path)->content;
}

void SimulatedFileSystem::remove(const std::string& path) {
  if (!exists(path)) return;
  (void)tree_.detach(placeFor(path));
  tree_.tell(FileEvent::Type::Delete, path);
}

void SimulatedFileSystem::move(const std::string& from, const std::string& to) {
  expect(tree_.rename(placeFor(from), placeFor(to), true), from);
}

void SimulatedFileSystem::copy(const std::string& from, SimulatedFileSystem& other,
                               const std::string& to) const {
  eachNode(nodeFor(from), "", [&](const SimulatedTree::Node& node, const std::string& path) {
    const std::string target = path.empty() ? to : to + "/" + path;
    if (node->isDirectory()) {
      expect(other.tree_.makeDirectories(other.tree_.root(), target.substr(1)), target);
    } else if (node->kind == FileKind::Link) {
      other.makeLink(target, node->content, node->modTime);
    } else {
      other.save(target, node->content, node->modTime);
    }
  });
  eachNode(nodeFor(from), "", [&](const SimulatedTree::Node& node, const std::string& path) {
    other.setTime(path.empty() ? to : to + "/" + path, node->modTime);
  });
}

int SimulatedFileSystem::label(const std::string& path) const { return nodeFor(path)->label; }

std::map<std::string, std::string> SimulatedFileSystem::contents(const std::string& folder) const {
  std::map<std::string, std::string> found;
  eachNode(nodeFor(folder), "", [&](const SimulatedTree::Node& node, const std::string& path) {
    if (path.empty() || path == ".Zolvar" || path.starts_with(".Zolvar/")) return;
    found[path] = node->isDirectory()            ? "/"
                  : node->kind == FileKind::Link ? "-> " + node->content
                                                 : node->content;
  });
  return found;
}

std::set<std::string> SimulatedFileSystem::everyContent() const {
  std::set<std::string> found;
  for (const TrashedFile& file : trashed_) found.insert(file.content);
  const auto collect = [&](const SimulatedTree::Node& node, const std::string& /*path*/) {
    if (node->kind == FileKind::Regular) found.insert(node->content);
  };
  eachNode(tree_.root(), "", collect);
  for (const auto& [device, node] : unmounted_) eachNode(node, "", collect);
  return found;
}

bool SimulatedFileSystem::wasTrashed(const std::string& content) const {
  return std::any_of(trashed_.begin(), trashed_.end(),
                     [&](const TrashedFile& file) { return file.content == content; });
}

Result<> SimulatedFileSystem::moveToTrash(const SimulatedTree::Place& place) {
  const std::string path = tree_.pathOf(place);
  const auto folder =
      tree_.makeDirectories(tree_.root(), (home_ + std::string(TrashFolder)).substr(1));
  expect(folder, home_);
  std::string name = place.name;
  for (int number = 2; (*folder)->children.contains(name); ++number) {
    name = place.name + "." + std::to_string(number);
  }
  const auto moved = tree_.rename(place, {*folder, name}, true);
  if (!moved) return tl::unexpected(failureFromErrno(moved.error(), "trash", path));
  eachNode((*folder)->children[name], path,
           [&](const SimulatedTree::Node& node, const std::string& was) {
             if (node->kind == FileKind::Regular) trashed_.push_back({was, node->content});
           });
  return {};
}

void SimulatedFileSystem::setWalkSeed(std::uint64_t seed) {
  walkSeed_ = seed;
  walkOrder_.seed(seed);
}

void SimulatedFileSystem::setUnreadable(const std::string& directory, bool isUnreadable) {
  nodeFor(directory)->isUnreadable = isUnreadable;
}

void SimulatedFileSystem::mount(const std::string& path, std::uint64_t device) {
  const auto place = placeFor(path);
  if (!exists(path)) tree_.insert(place, tree_.make(FileKind::Directory, place.directory));
  SimulatedTree::Node node = unmounted_[device];
  if (node == nullptr) node = tree_.make(FileKind::Directory, place.directory);
  node->device = device;
  node->covered = place.directory->children[place.name];
  node->parent = place.directory;
  node->name = place.name;
  place.directory->children[place.name] = node;
  unmounted_.erase(device);
  gone_.erase(device);
}

void SimulatedFileSystem::unmount(const std::string& path) {
  const auto place = placeFor(path);
  const SimulatedTree::Node node = place.directory->children[place.name];
  if (node == nullptr || node->covered == nullptr) throw std::logic_error("Not mounted: " + path);
  place.directory->children[place.name] = node->covered;
  node->covered.reset();
  node->parent.reset();
  unmounted_[node->device] = node;
  gone_.insert(node->device);
}

void SimulatedFileSystem::loseEvents() {
  for (const auto& weak : observers_) {
    loop_.post([weak] {
      if (const auto observer = weak.lock(); observer && observer->lost) {
        observer->lost({FailureKind::Transient, "observe", observer->path, "events were lost"});
      }
    });
  }
}

void SimulatedFileSystem::tellObservers(const FileEvent& event) {
  std::erase_if(observers_, [](const auto& weak) { return weak.expired(); });
  if (!isObservable) return;
  for (const auto& weak : observers_) {
    const auto observer = weak.lock();
    if (!isBelow(event.path1, observer->path) && !isBelow(event.path2, observer->path)) continue;
    loop_.post([weak, event] {
      if (const auto told = weak.lock()) told->changed(event);
    });
  }
}

void SimulatedFileSystem::powerLoss() {
  eachNode(tree_.root(), "", [](const SimulatedTree::Node& node, const std::string& /*path*/) {
    if (!node->isFlushed) node->content = node->durable.value_or("");
  });
  flush();
}

void SimulatedFileSystem::flush() {
  eachNode(tree_.root(), "", [](const SimulatedTree::Node& node, const std::string& /*path*/) {
    node->durable.reset();
    node->isFlushed = true;
  });
}

}  // namespace zolvar
