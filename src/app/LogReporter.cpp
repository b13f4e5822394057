#include "app/LogReporter.h"

#include "net/KDParticipant.h"
#include "platform/Log.h"
#include "pool/KDFilePool.h"

namespace zolvar {
namespace {

constexpr std::size_t LongestList = 15;

template <class Paths>
std::string listed(const Paths& paths) {
  std::string text;
  std::size_t count = 0;
  for (const auto& path : paths) {
    if (count++ == LongestList) return text + ", ...";
    text += (text.empty() ? "" : ", ") + path;
  }
  return text;
}

}  // namespace

void LogReporter::syncDidEnd(const SyncReport& report) {
  if (!report.isSuccess()) return;  // the scheduler has said why
  log_.debug("Sync Success (with {}): {}", report.participant.description(),
             listed(report.loadedFiles));
}

void LogReporter::filesWereDeleted(KDFilePool& pool, const std::set<std::string>& paths) {
  log_.warning("Deletion: {} in '{}': {}", paths.size(), pool.displayName(), listed(paths));
}

void LogReporter::conflictDidOccur(KDFilePool& pool, const std::string& path) {
  log_.warning("Conflict in Folder '{}': '{}' has different versions. See: zolvar conflicts '{}'",
               pool.displayName(), path, pool.name());
}

void LogReporter::questionDidArise(KDFilePool& pool, const DeleteQuestion& question) {
  log_.warning(
      "{} files have been (re-)moved from Synced Folder '{}' {}. Answer with: zolvar answer '{}' "
      "reget|delete",
      question.paths.size(), pool.name(), listed(question.paths), pool.name());
}

void LogReporter::passwordDidFail(KDFilePool& pool, KDParticipant& participant) {
  log_.warning(
      "Password Failure for Sync Folder '{}': you and '{}' have different passwords, or one of you "
      "has none.",
      pool.name(), participant.userId());
}

void LogReporter::serverDidChange(bool running, const std::string& trouble) {
  if (!trouble.empty() && trouble != serverTrouble_) log_.error("{}", trouble);
  serverTrouble_ = trouble;
  log_.debug("The transfer daemon {}.", running ? "runs" : "does not run");
}

}  // namespace zolvar
