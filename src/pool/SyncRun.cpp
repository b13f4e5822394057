#include "pool/SyncRun.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <span>

#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/SyncContext.h"
#include "pool/TransferProgressMeter.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar {

namespace {

constexpr std::size_t MostNamesInLog = 100;

/// The tool compares every file that it receives with every name that it asked for, so that the
/// other side cannot slip in more; ten thousand names cost it seconds and a hundred thousand
/// minutes. About this many a run, the comparing costs as much as starting another run.
constexpr std::size_t FilesInRun = 2500;

/// The tool reads the names that it asks for in blocks of 2,048 bytes and forgets the beginning of
/// one that reaches over more than two of them, unless that is the first. It then takes what the
/// other side sends for something that nobody asked for.
constexpr std::size_t LongestListedName = 2000;

/// What each copy run asks for: names that are too long for a list come last, each on its own.
std::vector<std::span<const std::string>> copyRuns(std::vector<std::string>& files) {
  const auto firstLong = std::stable_partition(
      files.begin(), files.end(),
      [](const std::string& path) { return path.size() <= LongestListedName; });
  const std::span<const std::string> listed(files.begin(), firstLong);
  std::vector<std::span<const std::string>> runs;
  const std::size_t count =
      listed.empty() ? 0 : std::max<std::size_t>((listed.size() + FilesInRun / 2) / FilesInRun, 1);
  for (std::size_t number = 0; number < count; ++number) {
    const std::size_t first = listed.size() * number / count;
    const std::size_t last = listed.size() * (number + 1) / count;
    runs.push_back(listed.subspan(first, last - first));
  }
  for (auto each = firstLong; each != files.end(); ++each) runs.emplace_back(each, each + 1);
  return runs;
}

/// "{a, b}", shortened when there are very many.
std::string setText(const std::set<std::string>& paths) {
  const std::size_t shown = std::min(paths.size(), MostNamesInLog);
  const auto end = std::next(paths.begin(), static_cast<std::ptrdiff_t>(shown));
  std::string text = fmt::format("{{{}", fmt::join(paths.begin(), end, ", "));
  if (shown < paths.size()) text += fmt::format(", and {} more", paths.size() - shown);
  return text + "}";
}

/// Whether a run with this status has done what it could, so that another one makes sense.
bool isWholeRun(int status) {
  return status == TransferStatus::Done || status == TransferStatus::Partial ||
         status == TransferStatus::Vanished;
}

}  // namespace

SyncRun::SyncRun(SyncContext& context, const ParticipantAddress& participant,
                 const KDPoolSync::Settings& settings)
    : context_(context), participant_(participant), settings_(settings) {
  end_.status = TransferStatus::NoConnection;
}

std::string SyncRun::url(bool logsOnly) const {
  return transferUrl(participant_, settings_.poolName, logsOnly);
}

SyncEnd SyncRun::perform() {
  const Start started = start();
  if (started.status != TransferStatus::Done) {
    end_.status = started.status;
    return end_;
  }
  context_.platform.log.debug("Will try to load logs from {}.", participant_.description());
  if (!context_.run.canFind(participant_)) return end_;
  if (started.isRecovering) {
    recoverLogs();
    return end_;
  }
  loadLogs();
  if (end_.status == TransferStatus::Done) loadTodoFiles();
  return end_;
}

SyncRun::Start SyncRun::start() {
  return context_.onState([this](PoolSyncSteps& steps) {
    if (steps.isDetached()) return Start{TransferStatus::Ended, false};
    auto folder = steps.accessibleFolderPath();
    if (!folder) {
      context_.platform.log.warning("{}", folder.error().message());
      return Start{TransferStatus::FileTrouble, false};
    }
    folder_ = std::move(*folder);
    steps.checkFileSystemChanges();
    return Start{TransferStatus::Done, steps.isRecovering()};
  });
}

/// Our own log may have reached the participant in parts only, or not reach us now. Starting a new
/// one over it would make two histories of one user, so the pool is told that all is well only when
/// everything that the participant has is here.
void SyncRun::recoverLogs() {
  std::map<std::string, std::uint64_t> listed;
  end_.status = listLogs(listed);
  if (end_.status != TransferStatus::Done) return;
  loadLogs();
  if (end_.status != TransferStatus::Done) return;
  const auto here = context_.onState([](PoolSyncSteps& steps) { return steps.logSizesOnDisk(); });
  const auto missing = std::count_if(listed.begin(), listed.end(), [&here](const auto& log) {
    const auto found = here.find(log.first);
    return found == here.end() || found->second < log.second;
  });
  if (missing == 0 && !listed.empty()) return;
  context_.platform.log.warning("{} of the {} change logs of {} did not arrive whole.", missing,
                                listed.size(), participant_.description());
  end_.status = TransferStatus::BadStream;
}

int SyncRun::listLogs(std::map<std::string, std::uint64_t>& sizes) {
  const std::string prefix = std::string(MetadataFolderName) + "/";
  return context_.list(url(true), settings_.password, [&](const ListingLine& line) {
    std::string_view name = line.path;
    if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
    if (line.kind() == '-' && name.find('/') == std::string_view::npos && isLogFileName(name)) {
      sizes.emplace(name, line.size);
    }
  });
}

void SyncRun::loadLogs() {
  const auto finish = [this] {
    context_.onState([](PoolSyncSteps& steps) { steps.finishLogLoad(); });
  };
  const auto prepared = context_.onState([this](PoolSyncSteps& steps) -> Result<> {
    if (steps.isDetached()) return fail(FailureKind::Cancelled, "load logs");
    // The scan before took its time: a folder moved meanwhile must not be made again at its old
    // place.
    auto folder = steps.accessibleFolderPath();
    if (!folder) return tl::unexpected(folder.error());
    folder_ = std::move(*folder);
    return steps.prepareLogLoad();
  });
  if (!prepared && prepared.error().kind == FailureKind::Cancelled) {
    end_.status = TransferStatus::Ended;
    return;
  }
  if (!prepared) {
    context_.platform.log.error("{}", prepared.error().message());
    end_.status = TransferStatus::FileTrouble;
    finish();
    return;
  }

  TransferRun::Request request;
  const std::string ownLog = joinPath(joinPath(folder_, MetadataFolderName),
                                      settings_.ownUserId + std::string(LogFileExtension));
  request.arguments = logLoadArguments(ownLog, url(true), folder_);
  request.password = settings_.password;
  context_.platform.log.debug("Launching\nzolvar {}", fmt::join(request.arguments, " "));
  try {
    end_.status = context_.run.run(request);
  } catch (const std::exception&) {
    finish();
    throw;
  }
  finish();
}

void SyncRun::loadTodoFiles() {
  if (!context_.goesOn()) {
    end_.status = TransferStatus::Ended;
    return;
  }
  settleReplacedFiles();  // what a crash may have left
  const auto wanted = context_.onState([](PoolSyncSteps& steps) { return steps.wantedFiles(); });
  if (!wanted.empty()) {
    context_.platform.log.debug("Will try to sync data files from {}.", participant_.description());
    try {
      copyFilesFromParticipant(wanted);
    } catch (const std::exception&) {  // what has arrived is ours no less
      context_.onState([](PoolSyncSteps& steps) { steps.checkTodoFiles(); });
      throw;
    }
    settleReplacedFiles();
  }
  std::set<std::string> missing;
  context_.onState([&](PoolSyncSteps& steps) {
    if (steps.isDetached()) {
      end_.status = TransferStatus::Ended;
      return;
    }
    end_.loadedFiles = steps.checkTodoFiles();
    missing = steps.todoFiles();
  });
  if (!missing.empty()) {
    context_.platform.log.warning("Try to get files {} from {} failed.", setText(missing),
                                  participant_.description());
  }
}

void SyncRun::copyFilesFromParticipant(const std::set<std::string>& wanted) {
  const auto listed = filesToGetFromParticipant(wanted);
  if (!isWholeRun(end_.status)) return;
  const auto files = context_.onState([&](PoolSyncSteps& steps) {
    if (steps.isDetached()) return std::set<std::string>();
    const CopyPlan plan = steps.decideListing(listed, participant_);
    return plan.files.empty() ? plan.files : steps.prepareCopy(plan.files);
  });
  copyFiles(files, listed, true);
  if (files.empty() || !isWholeRun(end_.status)) return;

  // Older versions that were chosen over newer ones do not pass the rule of the first run.
  const auto warped = context_.onState([&files](PoolSyncSteps& steps) {
    if (steps.isDetached()) return std::set<std::string>();
    const auto found = steps.timeWarpedFilesFromSet(files);
    return found.empty() ? found : steps.prepareCopy(found);
  });
  copyFiles(warped, listed, false);
}

std::vector<ListingEntry> SyncRun::filesToGetFromParticipant(const std::set<std::string>& wanted) {
  Log& log = context_.platform.log;
  const std::string description = participant_.description();
  if (log.isDebug()) {
    log.debug("Checking versions of the following files with {}: {}", description, setText(wanted));
    log.debug("performing\nzolvar list {}", fmt::join(listingArguments(url(false)), " "));
  }
  std::vector<ListingEntry> listed;
  std::set<std::string> seen;
  end_.status = context_.list(url(false), settings_.password, [&](const ListingLine& line) {
    const bool isLog = line.kind() == '-' && parentPath(line.path) == MetadataFolderName &&
                       isLogFileName(lastPathComponent(line.path));
    if (!isLog && !wanted.contains(line.path)) return;
    if (!seen.insert(line.path).second) return;
    ListingEntry entry{line.kind(), line.size, line.modTimes(), line.path};
    if (entry.modTimes.empty()) return;
    if (isLog) {
      listed.push_back(std::move(entry));
      return;
    }
    log.debug("Found file listing entry '{}' with moddate: {} at {}", entry.path,
              entry.modTimes.front(), description);
    listed.push_back(std::move(entry));
  });
  return listed;
}

void SyncRun::copyFiles(const std::set<std::string>& files, const std::vector<ListingEntry>& listed,
                        bool updatesOnly) {
  Platform& platform = context_.platform;
  if (files.empty()) return;
  platform.log.debug("Will try to sync data files from {}: {}", participant_.description(),
                     setText(files));
  if (!context_.run.canFind(participant_)) {
    end_.status = TransferStatus::NoConnection;
    return;
  }
  CopyOptions options;
  options.bandwidthLimit = settings_.bandwidthLimit;
  options.updatesOnly = updatesOnly;
  if (settings_.keepsVersions && settings_.versionLimits.keepsAny()) {
    auto backup = context_.versions.startRun(hexHash(settings_.poolName));
    if (!backup) {  // without a place for what gets replaced nothing may be replaced
      platform.log.error("{}", backup.error().message());
      end_.status = TransferStatus::FileTrouble;
      return;
    }
    options.backupFolder = std::move(*backup);
  }

  TransferRun::Request request;
  request.arguments = copyArguments(options, url(false), folder_);
  request.password = settings_.password;
  platform.log.debug("performing\nzolvar {}", fmt::join(request.arguments, " "));

  std::unique_ptr<TransferProgressMeter> meter;
  const auto opened = platform.fileSystem.open(folder_);
  if (opened && context_.progress) {
    std::vector<AwaitedFile> awaited;
    for (const ListingEntry& entry : listed) {
      if (entry.kind == 'd' || !files.contains(entry.path)) continue;
      awaited.push_back({entry.path, entry.size, entry.modTimes});
    }
    meter = std::make_unique<TransferProgressMeter>(**opened, participant_.userId(),
                                                    std::move(awaited), platform.clock.now());
    request.tick = [&] { context_.progress(meter->tick(platform.clock.now())); };
  }
  std::vector<std::string> ordered(files.begin(), files.end());
  std::sort(ordered.begin(), ordered.end(), comesFirstInTransfer);
  end_.status = TransferStatus::Done;
  for (const auto& run : copyRuns(ordered)) {
    if (!isWholeRun(end_.status)) break;
    request.input = copyInput(run);
    const int status = context_.run.run(request);
    if (status != TransferStatus::Done) end_.status = status;
  }
}

/// Hands the state what copy runs replaced. A run stays open, and is handed over by the next sync,
/// when the pool was left meanwhile or the disk does not answer.
void SyncRun::settleReplacedFiles() {
  VersionStore& versions = context_.versions;
  const auto settle = [&](const std::string& run) -> Result<> {
    const auto replaced = versions.replacedFiles(run);
    if (!replaced) return tl::unexpected(replaced.error());
    const bool isSettled = context_.onState([&replaced](PoolSyncSteps& steps) {
      if (steps.isDetached()) return false;
      return replaced->empty() || steps.settleReplacedFiles(*replaced);
    });
    return isSettled ? versions.closeRun(run) : Result<>();
  };
  const auto runs = versions.openRuns(hexHash(settings_.poolName));
  if (!runs) {
    context_.platform.log.warning("{}", runs.error().message());
    return;
  }
  for (const std::string& run : *runs) {
    if (const auto settled = settle(run); !settled) {
      context_.platform.log.warning("{}", settled.error().message());
    }
  }
}

}  // namespace zolvar
