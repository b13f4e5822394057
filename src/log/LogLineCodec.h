#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zolvar {

using CsvRow = std::vector<std::string>;

/// The whole text parsed with libcsv's default options. A text that is no UTF-8 gives no rows and
/// `error` "CSV error: data cannot be converted to UTF-8."; a partial parse gives the rows so far
/// and "CSV error: Processed only %u from %u bytes.".
struct CsvParse {
  std::vector<CsvRow> rows;
  std::string error;
};
CsvParse csvLinesWithComponents(std::string_view text);

/// One line without terminator, every field quoted by libcsv's field writer, joined by ",".
std::string csvString(const CsvRow& fields);
/// Each row's csvString and a line feed.
std::string csvStringFromLines(const std::vector<CsvRow>& rows);

/// The self-contained splitter with a free delimiter. An empty quoted field yields a field of one
/// double quote: kept as is, intended.
CsvRow csvComponentsWithDelimiter(std::string_view line, char delimiter);
std::vector<CsvRow> csvLinesWithComponentsWithDelimiter(std::string_view text, char delimiter);
std::vector<std::string> componentsSeparatedByLineSeparators(std::string_view text);
/// Quotes only fields that hold the delimiter or a double quote.
std::string csvStringWithDelimiter(const CsvRow& fields, char delimiter);
std::string csvStringFromLinesWithDelimiter(const std::vector<CsvRow>& rows, char delimiter);

}  // namespace zolvar
