#include "pool/HeldLogs.h"

#include <array>
#include <charconv>
#include <optional>
#include <string_view>

#include "log/KDLogFileEntry.h"
#include "platform/FileSystem.h"
#include "pool/PoolSyncSteps.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

/// The log time of the line that begins at `offset`, if one does.
std::optional<double> lineTime(Folder& folder, const std::string& name, std::uint64_t offset) {
  std::array<char, 32> buffer{};  // the end of the line before, and "1750000000" in quotation marks
  const std::uint64_t before = offset > 0 ? 1 : 0;
  const auto reader = folder.open(joinPath(MetadataFolderName, name), offset - before);
  if (!reader) return std::nullopt;
  const auto count = (*reader)(buffer.data(), buffer.size());
  if (!count || *count < before + 2) return std::nullopt;
  const char* const beginning = buffer.data() + before;
  if ((before > 0 && buffer[0] != '\n') || *beginning != '"') return std::nullopt;
  std::uint64_t time = 0;
  const char* const end = buffer.data() + *count;
  const auto parsed = std::from_chars(beginning + 1, end, time);
  if (parsed.ec != std::errc() || parsed.ptr == end || *parsed.ptr != '"') return std::nullopt;
  return static_cast<double>(time);
}

}  // namespace

HeldLogs::HeldLogs(const std::vector<ListingEntry>& listed, const std::string& participant,
                   const std::map<std::string, std::uint64_t>& sizes, Folder& folder, double now)
    : now_(now) {
  std::map<std::string_view, std::uint64_t> there;
  for (const ListingEntry& entry : listed) {
    const std::string_view name = lastPathComponent(entry.path);
    if (entry.kind == '-' && parentPath(entry.path) == MetadataFolderName && isLogFileName(name)) {
      there[name] = entry.size;
    }
  }
  if (there.empty()) return;
  for (const auto& [name, size] : sizes) {
    const std::string userId = name.substr(0, name.size() - LogFileExtension.size());
    const auto found = there.find(name);
    const std::uint64_t held = found == there.end() ? 0 : found->second;
    if (held >= size || userId == participant) continue;
    if (const auto time = lineTime(folder, name, held)) lackedFrom_[userId] = *time;
  }
}

bool HeldLogs::mayHold(const KDLogFileEntry& entry) const {
  const auto lacked = lackedFrom_.find(entry.userId());
  return lacked == lackedFrom_.end() || entry.logTime() < lacked->second;
}

bool HeldLogs::hasCarriedOut(const KDLogFileEntry& deletion) const {
  // A log is there before it is merged, and clocks may differ by some seconds.
  constexpr double LongestMerge = 60;  // seconds
  return mayHold(deletion) && deletion.logTime() + LongestMerge < now_;
}

}  // namespace zolvar
