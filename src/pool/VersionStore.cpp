#include "pool/VersionStore.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <optional>
#include <tuple>

#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::string_view StoreName = "versions";
constexpr std::string_view OpenSuffix = ".open";
constexpr double SecondsPerDay = 24 * 60 * 60;
constexpr unsigned MostRunsASecond = 1000;

unsigned long limit(const UserDefaults& defaults, const std::string& key, unsigned long unset) {
  return defaults.string(key) ? defaults.number(key) : unset;
}

/// The start of a run, from its folder's name; none for a folder that is no run's.
std::optional<std::int64_t> startOfRun(std::string_view name) {
  std::int64_t seconds = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), seconds);
  const bool isRun = error == std::errc() && end != name.data() + name.size() && *end == '-';
  return isRun ? std::optional(seconds) : std::nullopt;
}

}  // namespace

VersionLimits VersionLimits::fromDefaults(const UserDefaults& defaults) {
  VersionLimits limits;
  limits.days = limit(defaults, "VersionsDays", limits.days);
  limits.megabytes = limit(defaults, "VersionsMegabytes", limits.megabytes);
  return limits;
}

std::set<std::string> versionsToRemove(std::vector<KeptVersion> versions, double now,
                                       const VersionLimits& limits) {
  std::sort(versions.begin(), versions.end(),
            [](const KeptVersion& left, const KeptVersion& right) {
              return std::tie(right.keptAt, left.path) < std::tie(left.keptAt, right.path);
            });
  const double oldest = now - static_cast<double>(limits.days) * SecondsPerDay;
  std::uint64_t left = static_cast<std::uint64_t>(limits.megabytes) << 20;
  bool isFull = !limits.keepsAny();
  std::set<std::string> removed;
  for (const KeptVersion& version : versions) {
    isFull = isFull || version.size > left;
    if (isFull || static_cast<double>(version.keptAt) < oldest) {
      removed.insert(version.path);
    } else {
      left -= version.size;
    }
  }
  return removed;
}

VersionStore::VersionStore(Platform& platform) : platform_(platform) {}

VersionStore::~VersionStore() = default;

Result<> VersionStore::open() {
  if (folder_) return {};
  auto support = platform_.fileSystem.supportFolder();
  if (!support) return tl::unexpected(support.error());
  auto folder = platform_.fileSystem.open(*support);
  if (!folder) return tl::unexpected(folder.error());
  support_ = std::move(*support);
  folder_ = std::move(*folder);
  return {};
}

std::string VersionStore::relative(const std::string& runFolder) const {
  return runFolder.substr(std::min(runFolder.size(), support_.size() + 1));
}

Result<std::string> VersionStore::startRun(const std::string& poolHash) {
  return startFolder(poolHash, "", OpenSuffix);
}

Result<std::string> VersionStore::startFolder(const std::string& poolHash, std::string_view prefix,
                                              std::string_view suffix) {
  if (const auto opened = open(); !opened) return tl::unexpected(opened.error());
  const std::string pool = joinPath(StoreName, poolHash);
  const auto seconds = static_cast<std::int64_t>(platform_.clock.now());
  for (unsigned number = 0; number < MostRunsASecond; ++number) {
    const std::string closed = fmt::format("{}/{}-{}{}", pool, seconds, prefix, number);
    if (folder_->attributes(closed) || folder_->attributes(closed + std::string(OpenSuffix))) {
      continue;
    }
    const std::string run = closed + std::string(suffix);
    if (const auto made = folder_->makeDirectories(run); !made) return tl::unexpected(made.error());
    return joinPath(support_, run);
  }
  return fail(FailureKind::Transient, "make a folder for replaced files in", pool);
}

Result<std::vector<std::string>> VersionStore::openRuns(const std::string& poolHash) {
  if (const auto opened = open(); !opened) return tl::unexpected(opened.error());
  std::vector<std::string> runs;
  const std::string pool = joinPath(StoreName, poolHash);
  const auto listed = folder_->list(pool);
  if (!listed) {
    if (listed.error().kind == FailureKind::Absent) return runs;
    return tl::unexpected(listed.error());
  }
  for (const auto& [name, attributes] : *listed) {
    if (attributes.kind == FileKind::Directory && name.ends_with(OpenSuffix)) {
      runs.push_back(joinPath(support_, joinPath(pool, name)));
    }
  }
  return runs;
}

Result<std::vector<ReplacedFile>> VersionStore::replacedFiles(const std::string& runFolder) {
  if (const auto opened = open(); !opened) return tl::unexpected(opened.error());
  const std::string run = relative(runFolder);
  std::vector<ReplacedFile> replaced;
  std::optional<Failure> failure;
  folder_->walk(
      run,
      [&](std::string_view path, const FileAttributes& attributes) {
        if (attributes.kind == FileKind::Regular || attributes.kind == FileKind::Link) {
          replaced.push_back({std::string(path.substr(run.size() + 1)), joinPath(support_, path)});
        }
        return Folder::Visit::Enter;
      },
      [&](std::string_view, const Failure& problem) { failure = problem; });
  if (failure && failure->kind != FailureKind::Absent) return tl::unexpected(*failure);
  std::sort(
      replaced.begin(), replaced.end(),
      [](const ReplacedFile& left, const ReplacedFile& right) { return left.path < right.path; });
  return replaced;
}

Result<> VersionStore::closeRun(const std::string& runFolder) {
  const auto replaced = replacedFiles(runFolder);
  if (!replaced) return tl::unexpected(replaced.error());
  const std::string run = relative(runFolder);
  if (replaced->empty()) return folder_->removeTree(run);
  return folder_->rename(run, run.substr(0, run.size() - OpenSuffix.size()));
}

// Getting versions back.

Result<std::vector<StoredVersion>> VersionStore::versionsOf(const std::string& poolHash,
                                                            const std::string& path) {
  if (const auto opened = open(); !opened) return tl::unexpected(opened.error());
  std::vector<StoredVersion> versions;
  const std::string pool = joinPath(StoreName, poolHash);
  const auto runs = folder_->list(pool);
  if (!runs) {
    if (runs.error().kind == FailureKind::Absent) return versions;
    return tl::unexpected(runs.error());
  }
  for (const auto& [name, attributes] : *runs) {
    const auto start = startOfRun(name);
    if (!start || name.ends_with(OpenSuffix) || attributes.kind != FileKind::Directory) continue;
    const auto file = folder_->attributes(joinPath(joinPath(pool, name), path));
    if (!file || (file->kind != FileKind::Regular && file->kind != FileKind::Link)) continue;
    versions.push_back({name, *start, file->modTime, file->size});
  }
  std::sort(versions.begin(), versions.end(),
            [](const StoredVersion& left, const StoredVersion& right) {
              return std::tie(right.keptAt, right.id) < std::tie(left.keptAt, left.id);
            });
  return versions;
}

Result<> VersionStore::restore(const std::string& poolHash, const std::string& path,
                               const std::string& id, Folder& folder) {
  const auto versions = versionsOf(poolHash, path);
  if (!versions) return tl::unexpected(versions.error());
  const auto version = std::find_if(versions->begin(), versions->end(),
                                    [&](const StoredVersion& one) { return one.id == id; });
  if (version == versions->end()) {
    return fail(FailureKind::Absent, "find the kept version", path, "there is none of " + id);
  }
  const std::string kept = joinPath(joinPath(joinPath(StoreName, poolHash), id), path);
  const auto current = folder.attributes(path);
  auto time = static_cast<std::int64_t>(platform_.clock.now());
  if (current && current->kind == FileKind::Directory) {
    return fail(FailureKind::Refused, "restore", path, "a folder lies at this place");
  }
  if (current) {
    time = std::max(time, current->modTime + 1);
    const auto saved = keep(poolHash, path, folder);
    if (!saved) return tl::unexpected(saved.error());
  } else if (current.error().kind != FailureKind::Absent) {
    return tl::unexpected(current.error());
  }
  const std::int64_t keptTime = version->modTime;
  // The time first: nobody must ever see the old content with its old time in the folder.
  const auto keptNow = folder_->attributes(kept);
  const bool liesThere = current && keptNow && keptNow->isSameAs(*current);  // under a second name
  if (const auto timed = folder_->setModTime(kept, time); !timed) return timed;
  if (liesThere) return folder_->removeFile(kept);
  if (const std::string parent(parentPath(path)); !parent.empty()) {
    if (const auto made = folder.makeDirectories(parent); !made) return made;
  }
  const auto moved = folder.moveIn(joinPath(support_, kept), path,
                                   current ? std::optional(*current) : std::nullopt);
  if (!moved) static_cast<void>(folder_->setModTime(kept, keptTime));
  return moved;
}

/// A second name for the file goes into the store; its own is then taken over by another file.
Result<std::string> VersionStore::keep(const std::string& poolHash, const std::string& path,
                                       Folder& folder) {
  const auto root = folder.currentPath();
  if (!root) return tl::unexpected(root.error());
  const std::string aside = joinPath(MetadataFolderName, ".restoring");
  static_cast<void>(folder.removeFile(aside));
  if (const auto linked = folder.link(path, aside); !linked) {
    return tl::unexpected(linked.error());
  }
  // Closed from the start, since nothing has to be settled; and of another name, since a copy run
  // may start in the same second.
  const auto run = startFolder(poolHash, "r", "");
  if (!run) return run;
  const std::string place = joinPath(relative(*run), path);
  if (const auto made = folder_->makeDirectories(std::string(parentPath(place))); !made) {
    return tl::unexpected(made.error());
  }
  const auto moved = folder_->moveIn(joinPath(*root, aside), place, std::nullopt);
  if (!moved) static_cast<void>(folder.removeFile(aside));
  if (!moved) return tl::unexpected(moved.error());
  return std::string(lastPathComponent(*run));
}

// Pruning.

Result<> VersionStore::prune(const VersionLimits& limits) {
  if (const auto opened = open(); !opened) return opened;
  if (!folder_->attributes(StoreName)) return {};
  const auto pools = folder_->list(StoreName);
  if (!pools) return tl::unexpected(pools.error());
  for (const auto& [pool, attributes] : *pools) {
    if (attributes.kind == FileKind::Directory) prunePool(joinPath(StoreName, pool), limits);
  }
  return {};
}

void VersionStore::prunePool(const std::string& pool, const VersionLimits& limits) {
  const auto runs = folder_->list(pool);
  if (!runs) return;
  std::vector<KeptVersion> versions;
  std::map<std::string, std::size_t> filesInRun;
  for (const auto& [name, attributes] : *runs) {
    const auto start = startOfRun(name);
    const bool isOpen = name.ends_with(OpenSuffix);
    if (!start || isOpen || attributes.kind != FileKind::Directory) continue;
    const std::string run = joinPath(pool, name);
    std::size_t& count = filesInRun[run];
    folder_->walk(
        run,
        [&, seconds = *start](std::string_view path, const FileAttributes& file) {
          if (file.kind == FileKind::Directory) return Folder::Visit::Enter;
          versions.push_back({std::string(path), seconds, file.size});
          ++count;
          return Folder::Visit::Skip;
        },
        [&count](std::string_view, const Failure&) { ++count; });  // not seen whole: it stays
  }
  for (const std::string& path : versionsToRemove(versions, platform_.clock.now(), limits)) {
    if (!folder_->removeFile(path)) continue;
    const std::size_t runEnd = path.find('/', pool.size() + 1);
    --filesInRun[path.substr(0, runEnd)];
  }
  // What is kept by hand has its folder a moment before the file is in it.
  constexpr double LongestKeep = 3600;  // seconds
  for (const auto& [run, count] : filesInRun) {
    const std::string_view name = lastPathComponent(run);
    const auto start = startOfRun(name);
    const bool mayBeFilled = name.find("-r") != std::string_view::npos && start &&
                             static_cast<double>(*start) + LongestKeep > platform_.clock.now();
    if (count == 0 && !mayBeFilled) static_cast<void>(folder_->removeTree(run));
  }
}

}  // namespace zolvar
