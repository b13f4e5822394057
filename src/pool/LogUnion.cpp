#include "pool/LogUnion.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/FileSystem.h"

namespace zolvar {

namespace {

constexpr std::size_t PieceSize = 1U << 20;  ///< bytes read at once
constexpr std::size_t WriteSize = 4U << 20;  ///< bytes written, and synced, at once
constexpr std::uint64_t LargestLog = 4ULL << 30;

/// The log time that a line begins with, quoted or not.
std::optional<double> logTimeOfLine(std::string_view line) {
  if (line.starts_with('"')) line.remove_prefix(1);
  double time = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), time);
  const bool isField =
      error == std::errc() && end != line.data() + line.size() && (*end == '"' || *end == ',');
  return isField ? std::optional(time) : std::nullopt;
}

/// Where a line belongs, after a line at `before`: times never go back within a log, and a line
/// without a readable time stays where it is.
double timeAfter(double before, std::string_view line) {
  return std::max(before, logTimeOfLine(line).value_or(before));
}

/// Calls `visit` with each line of `text` that ends in a line feed; returns the rest.
template <class Visit>
std::string_view forEachWholeLine(std::string_view text, const Visit& visit) {
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    visit(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return text;
}

}  // namespace

Result<> LogUnion::read(Folder& folder, const std::string& oldPath, const std::string& newPath) {
  auto old = folder.read(oldPath, 0, LargestLog);
  if (!old) return tl::unexpected(old.error());
  old_ = std::move(*old);
  indexOld();

  auto reader = folder.open(newPath, 0);
  if (!reader) return tl::unexpected(reader.error());
  std::string pending;
  std::string piece(PieceSize, '\0');
  for (;;) {
    const auto count = (*reader)(piece.data(), piece.size());
    if (!count) return tl::unexpected(count.error());
    if (*count == 0) break;
    pending.append(piece, 0, *count);
    pending = std::string(
        forEachWholeLine(pending, [this](std::string_view line) { takeNew(line, true); }));
  }
  if (!pending.empty()) takeNew(pending, false);
  return {};
}

void LogUnion::indexOld() {
  oldFragment_ = forEachWholeLine(old_, [this](std::string_view line) {
    if (!line.empty()) oldLines_.emplace(line, false);
  });
  isFragmentShared_ = oldFragment_.empty();
}

void LogUnion::takeNew(std::string_view line, bool isWhole) {
  if (line.empty()) return;
  newTime_ = timeAfter(newTime_, line);
  if (!isFragmentShared_ && line.starts_with(oldFragment_)) {
    isFragmentShared_ = true;
    isFragmentInBoth_ = !isWhole && line == oldFragment_;
  }
  if (const auto known = oldLines_.find(line); known != oldLines_.end()) {
    if (!known->second) ++sharedLines_;
    known->second = true;
    return;
  }
  if (!isWhole) {
    const auto hasMore = [line](std::string_view other) { return other.starts_with(line); };
    if (hasMore(oldFragment_) || std::any_of(oldLines_.begin(), oldLines_.end(),
                                             [&](auto& known) { return hasMore(known.first); })) {
      return;
    }
  }
  if (extraLines_.contains(line)) return;
  extras_.push_back({newTime_, std::string(line)});
  extraLines_.insert(extras_.back().line);
}

LogUnion::Relation LogUnion::relation() const {
  if (sharedLines_ == oldLines_.size() && isFragmentShared_) return Relation::NewHasAll;
  return extras_.empty() ? Relation::OldHasAll : Relation::Diverged;
}

std::vector<std::string> LogUnion::linesNewToOld() const {
  std::vector<std::string> lines;
  lines.reserve(extras_.size());
  for (const Extra& extra : extras_) lines.push_back(extra.line);
  return lines;
}

Result<> LogUnion::write(const Writer& writer) const {
  std::string buffer;
  Result<> result;
  const auto put = [&](std::string_view line) {
    if (!result) return;
    buffer.append(line).push_back('\n');
    if (buffer.size() < WriteSize) return;
    result = writer(buffer);
    buffer.clear();
  };
  double oldTime = 0;
  auto extra = extras_.begin();
  const auto putOld = [&](std::string_view line) {
    oldTime = timeAfter(oldTime, line);
    for (; extra != extras_.end() && extra->time < oldTime; ++extra) put(extra->line);
    put(line);
  };
  forEachWholeLine(old_, putOld);
  if (!isFragmentShared_ || isFragmentInBoth_) putOld(oldFragment_);
  for (; extra != extras_.end(); ++extra) put(extra->line);
  return result && !buffer.empty() ? writer(buffer) : result;
}

}  // namespace zolvar
