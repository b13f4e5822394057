#include "log/LogReader.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>

#include "log/LogLineCodec.h"
#include "platform/Log.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr const char* TooFewComponents = "[components count] >= 5";

bool isUserId(std::string_view text) {
  return text.size() <= LongestComponent && isValidUtf8(text);
}

bool isTime(double time) { return time >= 0 && time < KDEntryStore::TimesEnd; }

bool parseFraction(std::string_view text, double& time) {
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, time);
  return parsed.ec == std::errc() && parsed.ptr == end && isTime(time);
}

/// A time as the format allows it: finite, 0 <= time < 2^40. Nearly all are whole numbers of ten
/// digits; up to fifteen are exact in a double.
bool parseTime(std::string_view text, double& time) {
  constexpr std::size_t ExactDigits = 15;
  if (text.empty() || text.size() > ExactDigits) return parseFraction(text, time);
  std::uint64_t whole = 0;
  for (const char character : text) {
    const unsigned digit = static_cast<unsigned char>(character) - unsigned{'0'};
    if (digit > 9) return parseFraction(text, time);
    whole = whole * 10 + digit;
  }
  time = static_cast<double>(whole);
  return isTime(time);
}

}  // namespace

LogReader::LogReader(KDEntryStore& store, std::string_view userId, Mode mode, Log& log)
    : store_(store),
      log_(log),
      mode_(mode),
      userIdIsUsable_(!userId.ends_with(LogFileExtension)),
      parser_() {
  if (csv_init(&parser_, CSV_EMPTY_IS_NULL) != 0) {
    throw InconsistencyError("CSV error: Couldn't initialize CSV parser.");
  }
  for (Row& row : rows_) row.fields.userId = internedUserId(userId);
}

LogReader::~LogReader() { csv_free(&parser_); }

Result<> LogReader::readAll(const Folder::Reader& reader, std::uint64_t offset,
                            std::uint64_t size) {
  if (mode_ == Mode::Strict) require(userIdIsUsable_, "![aUserId hasSuffix:@\".fplog\"]");
  if (size > offset) makeRoom(size - offset);
  constexpr std::size_t BufferSize = PieceSize + LongestLine;
  const auto buffer = std::make_unique_for_overwrite<char[]>(BufferSize);
  std::size_t kept = 0;             // bytes of a line whose end has not been read yet
  std::uint64_t overlong = 0;       // bytes of a line that became too long, already let go
  std::uint64_t position = offset;  // in the file, behind the bytes in the buffer
  summary_.endOffset = offset;
  while (true) {
    const auto count = reader(buffer.get() + kept, PieceSize);
    if (!count) return tl::unexpected(count.error());
    if (*count == 0) break;
    position += *count;
    std::string_view bytes(buffer.get(), kept + *count);
    if (overlong > 0) {
      const std::size_t lineFeed = bytes.find('\n');
      if (lineFeed == std::string_view::npos) {
        overlong += bytes.size();
        kept = 0;
        continue;
      }
      summary_.rowsSkipped += 1;
      summary_.bytesSkipped += overlong + lineFeed + 1;
      overlong = 0;
      bytes.remove_prefix(lineFeed + 1);
      summary_.endOffset = position - bytes.size();
    }
    bytes.remove_prefix(takeLines(bytes));
    summary_.endOffset = position - bytes.size();
    kept = bytes.size();
    if (kept > LongestLine) {
      require(mode_ == Mode::Tolerant, "[line length] <= 65536");
      overlong = kept;
      kept = 0;
    }
    if (kept > 0) std::memmove(buffer.get(), bytes.data(), kept);
  }
  if (kept > 0 && mode_ == Mode::Strict) takeLine({buffer.get(), kept});
  for (std::size_t next = 1; next <= Delay; ++next) addPending(rows_[(current_ + next) % Delay]);
  return {};
}

/// A guess from the bytes alone. Too much is harmless, since memory counts only when it is used; a
/// file may be large and hold no lines.
void LogReader::makeRoom(std::uint64_t bytes) {
  constexpr std::uint64_t ShortLine = 64;
  constexpr std::uint64_t UsualLine = 96;
  constexpr std::uint64_t Most = 1U << 21U;
  summary_.entries.reserve(std::min(bytes / ShortLine, Most));
  store_.expectPaths(std::min(bytes / UsualLine, Most));
}

/// Takes every whole line and returns how many bytes these were.
std::size_t LogReader::takeLines(std::string_view bytes) {
  const char* next = bytes.data();
  const char* const end = next + bytes.size();
  while (next != end) {
    const auto* const lineFeed =
        static_cast<const char*>(std::memchr(next, '\n', static_cast<std::size_t>(end - next)));
    if (lineFeed == nullptr) break;
    takeLine({next, static_cast<std::size_t>(lineFeed + 1 - next)});
    next = lineFeed + 1;
  }
  return static_cast<std::size_t>(next - bytes.data());
}

void LogReader::takeLine(std::string_view line) {
  rowsSkippedInLine_ = 0;
  brokenCondition_ = nullptr;
  const std::size_t parsed = csv_parse(&parser_, line.data(), line.size(), &onField, &onRow, this);
  if (line.back() == '\n') {
    // Whatever is still open now, a quoted field, would swallow the next line: it is cut here.
    csv_fini(&parser_, nullptr, &onOpenRow, this);
  } else {
    csv_fini(&parser_, &onField, &onRow, this);
  }
  if (parsed != line.size()) skipRow("[line] can be parsed");
  startRow();
  if (rowsSkippedInLine_ == 0) return;
  if (mode_ == Mode::Strict && brokenCondition_ != nullptr) refuseLine(line);
  summary_.rowsSkipped += rowsSkippedInLine_;
  summary_.bytesSkipped += line.size();
}

void LogReader::refuseLine(std::string_view line) {
  if (brokenCondition_ == TooFewComponents) {
    // The text names another bound than the condition: kept as is, intended.
    const auto rows = csvLinesWithComponents(line).rows;
    log_.error("components count < 4: is {}", rows.empty() ? CsvRow() : rows.front());
  }
  require(false, brokenCondition_);
}

void LogReader::onField(void* bytes, std::size_t size, void* self) {
  static_cast<LogReader*>(self)->takeField({static_cast<const char*>(bytes), size});
}

void LogReader::onRow(int, void* self) { static_cast<LogReader*>(self)->takeRow(); }

void LogReader::onOpenRow(int, void* self) {
  static_cast<LogReader*>(self)->skipRow("[line] has matching quotes");
}

void LogReader::startRow() {
  fieldCount_ = 0;
  timesAreNumbers_ = true;
}

/// Keeps the path, since libcsv's buffer holds one field at a time. One that is too long becomes
/// empty, which is refused as well.
void LogReader::Row::takePath(std::string_view bytes) {
  const std::size_t size = bytes.size() <= LongestPath ? bytes.size() : 0;
  if (size > 0) std::memcpy(pathBytes.data(), bytes.data(), size);
  fields.path = {pathBytes.data(), size};
}

void LogReader::takeField(std::string_view bytes) {
  Row& row = rows_[current_];
  switch (fieldCount_++) {
    case 0:
      timesAreNumbers_ = parseTime(bytes, row.fields.logTime);
      break;
    case 1:
      timesAreNumbers_ = parseTime(bytes, row.fields.plogTime) && timesAreNumbers_;
      break;
    case 2:
      row.takePath(bytes);
      break;
    case 3:
      timesAreNumbers_ = parseTime(bytes, row.fields.modTime) && timesAreNumbers_;
      break;
    case 4:
      row.puserId.clear();
      if (!bytes.empty()) row.puserId = bytes;
      isCutOff_ = bytes.data() == nullptr;
      break;
    default:
      break;  // the comment, and what a later version may add behind it
  }
}

void LogReader::takeRow() {
  Row& row = rows_[current_];
  if (fieldCount_ < 2) {
    skipRow(nullptr);
  } else if (fieldCount_ < 5 || (fieldCount_ == 5 && isCutOff_)) {
    skipRow(TooFewComponents);
  } else if (!timesAreNumbers_) {
    skipRow("0 <= time < 2^40");
  } else if (!(row.fields.logTime > row.fields.plogTime)) {
    skipRow("aLogTime > aPLogTime");
  } else if (!userIdIsUsable_ || !isUserId(row.puserId)) {
    skipRow("user id can name a log");
  } else if (!isSafeRelativePath(row.fields.path)) {
    ++refusedPaths_;
    skipRow(nullptr);
  } else {
    row.hint = store_.expectPath(row.fields.path);
    row.isPending = true;
    current_ = (current_ + 1) % Delay;
    addPending(rows_[current_]);
  }
  startRow();
}

void LogReader::addPending(Row& row) {
  if (!row.isPending) return;
  row.isPending = false;
  row.fields.puserId = row.puserId;
  summary_.entries.push_back(store_.add(row.fields, row.hint));
}

/// `condition` is none for rows that every reader leaves out quietly.
void LogReader::skipRow(const char* condition) {
  ++rowsSkippedInLine_;
  if (brokenCondition_ == nullptr) brokenCondition_ = condition;
}

}  // namespace zolvar
