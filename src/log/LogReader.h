#pragma once

#include <csv.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "log/KDEntryStore.h"
#include "log/KDLogFile.h"
#include "platform/FileSystem.h"
#include "util/Failure.h"
#include "util/PathRules.h"

namespace zolvar {

/// Turns the bytes of one user's log into entries of a store: one read of one log. Lines go to
/// libcsv one by one, so that a line whose quotes do not match ends with its line feed. A row
/// allocates nothing but its entry. Caller synchronises; the store must outlive it.
class LogReader {
 public:
  enum class Mode {
    Strict,   ///< our own log: a malformed row throws; a last line without line feed counts
    Tolerant  ///< a stranger's: a malformed row is counted; a last line without line feed waits
  };
  /// A longer line is damage: every line that Zolvar writes is far shorter.
  static constexpr std::size_t LongestLine = 64U << 10U;
  static constexpr std::size_t PieceSize = 256U << 10U;

  LogReader(KDEntryStore& store, std::string_view userId, Mode mode, Log& log);
  ~LogReader();
  LogReader(const LogReader&) = delete;
  LogReader& operator=(const LogReader&) = delete;

  /// Reads to the end; `offset` is where `reader` stands, `size` the file's size as far as it is
  /// known (room is reserved by it). Called once. Fails as the reader does. Strict mode throws
  /// InconsistencyError at a malformed row.
  Result<> readAll(const Folder::Reader& reader, std::uint64_t offset, std::uint64_t size);

  [[nodiscard]] LogReadSummary& summary() { return summary_; }
  /// Rows whose path may name nothing inside a pool's folder; they are among summary().rowsSkipped.
  [[nodiscard]] std::uint64_t refusedPaths() const { return refusedPaths_; }

 private:
  static void onField(void* bytes, std::size_t size, void* self);
  static void onRow(int terminator, void* self);
  static void onOpenRow(int terminator, void* self);
  void makeRoom(std::uint64_t bytes);
  void startRow();
  void takeField(std::string_view bytes);
  void takeRow();
  void skipRow(const char* condition);
  void takeLine(std::string_view line);
  void refuseLine(std::string_view line);
  [[nodiscard]] std::size_t takeLines(std::string_view bytes);

  KDEntryStore& store_;
  Log& log_;
  Mode mode_;
  bool userIdIsUsable_;
  csv_parser parser_;
  LogReadSummary summary_;
  std::uint64_t refusedPaths_ = 0;

  /// A row on its way into the store.
  struct Row {
    KDEntryFields fields;
    std::array<char, LongestPath> pathBytes;  ///< what fields.path views into
    std::string puserId;
    KDEntryStore::PathHint hint{};
    bool isPending = false;

    void takePath(std::string_view bytes);
  };
  /// Accepted rows wait until so many more were read: time enough for the memory that the store
  /// will look at to arrive.
  static constexpr std::size_t Delay = 4;
  void addPending(Row& row);

  std::array<Row, Delay> rows_;
  std::size_t current_ = 0;  ///< the row in progress; the oldest pending one follows
  unsigned fieldCount_ = 0;
  bool timesAreNumbers_ = true;
  /// The fifth field has not even its quotes: when it is the last one, a write ended before it.
  bool isCutOff_ = false;
  // The line in progress.
  unsigned rowsSkippedInLine_ = 0;
  const char* brokenCondition_ = nullptr;  ///< of the first malformed row
};

}  // namespace zolvar
