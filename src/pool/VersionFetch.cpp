#include "pool/VersionFetch.h"

#include <algorithm>

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "pool/SyncContext.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar {

VersionFetch::VersionFetch(SyncContext& context, const KDPoolSync::Settings& settings,
                           std::string path, double modTime, std::string to)
    : context_(context),
      settings_(settings),
      path_(std::move(path)),
      modTime_(modTime),
      to_(std::move(to)) {}

Result<> VersionFetch::fetchFrom(const std::vector<ParticipantAddress>& participants) {
  if (auto checked = check(); !checked) return checked;
  Failure failure{FailureKind::Absent, "fetch a version of", path_,
                  "No participant within reach has it"};
  for (const ParticipantAddress& participant : participants) {
    if (!context_.goesOn()) return fail(FailureKind::Cancelled, "fetch a version of", path_);
    auto fetched = fetchFrom(participant);
    if (fetched) return fetched;
    if (fetched.error().kind != FailureKind::Absent) failure = fetched.error();
    if (failure.kind == FailureKind::Refused) break;
  }
  return tl::unexpected(std::move(failure));
}

Result<> VersionFetch::check() const {
  if (!isSafeRelativePath(path_)) return fail(FailureKind::Refused, "fetch a version of", path_);
  auto folder = context_.platform.fileSystem.open(std::string(parentPath(to_)));
  if (!folder) return tl::unexpected(folder.error());
  if ((*folder)->attributes(lastPathComponent(to_))) {
    return fail(FailureKind::Refused, "write", to_, "There is a file of that name");
  }
  return {};
}

Result<> VersionFetch::fetchFrom(const ParticipantAddress& participant) {
  if (!context_.run.canFind(participant)) {
    return fail(FailureKind::Transient, "find the host", participant.hostName);
  }
  if (auto listed = listedBy(participant); !listed) return listed;

  const auto supportPath = context_.platform.fileSystem.supportFolder();
  if (!supportPath) return tl::unexpected(supportPath.error());
  auto support = context_.platform.fileSystem.open(*supportPath);
  if (!support) return tl::unexpected(support.error());
  auto copied = copyFrom(participant, **support, *supportPath);
  static_cast<void>((*support)->removeTree("fetch-" + hexHash(settings_.poolName)));
  return copied;
}

Result<> VersionFetch::listedBy(const ParticipantAddress& participant) {
  bool isListed = false;
  const std::string url = transferUrl(participant, settings_.poolName, false);
  const int status = context_.list(url, settings_.password, [&](const ListingLine& line) {
    if (line.kind() == 'd' || line.path != path_) return;
    const auto times = line.modTimes();
    isListed = isListed || std::any_of(times.begin(), times.end(), [this](std::int64_t time) {
                 return static_cast<double>(time) == modTime_;
               });
  });
  if (isListed) return {};
  if (status == TransferStatus::Done || status == TransferStatus::Partial) {
    return fail(FailureKind::Absent, "fetch a version of", path_);
  }
  return fail(FailureKind::Transient, "list the files of", participant.description(),
              statusText(status));
}

Result<> VersionFetch::copyFrom(const ParticipantAddress& participant, Folder& support,
                                const std::string& supportPath) {
  const std::string folder = "fetch-" + hexHash(settings_.poolName);
  if (auto removed = support.removeTree(folder); !removed) return removed;  // a crash left it
  if (auto made = support.makeDirectories(folder); !made) return made;

  TransferRun::Request request;
  request.arguments = copyArguments({settings_.bandwidthLimit, {}, true},
                                    transferUrl(participant, settings_.poolName, false),
                                    joinPath(supportPath, folder));
  request.password = settings_.password;
  request.input = copyInput(std::vector{path_});
  const int status = context_.run.run(request);
  if (context_.run.isTerminated()) {
    return fail(FailureKind::Cancelled, "fetch a version of", path_);
  }
  const std::string arrived = joinPath(folder, path_);
  const auto attributes = support.attributes(arrived);
  if (!attributes ||
      static_cast<double>(std::max<std::int64_t>(attributes->modTime, 1)) != modTime_) {
    if (status == TransferStatus::Done)
      return fail(FailureKind::Absent, "fetch a version of", path_);
    return fail(FailureKind::Transient, "fetch from", participant.description(),
                statusText(status));
  }
  return moveToTarget(joinPath(supportPath, arrived));
}

/// First beside the target and then by a second name, which fails where a rename would replace.
Result<> VersionFetch::moveToTarget(const std::string& arrived) {
  auto folder = context_.platform.fileSystem.open(std::string(parentPath(to_)));
  if (!folder) return tl::unexpected(folder.error());
  const std::string aside = ".zolvar-fetch-" + hexHash(settings_.poolName);
  static_cast<void>((*folder)->removeFile(aside));  // what a crash may have left
  if (auto moved = (*folder)->moveIn(arrived, aside, std::nullopt); !moved) return moved;
  auto named = (*folder)->link(aside, lastPathComponent(to_));
  static_cast<void>((*folder)->removeFile(aside));
  return named;
}

}  // namespace zolvar
