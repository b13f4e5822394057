// Files that the pool itself writes and deletes.

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/FileChange.h"
#include "pool/KDPoolState.h"
#include "pool/KDPoolStateScan.h"

namespace zolvar {

namespace {

constexpr std::uint32_t FileMode = 0644;
constexpr std::uint64_t LargestFile = 64U << 20U;  // bytes

}  // namespace

void KDPoolState::logWritten(const std::vector<std::string>& paths) {
  Scan scan;
  scan.number = ++scanNumber_;
  scan.now = platform_.clock.now();
  scan.takesFresh = true;
  for (const std::string& path : paths) {
    const auto attributes = folder_->attributes(path);
    if (!attributes) continue;
    KDPathRecord* record = store_->findPath(path);
    if (record) record->seenInScan = scan.number;
    carryOut(scan, path, record, *attributes);
  }
  chooseOwn(scan);
}

Result<bool> KDPoolState::changeFiles(const std::vector<FileChange>& changes) {
  if (!isActive_ || !localLog_ || !isAccessible()) {
    return fail(FailureKind::Absent, "write files in", settings_.folderPath);
  }
  bool isWhole = true;
  std::vector<std::string> written;
  std::set<std::string> deleted;
  for (const FileChange& change : changes) {
    const auto lies = folder_->read(change.path, 0, LargestFile);
    const bool isReadable = lies || lies.error().kind == FailureKind::Absent;
    const bool isExpected = lies ? change.expected == *lies : isReadable && !change.expected;
    if (!isExpected || todo_.contains(change.path)) {
      isWhole = false;
      continue;
    }
    if (change.content) {
      if (const auto replaced = folder_->replace(change.path, *change.content, FileMode);
          !replaced) {
        platform_.log.warning("{}", replaced.error().message());
        isWhole = false;
      } else {
        written.push_back(change.path);
      }
      continue;
    }
    if (lies && !folder_->trash(change.path)) {
      isWhole = false;  // the next time
      continue;
    }
    deleted.insert(change.path);
  }
  logWritten(written);
  logFileSystemDeletionsAtPaths(deleted);
  const auto logged = flush();
  publish();
  if (!logged) return tl::unexpected(logged.error());
  return isWhole;
}

}  // namespace zolvar
