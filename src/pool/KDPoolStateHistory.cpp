// What is shown of a file's versions.

#include "pool/FileHistory.h"
#include "pool/KDPoolState.h"

namespace zolvar {
namespace {

constexpr std::size_t MostVersionsShown = 500;

}  // namespace

Result<FileHistory> KDPoolState::history(const std::string& path) const {
  const KDPathRecord* record = tree_ ? store_->findPath(path) : nullptr;
  if (!record || !record->newest) {
    return fail(FailureKind::Absent, "find the file", path, "no log of this folder names it");
  }
  FileHistory history = fileHistory(*tree_, *record, MostVersionsShown);
  const auto attributes = folder_->attributes(path);
  if (attributes && attributes->kind == FileKind::Regular) {
    for (auto& version : history.versions) {
      if (version.isHere) version.size = attributes->size;
    }
  }
  return history;
}

}  // namespace zolvar
