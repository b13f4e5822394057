#include "pool/HeldLogs.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

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

void ToldLogs::add(const Sizes& sizes, double now) {
  constexpr double LongestMerge = 60;  // seconds, with the scan that it may wait for
  if (merged_) {
    std::erase_if(*merged_, [&](const auto& log) { return !sizes.contains(log.first); });
    for (auto& [name, size] : *merged_) size = std::min(size, sizes.at(name));
  }
  if (waiting_ && now >= waitingSince_ && now < waitingSince_ + LongestMerge) return;
  if (waiting_ && now >= waitingSince_) merged_ = std::move(waiting_);
  waiting_ = sizes;
  waitingSince_ = now;
}

HeldLogs::HeldLogs(const std::vector<ListingEntry>& listed, const std::string& participant,
                   const std::map<std::string, std::uint64_t>& sizes, Folder& folder,
                   ToldLogs& told, double now) {
  ToldLogs::Sizes there;
  for (const ListingEntry& entry : listed) {
    const std::string_view name = lastPathComponent(entry.path);
    if (entry.kind == '-' && parentPath(entry.path) == MetadataFolderName && isLogFileName(name)) {
      there[std::string(name)] = entry.size;
    }
  }
  if (there.empty()) return;
  told.add(there, now);
  lacked_ = lacked(there, participant, sizes, folder);
  if (told.merged()) notMerged_ = lacked(*told.merged(), participant, sizes, folder);
  const std::string own = participant + std::string(LogFileExtension);
  const auto theirs = there.find(own);
  const auto ours = sizes.find(own);
  hasLoggedMore_ =
      theirs != there.end() && theirs->second > (ours == sizes.end() ? 0 : ours->second);
}

HeldLogs::FirstLines HeldLogs::lacked(const ToldLogs::Sizes& there, const std::string& participant,
                                      const std::map<std::string, std::uint64_t>& sizes,
                                      Folder& folder) {
  FirstLines lines;
  for (const auto& [name, size] : sizes) {
    const std::string userId = name.substr(0, name.size() - LogFileExtension.size());
    const auto found = there.find(name);
    const std::uint64_t held = found == there.end() ? 0 : found->second;
    if (held >= size || userId == participant) continue;
    if (const auto time = lineTime(folder, name, held)) lines[userId] = *time;
  }
  return lines;
}

bool HeldLogs::isLacked(const FirstLines& lacked, const KDLogFileEntry& entry) {
  const auto first = lacked.find(entry.userId());
  return first != lacked.end() && entry.logTime() >= first->second;
}

bool HeldLogs::mayHold(const KDLogFileEntry& entry) const { return !isLacked(lacked_, entry); }

bool HeldLogs::hasCarriedOut(const KDLogFileEntry& deletion) const {
  return mayHold(deletion) && notMerged_ && !isLacked(*notMerged_, deletion);
}

}  // namespace zolvar
