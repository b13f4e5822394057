#include "log/KDLogFileEntry.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <limits>
#include <memory>
#include <mutex>
#include <unordered_set>

#include "log/KDEntryStore.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>()(text);
  }
};

/// All user ids met so far. Sets keep their members where they are.
struct UserIds {
  std::mutex mutex;  ///< guards ids
  std::unordered_set<std::string, TextHash, std::equal_to<>> ids;
};

std::uint32_t clampedToUnsigned(double value) {
  constexpr auto Highest = std::numeric_limits<std::uint32_t>::max();
  if (!(value > 0)) return 0;
  return value >= Highest ? Highest : static_cast<std::uint32_t>(value);
}

/// What names the entry among all others.
std::string rootDescription(const KDLogFileEntry& entry) {
  return fmt::format("<KDLogFileEntry {}>", entry.id().text());
}

std::string dateText(double seconds) {
  constexpr double LastPrintable = 253402300799;  // the end of the year 9999
  if (!(seconds >= 0 && seconds <= LastPrintable)) return timeText(seconds);
  const std::chrono::sys_seconds date{std::chrono::seconds(static_cast<long long>(seconds))};
  return fmt::format("{:%Y-%m-%d %H:%M:%S} +0000", date);
}

}  // namespace

const std::string& internedUserId(std::string_view userId) {
  // Never destroyed: a lane may still read a log while the process ends.
  static UserIds& known = *std::make_unique<UserIds>().release();
  const std::lock_guard guard(known.mutex);
  auto found = known.ids.find(userId);
  if (found == known.ids.end()) found = known.ids.emplace(userId).first;
  return *found;
}

std::string timeText(double seconds) {
  char text[400];  // the longest fixed form of a double stays below
  const auto end = std::to_chars(text, text + sizeof text, seconds, std::chars_format::fixed);
  return {text, end.ptr};
}

std::string VersionId::text() const { return userId + ":" + timeText(logTime); }

std::optional<VersionId> VersionId::parse(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos || colon == 0) return std::nullopt;
  const std::string_view digits = text.substr(colon + 1);
  VersionId id{std::string(text.substr(0, colon)), 0};
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), id.logTime);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  if (!(id.logTime >= 0 && id.logTime < KDEntryStore::TimesEnd)) return std::nullopt;
  return id;
}

std::string_view KDLogFileEntry::path() const { return path_->text; }

const std::string& KDLogFileEntry::puserId() const {
  static const std::string& nobody = internedUserId({});
  if (plogTime_ == 0) return nobody;
  return puserId_ != nullptr && !puserId_->empty() ? *puserId_ : *userId_;
}

std::string_view KDLogFileEntry::userIdForDisplay() const { return withoutLocalSuffix(*userId_); }

KDLogFileEntry::Type KDLogFileEntry::type() const {
  if (plogTime_ == 0) return KDCreationType;
  if (modTime_ == 0) return KDDeletionType;
  if (parent_ == nullptr || parent_->modTime_ != modTime_) return KDModificationType;
  return KDBranchSelectionType;
}

std::array<std::string, 6> KDLogFileEntry::components() const {
  return {timeText(logTime_),
          timeText(plogTime_),
          std::string(path()),
          timeText(modTime_),
          puserId_ != nullptr ? *puserId_ : std::string(),
          std::string(comment())};
}

void KDLogFileEntry::setParentEntry(KDLogFileEntry* parent) {
  require(parent != nullptr && parent->logTime_ == plogTime_,
          "[aParent logTime] == [self plogTime]");
  parent_ = parent;
}

KDLogFileEntry* KDLogFileEntry::parentEntryFromSortedEntries(
    std::span<KDLogFileEntry* const> sorted, std::size_t startIndex) {
  if (parent_ != nullptr) return parent_;
  if (plogTime_ == 0 || sorted.empty()) return nullptr;
  const std::string* const parentUser = &puserId();
  for (std::size_t index = std::min(startIndex, sorted.size() - 1) + 1; index-- > 0;) {
    KDLogFileEntry* const candidate = sorted[index];
    if (candidate->logTime_ == plogTime_ && candidate->userId_ == parentUser &&
        candidate->type() != KDBranchSelectionType) {
      parent_ = candidate;
      return candidate;
    }
  }
  return nullptr;
}

bool KDLogFileEntry::isParentOfEntry(const KDLogFileEntry* entry) const {
  require(entry != nullptr, "anEntry!=nil");
  // A parent is strictly older than its child, so the walk may end where the times pass ours.
  while (entry != nullptr && entry != this && entry->logTime_ > logTime_) entry = entry->parent_;
  return entry == this;
}

bool KDLogFileEntry::haspmodTime(double) const {
  if (parent_ == nullptr) return false;
  return static_cast<std::uint8_t>(static_cast<long long>(parent_->modTime_)) != 0;
}

void KDLogFileEntry::replacePathWith(KDPathRecord& path) {
  if (&path == path_) return;
  if (path.text != path_->text) throw InconsistencyError("Only equal replacements allowed.");
  path_ = &path;
}

int KDLogFileEntry::compareLogTime(const KDLogFileEntry& other) const {
  if (logTime_ == other.logTime_) return 0;
  return other.logTime_ > logTime_ ? -1 : 1;
}

bool KDLogFileEntry::isEqual(const KDLogFileEntry& other) const {
  return logTime_ == other.logTime_ && modTime_ == other.modTime_ && plogTime_ == other.plogTime_ &&
         userId_ == other.userId_ && &puserId() == &other.puserId() &&
         (path_ == other.path_ || path() == other.path());
}

std::string KDLogFileEntry::description() const {
  return fmt::format("{} type '{}': with {} (by '{}' mod date {})", comment(),
                     rootDescription(*this), components(), *userId_, dateText(modTime_));
}

std::string KDLogFileEntry::shortDescription() const {
  return fmt::format("{} by {} (logTime: {:8x}, modTime: {:8x}) {}", comment(), userIdForDisplay(),
                     clampedToUnsigned(logTime_), clampedToUnsigned(modTime_),
                     rootDescription(*this));
}

}  // namespace zolvar
