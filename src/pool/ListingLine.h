#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zolvar {

/// One line of the transfer tool's listing, split into its fields:
///
///     -rw-r--r--      1,234,567 2026/11/22 19:33:47 sub/a name
///
/// mode, size with separators, date, time of day, and the rest is the name. The fields are found by
/// the blanks between them, never by column: sizes grow beyond their column. A value; any thread.
struct ListingLine {
  std::string_view mode;  ///< ten characters as a rule; the first one is the kind
  std::uint64_t size = 0;
  std::string_view time;  ///< "2026/11/22 19:33:47", local time, not yet read
  std::string path;       ///< with the tool's escapes undone

  [[nodiscard]] char kind() const { return mode.front(); }
  /// Seconds since 1970 that `time` may mean here: one as a rule; two, ascending, in the hour that
  /// occurs twice when clocks are set back; where no such time exists, the time an hour further.
  /// Times of files and links that are 0 or less count as 1. Empty when the text is no date.
  [[nodiscard]] std::vector<std::int64_t> modTimes() const;
};

/// None for anything that is no such line, and for the line of the listed folder itself (".").
/// The views point into `line`.
[[nodiscard]] std::optional<ListingLine> parseListingLine(std::string_view line);

/// `text` with each "\#ooo" (three octal digits) replaced by its byte: the tool writes characters
/// so that the locale cannot show.
[[nodiscard]] std::string withoutListingEscapes(std::string_view text);

}  // namespace zolvar
