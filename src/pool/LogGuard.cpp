#include "pool/LogGuard.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <cstring>

#include "platform/Log.h"
#include "pool/LogUnion.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::size_t PieceSize = 256U << 10;  ///< bytes compared at once
constexpr std::size_t MostNamesInWarning = 5;
constexpr std::uint32_t TodoFileMode = 0644;
constexpr std::uint64_t TimesOfUnions = 31;  ///< seconds; a prime, so that line lengths spread

std::string logPath(std::string_view name) { return joinPath(MetadataFolderName, name); }
std::string asidePath(std::string_view name) { return joinPath(LogGuard::AsideFolder, name); }
/// No log is called so.
std::string unionPath() { return asidePath("union"); }

bool isLog(std::string_view name, const FileAttributes& attributes) {
  return attributes.kind == FileKind::Regular && isLogFileName(name);
}

/// Fills the buffer unless the file ends before.
Result<std::size_t> readFully(const Folder::Reader& reader, std::string& buffer) {
  std::size_t filled = 0;
  while (filled < buffer.size()) {
    const auto count = reader(buffer.data() + filled, buffer.size() - filled);
    if (!count) return tl::unexpected(count.error());
    if (*count == 0) break;
    filled += *count;
  }
  return filled;
}

}  // namespace

bool LogGuard::hasSetAside() { return folder_.attributes(AsideFolder).has_value(); }

Result<> LogGuard::setAside() {
  if (hasSetAside()) {
    if (const GuardReport report = settle(); report.trouble) return tl::unexpected(*report.trouble);
  }
  before_.clear();
  if (const auto made = folder_.makeDirectories(AsideFolder); !made) return made;
  const auto files = filesIn(MetadataFolderName);
  if (!files) return tl::unexpected(files.error());
  for (const auto& [name, attributes] : *files) {
    const bool isTodoFile = name == TodoFileName && attributes.kind == FileKind::Regular;
    if (isTodoFile) {
      if (const auto linked = setTodoFileAside(); !linked) return linked;
    }
    if (!isLog(name, attributes)) continue;
    if (const auto linked = folder_.link(logPath(name), asidePath(name)); !linked) return linked;
    before_.emplace(name, attributes);
  }
  isOwnLoad_ = true;
  return {};
}

GuardReport LogGuard::settle() {
  GuardReport report;
  auto old = filesIn(AsideFolder);
  const auto now = filesIn(MetadataFolderName);
  if (!old || !now) {  // a log that cannot be seen is not a log that is gone
    report.trouble = old ? now.error() : old.error();
    log_.error("The change logs could not be checked after a load. {}", report.trouble->message());
    return report;
  }
  std::erase_if(*old, [](const auto& file) { return !isLog(file.first, file.second); });

  std::map<std::string, FileAttributes> names = *old;
  for (const auto& [name, attributes] : *now) {
    if (isLog(name, attributes)) names.emplace(name, attributes);
  }
  for (const auto& [name, unused] : names) {
    const auto find = [&name = name](const std::map<std::string, FileAttributes>& files) {
      const auto found = files.find(name);
      return found == files.end() ? std::nullopt : std::optional(found->second);
    };
    auto settled = settleLog(name, find(*old), find(*now));
    // A new one is not flushed yet, and neither is an old one that came back.
    if (settled && settled->changed) (void)folder_.append(logPath(name), {});
    if (settled) {
      report.logs.push_back(std::move(*settled));
      continue;
    }
    log_.error("The change log {} could not be checked after a load. {}", name,
               settled.error().message());
    if (!report.trouble) report.trouble = settled.error();
  }
  removeStrangers();
  if (const auto back = bringBackTodoFile(); !back && !report.trouble) {
    report.trouble = back.error();
  }
  if (!report.trouble) {
    if (const auto removed = folder_.removeTree(AsideFolder); !removed) {
      report.trouble = removed.error();
    }
    isOwnLoad_ = false;
    before_.clear();
  }
  return report;
}

Result<GuardedLog> LogGuard::settleLog(const std::string& name,
                                       const std::optional<FileAttributes>& old,
                                       const std::optional<FileAttributes>& now) {
  GuardedLog settled{name, true, false, {}};
  if (!old) {
    // After a crash in the middle of a load an empty log may be one that was not flushed.
    if (!isOwnLoad_ && hasSetAside() && now->size == 0) {
      settled.changed = !folder_.removeFile(logPath(name));
    }
    return settled;
  }
  if (!now || now->kind != FileKind::Regular) {
    log_.warning("The change log {} was gone after a load; the copy known before is back.", name);
    if (now) {
      if (const auto removed = folder_.removeTree(logPath(name)); !removed) {
        return tl::unexpected(removed.error());
      }
    }
    if (const auto made = folder_.makeDirectories(MetadataFolderName); !made) {
      return tl::unexpected(made.error());
    }
    if (const auto back = folder_.rename(asidePath(name), logPath(name)); !back) {
      return tl::unexpected(back.error());
    }
    return settled;
  }

  if (isSame(name, *old, *now)) {
    const auto known = before_.find(name);
    settled.changed = known != before_.end() &&
                      (known->second.size != now->size || known->second.modTime != now->modTime);
  } else {
    const auto begins = oldBeginsNew(name);
    if (!begins) return tl::unexpected(begins.error());
    if (!*begins) {
      settled.rewritten = true;
      LogUnion both;
      if (const auto read = both.read(folder_, asidePath(name), logPath(name)); !read) {
        return tl::unexpected(read.error());
      }
      settled.linesNewToUs = both.linesNewToOld();
      if (both.relation() != LogUnion::Relation::NewHasAll) {
        const std::int64_t later = std::max(old->modTime, now->modTime);
        const bool oldHasAll = both.relation() == LogUnion::Relation::OldHasAll;
        log_.warning("A load brought {} copy of the change log {}; no line of it was given up.",
                     oldHasAll ? "an older" : "another", name);
        if (const auto written = writeUnion(name, later, oldHasAll, both); !written) {
          return tl::unexpected(written.error());
        }
        if (oldHasAll) return settled;  // the old copy lies in its place again, not aside
      }
    }
  }
  // The tool does not flush what it writes, and announcements tell of times alone: nobody would
  // notice that a power failure has taken the end of a log.
  if (settled.changed) (void)folder_.append(logPath(name), {});
  if (const auto removed = folder_.removeFile(asidePath(name)); !removed) {
    return tl::unexpected(removed.error());
  }
  return settled;
}

/// One inode is one file, whatever was appended to it meanwhile. Where the file system has no hard
/// links the old copy has an inode of its own; there the log counts as the same when nothing about
/// it differs from what setAside() saw.
bool LogGuard::isSame(const std::string& name, const FileAttributes& old,
                      const FileAttributes& now) const {
  if (old.inode == now.inode && old.device == now.device) return true;
  const auto known = before_.find(name);
  return known != before_.end() && known->second.inode == now.inode &&
         known->second.size == now.size && known->second.modTime == now.modTime;
}

Result<bool> LogGuard::oldBeginsNew(const std::string& name) {
  const auto old = folder_.open(asidePath(name), 0);
  if (!old) return tl::unexpected(old.error());
  const auto now = folder_.open(logPath(name), 0);
  if (!now) return tl::unexpected(now.error());
  std::string oldPiece(PieceSize, '\0');
  std::string newPiece(PieceSize, '\0');
  for (;;) {
    const auto oldCount = readFully(*old, oldPiece);
    if (!oldCount) return tl::unexpected(oldCount.error());
    const auto newCount = readFully(*now, newPiece);
    if (!newCount) return tl::unexpected(newCount.error());
    if (*newCount < *oldCount) return false;
    if (std::memcmp(oldPiece.data(), newPiece.data(), *oldCount) != 0) return false;
    if (*oldCount < PieceSize) return true;
  }
}

Result<> LogGuard::writeUnion(const std::string& name, std::int64_t later, bool oldHasAll,
                              const LogUnion& both) {
  std::string source = asidePath(name);
  if (!oldHasAll) {
    source = unionPath();
    if (const auto removed = folder_.removeTree(source); !removed) return removed;
    const auto written = both.write(
        [this, &source](std::string_view bytes) { return folder_.append(source, bytes); });
    if (!written) return written;
  }
  const auto attributes = folder_.attributes(source);
  if (!attributes) return tl::unexpected(attributes.error());
  // Two participants to whom a third brought the same old copy must not end with other lines and
  // the same time: announcements tell of times alone, and neither would ask the other.
  const auto difference = static_cast<std::int64_t>(attributes->size % TimesOfUnions);
  if (const auto timed = folder_.setModTime(source, later + 1 + difference); !timed) return timed;
  return folder_.rename(source, logPath(name));
}

Result<> LogGuard::replaceTodoFile(std::string_view bytes) {
  if (folder_.attributes(asidePath(TodoFileName))) {
    if (const auto kept = folder_.replace(asidePath(TodoFileName), bytes, TodoFileMode); !kept) {
      return kept;
    }
  }
  return folder_.replace(logPath(TodoFileName), bytes, TodoFileMode);
}

/// Under its name only when it is whole: without hard links it is copied.
Result<> LogGuard::setTodoFileAside() {
  const std::string begun = asidePath("todos");  // no log is called so
  if (const auto linked = folder_.link(logPath(TodoFileName), begun); !linked) return linked;
  return folder_.rename(begun, asidePath(TodoFileName));
}

Result<> LogGuard::bringBackTodoFile() {
  if (const auto aside = folder_.attributes(asidePath(TodoFileName)); !aside) {
    if (aside.error().kind == FailureKind::Absent) return {};
    return tl::unexpected(aside.error());
  }
  return folder_.rename(asidePath(TodoFileName), logPath(TodoFileName));
}

void LogGuard::removeStrangers() {
  std::vector<std::string> removed;
  const auto files = filesIn(MetadataFolderName);
  if (!files) return;
  for (const auto& [name, attributes] : *files) {
    const bool isFile = attributes.kind == FileKind::Regular;
    const bool belongs = isFile && (isLogFileName(name) || name == TodoFileName ||
                                    (name.ends_with(".tiff") && attributes.size <= LargestPicture));
    if (belongs) continue;
    if (const auto gone = folder_.removeTree(logPath(name)); !gone) {
      log_.warning("{}", gone.error().message());
      continue;
    }
    removed.push_back(name);
  }
  if (removed.empty()) return;
  const std::size_t count = removed.size();
  removed.resize(std::min(count, MostNamesInWarning));
  log_.warning("Removed {} item(s) that do not belong into the metadata folder: {}{}", count,
               fmt::join(removed, ", "), count > MostNamesInWarning ? ", ..." : "");
}

Result<std::map<std::string, FileAttributes>> LogGuard::filesIn(std::string_view directory) {
  std::map<std::string, FileAttributes> files;
  auto listed = folder_.list(directory);
  if (!listed) {
    if (listed.error().kind == FailureKind::Absent) return files;
    return tl::unexpected(listed.error());
  }
  for (auto& [name, attributes] : *listed) files.emplace(std::move(name), attributes);
  return files;
}

}  // namespace zolvar
