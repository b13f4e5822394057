#include "pool/KDDiskRecord.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>
#include <vector>

#include "platform/Log.h"
#include "pool/KDVersionTree.h"

namespace zolvar {

namespace {

constexpr std::string_view Header = "zolvar-disk-record\t1";
constexpr std::uint64_t LongestRecord = 4ULL << 30;  // bytes; a million files need about 100 MB
constexpr std::uint32_t RecordMode = 0600;

char kindLetter(const KDDiskState& state) {
  switch (state.kind) {
    case FileKind::Directory:
      return 'd';
    case FileKind::Link:
      return state.isGuess ? 'm' : 'l';
    default:
      return state.isGuess ? 'g' : state.isUnseen ? 'u' : 'f';
  }
}

/// Cuts the next tab-separated field off `line`; none when there is no tab.
std::optional<std::string_view> takeField(std::string_view& line) {
  const auto tab = line.find('\t');
  if (tab == std::string_view::npos) return std::nullopt;
  const auto field = line.substr(0, tab);
  line.remove_prefix(tab + 1);
  return field;
}

template <class Number>
bool parseNumber(std::optional<std::string_view> field, Number& number) {
  if (!field) return false;
  const auto [end, error] = std::from_chars(field->data(), field->data() + field->size(), number);
  return error == std::errc() && end == field->data() + field->size();
}

}  // namespace

KDDiskState KDDiskState::of(const FileAttributes& attributes, KDLogFileEntry* entry) {
  return {attributes.kind,
          attributes.size,
          attributes.modTime,
          attributes.inode,
          attributes.device,
          entry,
          false,
          false};
}

KDDiskState KDDiskState::guess(const FileAttributes& attributes, KDLogFileEntry* entry) {
  KDDiskState state = of(attributes, entry);
  state.isGuess = state.isUnseen = true;
  return state;
}

bool KDDiskState::isUnchanged(const FileAttributes& attributes) const {
  if (kind != attributes.kind) return false;
  if (kind == FileKind::Directory) return true;
  if (size != attributes.size || modTime != attributes.modTime) return false;
  return inode == 0 || device != attributes.device || inode == attributes.inode;
}

KDDiskRecord::KDDiskRecord(Folder& supportFolder, std::string path, Log& log,
                           std::function<void(std::string_view)> changed)
    : folder_(supportFolder), path_(std::move(path)), log_(log), changed_(std::move(changed)) {}

// A line: kind, size, time, inode, device, log time, user id, path, separated by tabs. A path may
// hold tabs (it is the rest of the line) but no line feed. Kind "-" forgets the path.
std::string KDDiskRecord::line(const KDPathRecord& path) const {
  const KDDiskState* state = path.disk;
  if (!state) return fmt::format("-\t{}\n", path.text);
  return fmt::format("{}\t{}\t{}\t{}\t{}\t{}\t{}\t{}\n", kindLetter(*state), state->size,
                     state->modTime, state->inode, state->device,
                     state->entry ? timeText(state->entry->logTime()) : "-",
                     state->entry ? state->entry->userId() : "", path.text);
}

void KDDiskRecord::load(KDVersionTree& tree, FileIdentity root) {
  store_ = &tree.store();
  root_ = root;
  const auto bytes = folder_.read(path_, 0, LongestRecord);
  if (!bytes) {
    if (bytes.error().kind != FailureKind::Absent) log_.warning("{}", bytes.error().message());
    return;
  }
  std::string_view rest = *bytes;
  std::uint64_t lines = 0;
  std::uint64_t live = 0;
  bool isFirst = true;
  bool isSameFolder = false;
  while (true) {
    const auto end = rest.find('\n');
    if (end == std::string_view::npos) break;  // a line that a crash cut off counts for nothing
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    if (isFirst) {
      isFirst = false;
      FileIdentity recorded;
      if (!line.starts_with(Header) || line.size() <= Header.size()) return;
      line.remove_prefix(Header.size() + 1);
      if (!parseNumber(takeField(line), recorded.device) || !parseNumber({line}, recorded.inode))
        return;
      knowsRoot_ = recorded == root;
      isSameFolder = recorded.inode == root.inode;
      continue;
    }
    ++lines;
    const auto kind = takeField(line);
    if (!kind || kind->size() != 1) continue;
    if (*kind == "-") {
      if (KDPathRecord* path = store_->findPath(line); path && path->disk) {
        free_.push_back(path->disk);
        path->disk = nullptr;
        --live;
      }
      continue;
    }
    KDDiskState state;
    state.kind = *kind == "d"                   ? FileKind::Directory
                 : *kind == "l" || *kind == "m" ? FileKind::Link
                                                : FileKind::Regular;
    state.isGuess = *kind == "g" || *kind == "m";
    state.isUnseen = state.isGuess || *kind == "u";
    if (!parseNumber(takeField(line), state.size) || !parseNumber(takeField(line), state.modTime) ||
        !parseNumber(takeField(line), state.inode) || !parseNumber(takeField(line), state.device)) {
      continue;
    }
    const auto logTime = takeField(line);
    const auto user = takeField(line);
    if (!logTime || !user) continue;
    KDPathRecord* path = store_->findPath(line);
    if (!path) continue;
    if (*logTime != "-") {
      double time = 0;
      if (!parseNumber(logTime, time)) continue;
      state.entry = tree.version(*path, std::string(*user), time);
      if (!state.entry) continue;
    }
    if (!knowsRoot_) state.device = 0;
    if (!isSameFolder) state.inode = 0;
    if (path->disk) {
      *path->disk = state;
    } else {
      path->disk = &states_.emplace_back(state);
      ++live;
    }
  }
  needsRewrite_ = !knowsRoot_ || !rest.empty() || lines > 2 * live + 1000;
}

void KDDiskRecord::set(KDPathRecord& path, const KDDiskState& state) {
  if (changed_) changed_(path.text);
  if (!path.disk) {
    if (free_.empty()) {
      path.disk = &states_.emplace_back();
    } else {
      path.disk = free_.back();
      free_.pop_back();
    }
  }
  *path.disk = state;
  pending_ += line(path);
}

void KDDiskRecord::forget(KDPathRecord& path) {
  if (changed_) changed_(path.text);
  if (!path.disk) return;
  free_.push_back(path.disk);
  path.disk = nullptr;
  pending_ += line(path);
}

Result<> KDDiskRecord::rewrite() {
  std::string bytes = fmt::format("{}\t{}\t{}\n", Header, root_.device, root_.inode);
  if (store_) {
    store_->forEachPath([&](KDPathRecord& path) {
      if (path.disk) bytes += line(path);
    });
  }
  return folder_.replace(path_, bytes, RecordMode);
}

Result<> KDDiskRecord::flush() {
  if (pending_.empty() && !needsRewrite_) return {};
  const auto written = needsRewrite_ ? rewrite() : folder_.append(path_, pending_);
  if (!written) return written;
  needsRewrite_ = false;
  knowsRoot_ = true;
  pending_.clear();
  return {};
}

}  // namespace zolvar
