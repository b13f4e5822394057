#include "pool/KDPoolState.h"

#include <algorithm>
#include <utility>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/CopyRunRecord.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"
#include "util/QMDigest.h"
#include "util/hexHash.h"

namespace zolvar {

namespace {

constexpr std::string_view RecordFolder = "records";

}  // namespace

KDPoolState::KDPoolState(Settings settings, Platform& platform,
                         std::unique_ptr<PoolStateListener> listener)
    : settings_(std::move(settings)), platform_(platform), listener_(std::move(listener)) {
  published_.missing = std::make_shared<const std::vector<std::string>>();
  published_.conflicts = std::make_shared<const std::vector<Conflict>>();
  published_.seen = std::make_shared<const SeenFiles>();
  lastScan_ = wholeSeconds(platform_.clock.now()) - 1;
}

KDPoolState::~KDPoolState() = default;

std::string KDPoolState::ownLogPath() const {
  return joinPath(MetadataFolderName, settings_.userId + std::string(LogFileExtension));
}

void KDPoolState::warnOnce(const std::string& key, const std::string& text) {
  if (warned_.insert(key).second) platform_.log.warning("{}", text);
}

// Life.

Result<> KDPoolState::openFolder() {
  auto opened = platform_.fileSystem.open(settings_.folderPath);
  if (!opened) return tl::unexpected(opened.error());
  localLog_.reset();
  guard_.reset();
  folder_ = std::move(*opened);
  guard_ = std::make_unique<LogGuard>(*folder_, platform_.log);
  return {};
}

Result<> KDPoolState::startRecovering() {
  isRecovering_ = true;
  const auto opened = openFolder();
  if (!opened) return opened;
  const auto made = folder_->makeDirectories(MetadataFolderName);
  publish();
  return made;
}

Result<> KDPoolState::activate() {
  isRecovering_ = false;
  isFirstRun_ = true;
  if (const auto opened = openFolder(); !opened) return opened;
  if (!folder_->attributes(ownLogPath())) {
    return fail(FailureKind::Absent, "find our own change log",
                joinPath(settings_.folderPath, ownLogPath()),
                "the folder at this place is another one, or its drive is not mounted");
  }
  if (!supportFolder_) {
    const auto path = platform_.fileSystem.supportFolder();
    if (!path) return tl::unexpected(path.error());
    auto support = platform_.fileSystem.open(*path);
    if (!support) return tl::unexpected(support.error());
    supportFolder_ = std::move(*support);
    if (const auto made = supportFolder_->makeDirectories(RecordFolder); !made) return made;
  }
  isActive_ = true;
  if (const auto read = readEverything(); !read) {
    isActive_ = false;
    return read;
  }
  scan();
  if (!todo_.empty()) listener_->fullSyncNeeded();
  publish();
  return {};
}

Result<> KDPoolState::readEverything() {
  record_.reset();
  isRecordHeld_ = false;
  localLog_.reset();
  tree_.reset();
  conflicts_.clear();
  missingOnce_.clear();
  mergedOffsets_.clear();
  loggedUntil_.clear();
  waiting_.clear();
  copying_.clear();
  listed_.clear();
  listedSizes_.clear();
  passedOn_.clear();
  scanNumber_ = 0;
  store_ = std::make_unique<KDEntryStore>();
  tree_ = std::make_unique<KDVersionTree>(*store_, settings_.userId);
  record_ = std::make_unique<KDDiskRecord>(
      *supportFolder_, joinPath(RecordFolder, hexHash(settings_.poolName) + ".fprec"),
      platform_.log, [this](std::string_view path) { noteChanged(path); });

  copyRuns_ = std::make_unique<CopyRunRecord>(
      *supportFolder_, joinPath(RecordFolder, hexHash(settings_.poolName) + ".fprun"));

  if (const GuardReport report = guard_->settle(); report.trouble) {
    platform_.log.error("{}", report.trouble->message());
  }
  loadTodoFiles();
  if (const auto read = readAllLogs(); !read) return read;
  record_->load(*tree_, folder_->identity());
  localLog_ = std::make_unique<KDLogFile>(*folder_, ownLogPath(),
                                          static_cast<KDLogFileDelegate*>(this), platform_.log);
  unverified_.clear();
  tooFreshAtStart_.clear();
  store_->forEachPath([this](KDPathRecord& path) {
    if (path.activeLeafCount > 1) conflicts_.insert(&path);
    if (path.disk && path.disk->isGuess) unverified_.emplace(path.text);
  });
  areConflictsStale_ = true;
  refreshLogState();
  return {};
}

LogReadSummary KDPoolState::readLog(const std::string& name, std::uint64_t offset) {
  KDLogFile log(*folder_, joinPath(MetadataFolderName, name), nullptr, platform_.log);
  auto summary = log.readTolerantly(offset, *store_);
  if (!summary) {
    platform_.log.warning("{}", summary.error().message());
    LogReadSummary nothing;
    nothing.endOffset = offset;
    return nothing;
  }
  if (summary->rowsSkipped > 0) {
    warnOnce(
        "damaged " + name,
        fmt::format("Left out {} damaged or unsafe lines ({} bytes) of the change log '{}' in {}.",
                    summary->rowsSkipped, summary->bytesSkipped, name, settings_.folderPath));
  }
  return std::move(*summary);
}

Result<> KDPoolState::readAllLogs() {
  const auto files = folder_->list(MetadataFolderName);
  if (!files) return tl::unexpected(files.error());
  std::vector<KDLogFileEntry*> entries;
  const std::string ownName = settings_.userId + std::string(LogFileExtension);
  for (const auto& [name, attributes] : *files) {
    if (!isLogFileName(name) || attributes.kind != FileKind::Regular) continue;
    LogReadSummary summary = readLog(name, 0);
    mergedOffsets_[name] = summary.endOffset;
    if (name == ownName) {
      for (const KDLogFileEntry* entry : summary.entries) {
        ownLastLogTime_ = std::max(ownLastLogTime_, entry->logTime());
      }
    }
    if (entries.empty()) {
      entries = std::move(summary.entries);
    } else {
      entries.insert(entries.end(), summary.entries.begin(), summary.entries.end());
    }
  }
  noteLogged(entries);
  appendAll(entries);
  tree_->repairAll();
  if (const auto orphans = tree_->takeOrphanCount()) {
    platform_.log.warning("{} entries in {} follow a version that no log here holds.", orphans,
                          settings_.folderPath);
  }
  return {};
}

void KDPoolState::leave() {
  if (isActive_) {
    (void)flush();  // the disk may take longer than the end may
    if (isRecordHeld_) {
      const auto flushed = folder_->flush();
      isRecordHeld_ = !flushed;  // what the record does not tell, the next start finds out
      if (!flushed) platform_.log.warning("{}", flushed.error().message());
    }
    flush();
    isTodoDirty_ = true;
    (void)saveTodoFiles();
  }
  isActive_ = isRecovering_ = false;
}

// Where the folder is.

Result<std::string> KDPoolState::accessibleFolderPath() {
  if (!isAccessible()) {
    return fail(FailureKind::Absent, "reach the synced folder", settings_.folderPath,
                "it is not where it lay; mount its drive, or bring it back");
  }
  return settings_.folderPath;
}

bool KDPoolState::isAccessible() {
  const auto isHere = [this] {
    if (!folder_) return false;
    const auto path = folder_->currentPath();
    if (!path) return false;
    const auto identity = platform_.fileSystem.identity(*path);
    if (!identity || !(*identity == folder_->identity())) return false;  // mounted over, or gone
    if (!isRecovering_ && !folder_->attributes(ownLogPath())) return false;
    if (*path != settings_.folderPath) {
      listener_->folderMoved(*path);
      if (lastPathComponent(*path) != settings_.poolName) return false;
      settings_.folderPath = *path;
    }
    return true;
  };
  if (isHere() || reopenIfBack()) {
    if (isInaccessible_) {
      isInaccessible_ = false;
      trouble_.clear();
      platform_.log.warning("Synced Folder '{}' is accessible again.", settings_.folderPath);
    }
    return true;
  }
  noteInaccessible();
  return false;
}

Result<> KDPoolState::reopenIfBack() {
  const auto identity = platform_.fileSystem.identity(settings_.folderPath);
  if (!identity) return tl::unexpected(identity.error());
  if (const auto own = platform_.fileSystem.identity(joinPath(settings_.folderPath, ownLogPath()));
      !own) {
    return tl::unexpected(own.error());
  }
  if (const auto opened = openFolder(); !opened) return opened;
  if (!isActive_) return {};
  isFirstRun_ = true;  // whatever is missing in a folder that came back is fetched, not deleted
  if (settings_.changed) settings_.changed->noteEverything();
  return readEverything();
}

void KDPoolState::noteInaccessible() {
  if (isInaccessible_) return;
  isInaccessible_ = true;
  trouble_ =
      fmt::format("Synced Folder '{}' is not accessible to Zolvar.\nPlease check the path '{}'.",
                  settings_.poolName, settings_.folderPath);
  listener_->pathsNotAccessible();
  publish();
}

// Writing and publishing.

Result<> KDPoolState::flush() {
  Result<> result;
  // Before the log: what a choice makes wanted must still be wanted after a crash.
  if (isTodoDirty_) (void)saveTodoFiles();
  if (localLog_ && localLog_->hasEntriesToAppend()) {
    std::uint64_t& merged = mergedOffsets_[std::string(lastPathComponent(ownLogPath()))];
    const std::uint64_t mergedBefore = merged;
    const auto before = folder_->attributes(ownLogPath());
    result = localLog_->synchronizeFile();
    // A load in progress has brought lines of ours, from before a restored backup: its end reads
    // them, and these once more.
    if (before && before->size > mergedBefore) merged = mergedBefore;
    if (!result) platform_.log.error("{}", result.error().message());
  }
  if (record_ && !isRecordHeld_) {
    // After the log: a record must never name a version that the log does not hold.
    if (const auto written = result ? record_->flush() : Result<>(); !written) {
      platform_.log.error("{}", written.error().message());
    }
  }
  return result;
}

void KDPoolState::logFileDidChange(KDLogFile& log) {
  require(&log == localLog_.get(), "log==localLog");
  if (const auto attributes = folder_->attributes(log.path())) {
    mergedOffsets_[std::string(lastPathComponent(log.path()))] = attributes->size;
  }
  refreshLogState();
  isAnnouncementDue_ = true;
}

void KDPoolState::refreshLogState() {
  published_.logSizes.clear();
  const auto files = folder_->list(MetadataFolderName);
  if (!files) return;
  QMDigest digest(QMDigest::Algorithm::MD5);
  for (const auto& [name, attributes] : *files) {
    if (!isLogFileName(name) || attributes.kind != FileKind::Regular) continue;
    published_.logSizes[name] = attributes.size;
    digest.updateLittleEndian(stringHash(name));
    digest.updateLittleEndian(
        static_cast<std::uint32_t>(std::clamp<std::int64_t>(attributes.modTime, 0, UINT32_MAX)));
  }
  published_.logFilesHash = digest.finish();
}

void KDPoolState::publish() {
  if (isDetached_) return;
  if (areMissingStale_) {
    published_.missing =
        std::make_shared<const std::vector<std::string>>(todo_.begin(), todo_.end());
    areMissingStale_ = false;
  }
  if (areConflictsStale_) {
    auto conflicts = std::make_shared<std::vector<Conflict>>();
    for (const KDPathRecord* path : conflicts_) {
      Conflict conflict;
      conflict.path = std::string(path->text);
      const KDLogFileEntry* local = tree_->selectedLeaf(*path).leaf;
      for (const KDLogFileEntry* leaf : tree_->activeLeafEntries(*path)) {
        conflict.versions.push_back(
            {leaf->id(), leaf->modTime(), leaf == local, tree_->usersWhoSelected(*leaf)});
      }
      conflicts->push_back(std::move(conflict));
    }
    std::sort(conflicts->begin(), conflicts->end(),
              [](const Conflict& left, const Conflict& right) { return left.path < right.path; });
    published_.conflicts = std::move(conflicts);
    areConflictsStale_ = false;
  }
  if (isSeenStale_) {
    std::erase_if(seen_, [this](const auto& seen) { return !todo_.contains(seen.first); });
    published_.seen = std::make_shared<const SeenFiles>(seen_);
    isSeenStale_ = false;
  }
  if (isQuestionStale_) {
    published_.question.reset();
    if (!inQuestion_.empty()) {
      published_.question = std::make_shared<const DeleteQuestion>(
          DeleteQuestion{questionId_, {inQuestion_.begin(), inQuestion_.end()}});
    }
    isQuestionStale_ = false;
  }
  published_.fileCount = tree_ ? tree_->liveCount() : 0;
  published_.lastScan = isFirstRun_ || !isActive_ ? 0 : lastScan_;
  published_.isAccessible = !isInaccessible_;
  published_.trouble = trouble_;
  if (trouble_.empty() && !stuck_.empty()) {
    published_.trouble = fmt::format(
        "'{}'{} in {} should go to the Trash and cannot. {} Please see to it that it can be moved; "
        "it is tried again all the time.",
        stuck_.begin()->first,
        stuck_.size() > 1 ? fmt::format(" (and {} more)", stuck_.size() - 1) : "",
        settings_.folderPath, stuck_.begin()->second);
  }
  ++published_.serial;
  listener_->stateDidChange(std::make_shared<const PoolSnapshot>(published_));
  // Not before: what is announced is what was published last.
  if (std::exchange(isAnnouncementDue_, false)) listener_->announcementNeeded();
}

}  // namespace zolvar
