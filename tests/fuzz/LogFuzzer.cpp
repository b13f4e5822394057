// A change log as a peer may send it, and, where the input has a line "---", two copies of one log
// to be united: what is before that line and what is behind it.

#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz/Fuzz.h"
#include "log/LogLineCodec.h"
#include "log/LogReader.h"
#include "pool/LogUnion.h"
#include "support/SimulatedFileSystem.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar::fuzz {
namespace {

constexpr const char* Author = "bob@beta.local";
constexpr std::string_view Separator = "---\n";
constexpr const char* GoodLine = "\"1700000001\",\"0\",\"a good line\",\"1700000000\",\"\",\"\"\n";

/// Gives at most `piece` bytes a call.
Folder::Reader readerOf(std::string_view bytes, std::size_t piece) {
  return [bytes, piece](char* buffer, std::size_t size) mutable -> Result<std::size_t> {
    const std::size_t count = std::min({bytes.size(), size, piece});
    if (count > 0) std::memcpy(buffer, bytes.data(), count);
    bytes.remove_prefix(count);
    return count;
  };
}

struct Reading {
  std::vector<CsvRow> rows;
  std::uint64_t end = 0;
  std::uint64_t skipped = 0;

  bool operator==(const Reading&) const = default;
};

Reading read(KDEntryStore& store, std::string_view bytes, std::size_t piece,
             std::uint64_t offset = 0, LogReader::Mode mode = LogReader::Mode::Tolerant) {
  SilentLog log;
  LogReader reader(store, Author, mode, log);
  expect(reader.readAll(readerOf(bytes, piece), offset, offset + bytes.size()).has_value(),
         "memory can be read");
  Reading reading{{}, reader.summary().endOffset, reader.summary().rowsSkipped};
  for (const KDLogFileEntry* entry : reader.summary().entries) {
    expect(isSafeRelativePath(entry->path()), "no refused path passes");
    expect(entry->path().find_first_of(std::string_view("\n\r\0", 3)) == std::string_view::npos,
           "no path holds a line end");
    for (const double time : {entry->logTime(), entry->plogTime(), entry->modTime()}) {
      expect(time >= 0 && time < KDEntryStore::TimesEnd, "times are in their range");
    }
    expect(entry->logTime() > entry->plogTime(), "a version is younger than its parent");
    expect(entry->userId() == Author, "the author is the log's");
    expect(isValidUtf8(entry->puserId()) && entry->puserId().size() <= LongestComponent,
           "the parent's author can name a log");
    const auto fields = entry->components();
    reading.rows.emplace_back(fields.begin(), fields.end());
  }
  return reading;
}

void checkReading(std::string_view bytes) {
  KDEntryStore store;  // one for all, since making one takes time
  const Reading whole = read(store, bytes, SIZE_MAX);
  const std::size_t lastLineFeed = bytes.rfind('\n');
  const std::size_t end = lastLineFeed == std::string_view::npos ? 0 : lastLineFeed + 1;
  expect(whole.end == end, "reading ends behind the last whole line");
  expect(read(store, bytes, 1 + bytes.size() % 7) == whole, "pieces make no difference");

  // In two goes, from a line start on, as after an interrupted sync.
  const std::size_t middle = bytes.find('\n', bytes.size() / 2);
  if (middle != std::string_view::npos) {
    Reading both = read(store, bytes.substr(0, middle + 1), SIZE_MAX);
    const Reading second = read(store, bytes.substr(middle + 1), SIZE_MAX, middle + 1);
    both.rows.insert(both.rows.end(), second.rows.begin(), second.rows.end());
    both.skipped += second.skipped;
    both.end = second.end;
    expect(both == whole, "two goes read what one reads");
  }

  std::string more(bytes);
  if (!more.empty() && more.back() != '\n') more += '\n';
  const Reading extended = read(store, more + GoodLine, SIZE_MAX);
  expect(!extended.rows.empty() && extended.rows.back()[2] == "a good line",
         "no damage swallows the next line");

  try {
    const Reading strict = read(store, bytes.substr(0, end), SIZE_MAX, 0, LogReader::Mode::Strict);
    expect(strict.rows == whole.rows, "strict and tolerant reading agree on a sound log");
  } catch (const InconsistencyError&) {
    expect(whole.skipped > 0, "what the strict reading refuses is counted by the tolerant one");
  }

  const std::string written = csvStringFromLines(whole.rows);
  const Reading again = read(store, written, SIZE_MAX, 0, LogReader::Mode::Strict);
  expect(again.rows == whole.rows && again.skipped == 0, "what is written is read again");
}

void checkCodec(std::string_view text) {
  const CsvParse parse = csvLinesWithComponents(text);
  if (parse.error.empty()) {
    const CsvParse again = csvLinesWithComponents(csvStringFromLines(parse.rows));
    expect(again.error.empty() && again.rows == parse.rows, "rows survive writing and parsing");
  }
  for (const char delimiter : {',', ';', '\t'}) {
    csvStringFromLinesWithDelimiter(csvLinesWithComponentsWithDelimiter(text, delimiter),
                                    delimiter);
  }
}

/// Two copies of a log in a folder of their own.
class Copies {
 public:
  Copies() {
    expect(files_.makeFolder("/logs").has_value(), "a folder can be made");
    folder_ = std::move(files_.open("/logs").value());
  }

  std::string united(std::string_view older, std::string_view newer) {
    std::string bytes;
    const LogUnion::Writer append = [&bytes](std::string_view piece) -> Result<> {
      bytes += piece;
      return {};
    };
    LogUnion logUnion;
    read(logUnion, older, newer);
    expect(logUnion.write(append).has_value(), "a union can be written");
    return bytes;
  }
  bool contains(std::string_view newer, std::string_view older) {
    LogUnion logUnion;
    read(logUnion, older, newer);
    return logUnion.relation() == LogUnion::Relation::NewHasAll;
  }

 private:
  void read(LogUnion& logUnion, std::string_view older, std::string_view newer) {
    files_.write("/logs/older", std::string(older));
    files_.write("/logs/newer", std::string(newer));
    expect(logUnion.read(*folder_, "older", "newer").has_value(), "both copies can be read");
  }

  SimulatedClock clock_{1'750'000'000};
  SimulatedRunLoop loop_{clock_};
  SimulatedFileSystem files_{clock_, loop_};
  std::unique_ptr<Folder> folder_;
};

void checkUnion(std::string_view older, std::string_view newer) {
  static Copies copies;
  const std::string all = copies.united(older, newer);
  expect(all.empty() || all.back() == '\n', "a union ends with a whole line");
  expect(copies.contains(all, older), "a union has all of the older copy");
  expect(copies.contains(all, newer), "a union has all of the newer copy");
}

}  // namespace
}  // namespace zolvar::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zolvar::fuzz;
  const std::string_view bytes = textOf(data, size);
  checkReading(bytes);
  checkCodec(bytes);
  const std::size_t middle = bytes.find(Separator);
  if (middle != std::string_view::npos) {
    checkUnion(bytes.substr(0, middle), bytes.substr(middle + Separator.size()));
  }
  return 0;
}
