#include "pool/CopyRunRecord.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "platform/FileSystem.h"
#include "pool/ArrivingName.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::uint32_t FileMode = 0600;
constexpr std::uint64_t LargestRecord = 1U << 20U;  // bytes

/// The tool gives an arriving file no rights for others, and its owner those of the original.
bool isPrivateFile(const FileAttributes& attributes) {
  return attributes.kind == FileKind::Regular && (attributes.mode & 07077U) == 0;
}

}  // namespace

CopyRunRecord::CopyRunRecord(Folder& supportFolder, std::string path)
    : folder_(supportFolder), path_(std::move(path)) {
  const auto text = folder_.read(path_, 0, LargestRecord);
  if (!text) return;
  std::int64_t seconds = 0;
  const char* const end = text->data() + text->size();
  auto [next, error] = std::from_chars(text->data(), end, seconds);
  if (error != std::errc() || seconds <= 0) return;
  begunAt_ = static_cast<double>(seconds);
  for (std::string_view rest(next, static_cast<std::size_t>(end - next)); !rest.empty();) {
    rest.remove_prefix(1);
    const std::string_view line = rest.substr(0, rest.find('\n'));
    if (!line.empty()) seen_.emplace(line);
    rest.remove_prefix(line.size());
  }
}

Result<> CopyRunRecord::begin(double now) {
  if (isOpen()) return {};
  begunAt_ = std::max(std::floor(now), 1.0);
  std::string text = std::to_string(static_cast<std::int64_t>(begunAt_)) + "\n";
  for (const std::string& path : seen_) text += path + "\n";
  return folder_.replace(path_, text, FileMode);
}

bool CopyRunRecord::isLeftover(std::string_view path, const FileAttributes& attributes, double now,
                               const std::set<std::string, std::less<>>& wanted) const {
  const std::string_view name = lastPathComponent(path);
  if (!isOpen() || !isShapedAsArriving(name) || !isPrivateFile(attributes)) return false;
  const auto time = static_cast<double>(attributes.modTime);
  if (time < begunAt_ || time > now || seen_.contains(path)) return false;
  const std::string_view directory = parentPath(path);
  return std::any_of(wanted.begin(), wanted.end(), [&](const std::string& target) {
    return parentPath(target) == directory && isArriving(name, lastPathComponent(target));
  });
}

Result<> CopyRunRecord::end() {
  seen_.clear();
  if (!isOpen()) return {};
  begunAt_ = 0;
  return folder_.removeFile(path_);
}

}  // namespace zolvar
