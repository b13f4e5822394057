#include "log/KDLogFile.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "log/LogLineCodec.h"
#include "log/LogReader.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr double DistantPast = -62135769600;  // the first day of year 1

std::string withoutExtension(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return std::string(dot == 0 ? name : name.substr(0, dot));
}

}  // namespace

KDLogFile::KDLogFile(Folder& folder, std::string path, KDLogFileDelegate* delegate, Log& log)
    : folder_(folder),
      path_(std::move(path)),
      userId_(withoutExtension(lastPathComponent(path_))),
      delegate_(delegate),
      log_(log),
      lastLogTime_(DistantPast) {
  const auto attributes = folder_.attributes(path_);
  if (!attributes && attributes.error().kind == FailureKind::Absent) {
    if (const auto made = folder_.append(path_, {}); !made) {
      log_.warning("{}", made.error().message());
    }
  }
  open();
}

KDLogFile::~KDLogFile() { close(); }

bool KDLogFile::open() {
  if (isOpen_) return false;
  const auto attributes = folder_.attributes(path_);
  isOpen_ = attributes && attributes->kind == FileKind::Regular;
  if (!isOpen_) log_.warning("Warning! Unable to open log file at '{}'", path_);
  return isOpen_;
}

bool KDLogFile::close() {
  isOpen_ = false;
  return false;
}

void KDLogFile::appendEntry(const KDLogFileEntry* entry) {
  if (entry == nullptr) return;
  require(entry->logTime() >= lastLogTime_, "[entry logTime]>=lastLogTime");
  lastLogTime_ = entry->logTime();
  entriesToAppend_.push_back(entry);
}

Result<> KDLogFile::synchronizeFile() {
  if (entriesToAppend_.empty()) return {};
  // Looked at anew each time: a transfer may have replaced the file.
  close();
  if (!open()) return fail(FailureKind::Transient, "write the log", path_, "it cannot be opened");
  const auto before = folder_.attributes(path_);
  if (!before) return tl::unexpected(before.error());

  auto lines = missingLineFeed(before->size);
  if (!lines) return tl::unexpected(lines.error());
  for (const KDLogFileEntry* entry : entriesToAppend_) {
    if (log_.isDebug()) {
      log_.debug("Appending Entry {} to File {}", entry->description(), description());
    }
    const auto components = entry->components();
    *lines += csvString({components.begin(), components.end()});
    *lines += '\n';
  }
  if (const auto written = folder_.append(path_, *lines); !written) return written;
  entriesToAppend_.clear();
  keepTimeGrowing(before->modTime);
  if (delegate_ != nullptr) delegate_->logFileDidChange(*this);
  return {};
}

/// What must precede the next entry: a line feed when a crash or a full disk cut the last line off.
Result<std::string> KDLogFile::missingLineFeed(std::uint64_t size) {
  if (size == 0) return std::string();
  const auto last = folder_.read(path_, size - 1, 1);
  if (!last) return tl::unexpected(last.error());
  return std::string(*last == "\n" ? "" : "\n");
}

/// Peers fetch a log when its time in whole seconds is later than that of their copy.
void KDLogFile::keepTimeGrowing(std::int64_t before) {
  const auto after = folder_.attributes(path_);
  if (after && after->modTime > before) return;
  if (const auto set = folder_.setModTime(path_, before + 1); !set) {
    log_.warning("{}", set.error().message());
  }
}

Result<> KDLogFile::readInto(LogReader& reader, std::uint64_t offset) {
  const auto attributes = folder_.attributes(path_);
  if (!attributes) return tl::unexpected(attributes.error());
  const auto bytes = folder_.open(path_, offset);
  if (!bytes) return tl::unexpected(bytes.error());
  return reader.readAll(*bytes, offset, attributes->size);
}

std::vector<KDLogFileEntry*> KDLogFile::entriesFromOffset(std::uint64_t offset,
                                                          KDEntryStore& store) {
  if (!isOpen_ && !open()) return {};
  LogReader reader(store, userId_, LogReader::Mode::Strict, log_);
  const auto read = readInto(reader, offset);
  if (!read) log_.warning("{}", read.error().message());
  if (reader.refusedPaths() > 0) {
    log_.warning("Warning: Left out {} entries of '{}' with unusable paths.", reader.refusedPaths(),
                 path_);
  }
  return std::move(reader.summary().entries);
}

Result<LogReadSummary> KDLogFile::readTolerantly(std::uint64_t offset, KDEntryStore& store) {
  LogReader reader(store, userId_, LogReader::Mode::Tolerant, log_);
  if (const auto read = readInto(reader, offset); !read) return tl::unexpected(read.error());
  return std::move(reader.summary());
}

std::string KDLogFile::description() const {
  return fmt::format("<KDLogFile {}> at '{}'", userId_, path_);
}

}  // namespace zolvar
