// What the rules in the folder keep out of it: never logged, fetched or deleted.

#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/KDPoolState.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::uint64_t LargestIgnoreFile = 1U << 20;  ///< bytes

}  // namespace

/// Rules that cannot be read are no rules; what they kept out would travel. So the old ones stay.
void KDPoolState::refreshIgnoreRules() {
  const auto file = folder_->attributes(IgnoreFileName);
  const bool isThere = file && file->kind == FileKind::Regular;
  if (!file && file.error().kind != FailureKind::Absent) return;
  if (isThere == ignoreFile_.has_value() &&
      (!isThere || (ignoreFile_->inode == file->inode && ignoreFile_->size == file->size &&
                    ignoreFile_->modTime == file->modTime))) {
    return;
  }
  IgnoreRules rules;
  if (isThere) {
    const auto text = folder_->read(IgnoreFileName, 0, LargestIgnoreFile);
    if (!text) {
      warnOnce("ignore rules", text.error().message());
      return;
    }
    rules = IgnoreRules(*text);
  }
  ignoreFile_ = isThere ? std::optional(*file) : std::nullopt;
  if (rules == ignore_) return;
  ignore_ = std::move(rules);
  platform_.log.debug("The ignore rules of '{}' have changed.", settings_.poolName);

  if (settings_.changed) settings_.changed->noteEverything();
  std::set<std::string> leftOut;
  store_->forEachPath([&](KDPathRecord& path) {
    if (path.activeLeafCount > 1) setConflict(true, path);  // unless it is ignored
    if (isIgnored(path)) leftOut.emplace(path.text);
  });
  removeTodoFiles(leftOut);
  const auto settled = std::erase_if(
      inQuestion_, [&leftOut](const std::string& path) { return leftOut.contains(path); });
  isQuestionStale_ = isQuestionStale_ || settled > 0;
}

/// As what lies here, and as what is wanted: a rule may be for directories only.
bool KDPoolState::isIgnored(const KDPathRecord& path) const {
  if (ignore_.isEmpty()) return false;
  const bool isDirectory = path.disk && path.disk->kind == FileKind::Directory;
  if (ignore_.ignores(path.text, isDirectory)) return true;
  const KDLogFileEntry* wanted = tree_->selectedLeaf(path).leaf;
  if (!wanted && !path.disk) wanted = tree_->directoryLeaf(path);
  return !isDirectory && wanted && wanted->isDirectory() && ignore_.ignores(path.text, true);
}

bool KDPoolState::holdsOnlyIgnored(std::string_view directory) {
  if (ignore_.isEmpty()) return false;
  const auto entries = folder_->list(directory);
  if (!entries || entries->empty()) return false;
  for (const auto& [name, attributes] : *entries) {
    const bool isDirectory = attributes.kind == FileKind::Directory;
    const std::string path = joinPath(directory, name);
    if (!ignore_.ignoresItem(path, isDirectory) && !(isDirectory && holdsOnlyIgnored(path))) {
      return false;
    }
  }
  return true;
}

}  // namespace zolvar
