#include "app/OutcomeTexts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "app/VisibleFiles.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

constexpr std::size_t LongestFileList = 15;
constexpr std::size_t LongestQuestionList = 14;  // then "..." and the last one
constexpr std::string_view AddressPoolExtension = ".zolvaraddresses";

/// "address" or "file", plural unless there is exactly one.
std::string counted(const PoolText& pool, std::size_t count) {
  const bool isOne = count == 1;
  if (pool.isAddressPool) return fmt::format("{} {}", count, isOne ? "address" : "addresses");
  return fmt::format("{} {}", count, isOne ? "file" : "files");
}

std::string described(const PoolText& pool, const std::string& path) {
  return pool.describe ? pool.describe(path) : path;
}

}  // namespace

std::map<std::string, std::vector<std::string>> registrationDictionary() {
  const std::vector<std::string> names = {SyncSuccessNotice, DeletionNotice, ConflictNotice,
                                          SyncErrorNotice};
  return {{"AllNotifications", names}, {"DefaultNotifications", names}};
}

bool isAddressPoolName(const std::string& poolName) {
  return poolName.ends_with(AddressPoolExtension);
}

// Notices.

std::string fileList(const PoolText& pool, const std::vector<std::string>& files) {
  std::string text;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (i == LongestFileList) return text + "\n...";
    text += "\n" + described(pool, files[i]);
  }
  return text;
}

OutcomeNotice successNotice(const PoolText& pool, const std::set<std::string>& loaded) {
  const auto files = visibleFiles(loaded);
  return {SyncSuccessNotice,
          pool.name,
          fmt::format("Got {} in '{}':", counted(pool, files.size()), pool.displayName),
          fileList(pool, files),
          false,
          {}};
}

OutcomeNotice errorNotice(const PoolText& pool, const std::string& errorMessage) {
  return {SyncErrorNotice, pool.name, "Synchronization Error", errorMessage, false, {}};
}

OutcomeNotice deletionNotice(const PoolText& pool, const std::set<std::string>& deleted) {
  const auto files = visibleFiles(deleted);
  // The header's own line feed makes the list begin with an empty line; so it is meant.
  const std::string header =
      fmt::format("{} {} in '{}':\n", pool.isAddressPool ? "Deleted" : "Trashed",
                  counted(pool, files.size()), pool.displayName);
  return {DeletionNotice,
          pool.name,
          pool.isAddressPool ? "Moved Addresses to Trash" : "Moved Files to Trash",
          header + fileList(pool, files),
          false,
          {}};
}

OutcomeNotice conflictNotice(const PoolText& pool, const std::string& path, std::size_t versions) {
  return {
      ConflictNotice,
      pool.name,
      fmt::format("Conflict in Folder '{}':", pool.displayName),
      fmt::format("'{}' has {} different/conflicting versions.", described(pool, path), versions),
      true,
      ClickContext{ConflictNotice, pool.name, path}};
}

// Questions.

Alert deletionAlert(const std::string& poolName, const std::vector<std::string>& paths) {
  require(!paths.empty(), "[deleteSet count] > 0");
  auto files = visibleOfSorted(paths);
  if (files.empty()) files.assign(paths.begin(), paths.end());  // nothing is asked about nothing
  const std::size_t count = files.size();
  if (count > LongestQuestionList) {
    const auto last = files.back();
    files.resize(LongestQuestionList);
    files.insert(files.end(), {"...", last});
  }
  return {fmt::format("Network-Delete files in '{}'?", poolName),
          fmt::format("{} files have been (re-)moved from Synced Folder '{}' ({}).\n"
                      "Do you want Zolvar to delete them on the network or try to re-get it?",
                      count, poolName, fmt::join(files, ", ")),
          {"Re-Get", "Delete Everywhere"}};
}

Alert pathsNotAccessibleAlert(const std::string& poolName, const std::string& folderPath) {
  return {
      "Folder Path not Accessible",
      fmt::format("Synced Folder '{}' is not accessible to Zolvar.\nPlease check the path '{}'.",
                  poolName, folderPath),
      {"Continue", "Open Parent Folder"}};
}

PasswordFailureText passwordFailureText(const std::string& poolName, const std::string& userId) {
  return {fmt::format("Password Failure for Sync Folder\n'{}'", poolName),
          fmt::format(
              "An authorization error happened while syncing.\n\nEither you haven't set a password "
              "or you and subscriber '{0}' set different passwords for this Sync Folder. \n\n"
              "Resolve this issue by changing your password or make '{0}' change hers/his.\n\n"
              "Note, that each subscribers sets her own password and you will only sync with "
              "subscribers with matching passwords. Therefore you can choose to ignore certain "
              "subscribers to avoid this warning.",
              userId),
          {"Change My Password", "Deactivate the Folder",
           fmt::format("Ignoring Subscriber '{}'", userId)}};
}

std::string switchBranchWarning(const std::string& path, const std::string& userId,
                                const std::string& date) {
  return fmt::format(
      "The file '{}' is about to be switched to the version from '{}' with date '{}'.", path,
      userId, date);
}

std::string removePoolWarning(const std::string& poolName) {
  return fmt::format("The Synced Folder '{}' and all contained data will be put in the trash.",
                     poolName);
}

}  // namespace zolvar
