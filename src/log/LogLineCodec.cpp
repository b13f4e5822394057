#include "log/LogLineCodec.h"

#include <csv.h>
#include <fmt/format.h>

#include <limits>
#include <memory>

#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

struct ParserFree {
  void operator()(csv_parser* parser) const { csv_free(parser); }
};

struct Collected {
  std::vector<CsvRow> rows;
  CsvRow row;
};

void endField(void* bytes, std::size_t size, void* data) {
  static_cast<Collected*>(data)->row.emplace_back(static_cast<const char*>(bytes), size);
}

void endRow(int, void* data) {
  auto& collected = *static_cast<Collected*>(data);
  collected.rows.push_back(std::move(collected.row));
  collected.row.clear();
}

void appendQuoted(std::string& line, const std::string& field) {
  if (!isValidUtf8(field)) {
    throw InconsistencyError(
        fmt::format("CSV error: Could not encode component {} in UTF-8.", field));
  }
  const std::size_t size = csv_write(nullptr, 0, field.data(), field.size());
  if (size == std::numeric_limits<std::size_t>::max()) {
    throw InconsistencyError(
        fmt::format("CSV error: Could not write component {} because it's too big.", field));
  }
  const std::size_t start = line.size();
  line.resize(start + size);
  if (csv_write(line.data() + start, size, field.data(), field.size()) != size) {
    // The missing "not" is part of the known text.
    throw InconsistencyError(
        fmt::format("CSV error: Could process all bytes for component {}.", field));
  }
}

/// Length of the line terminator at `index`: LF, CR, CR LF, NEL, and Unicode's line and paragraph
/// separators; 0 when there is none.
std::size_t terminatorLength(std::string_view text, std::size_t index) {
  const std::string_view rest = text.substr(index);
  for (const std::string_view terminator :
       {"\r\n", "\n", "\r", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"}) {
    if (rest.starts_with(terminator)) return terminator.size();
  }
  return 0;
}

}  // namespace

CsvParse csvLinesWithComponents(std::string_view text) {
  csv_parser parser;
  if (csv_init(&parser, 0) != 0) {
    throw InconsistencyError("CSV error: Couldn't initialize CSV parser.");
  }
  const std::unique_ptr<csv_parser, ParserFree> freed(&parser);
  CsvParse parse;
  if (!isValidUtf8(text)) {
    parse.error = "CSV error: data cannot be converted to UTF-8.";
    return parse;
  }
  Collected collected;
  const std::size_t parsed =
      csv_parse(&parser, text.data(), text.size(), &endField, &endRow, &collected);
  if (parsed == text.size()) {
    csv_fini(&parser, &endField, &endRow, &collected);
  } else {
    parse.error = fmt::format("CSV error: Processed only {} from {} bytes.", parsed, text.size());
  }
  parse.rows = std::move(collected.rows);
  return parse;
}

std::string csvString(const CsvRow& fields) {
  std::string line;
  for (const std::string& field : fields) {
    if (!line.empty()) line += ',';  // every field has at least its two quotes
    appendQuoted(line, field);
  }
  return line;
}

std::string csvStringFromLines(const std::vector<CsvRow>& rows) {
  std::string text;
  for (const CsvRow& row : rows) text += csvString(row) + '\n';
  return text;
}

CsvRow csvComponentsWithDelimiter(std::string_view line, char delimiter) {
  if (line.empty()) return {};
  CsvRow fields(1);
  bool isQuoted = false;
  for (std::size_t index = 0; index < line.size(); ++index) {
    if (line[index] == '"') {
      isQuoted = !isQuoted;
      if (index + 1 < line.size() && line[index + 1] == '"') {
        fields.back() += '"';
        isQuoted = !isQuoted;
        ++index;
      }
    } else if (line[index] == delimiter && !isQuoted) {
      fields.emplace_back();
    } else {
      fields.back() += line[index];
    }
  }
  return fields;
}

std::vector<CsvRow> csvLinesWithComponentsWithDelimiter(std::string_view text, char delimiter) {
  std::vector<CsvRow> rows;
  for (const std::string& line : componentsSeparatedByLineSeparators(text)) {
    if (!line.empty()) rows.push_back(csvComponentsWithDelimiter(line, delimiter));
  }
  return rows;
}

std::vector<std::string> componentsSeparatedByLineSeparators(std::string_view text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t index = 0; index < text.size();) {
    const std::size_t length = terminatorLength(text, index);
    if (length == 0) {
      ++index;
      continue;
    }
    lines.emplace_back(text.substr(start, index - start));
    start = index += length;
  }
  if (start < text.size()) lines.emplace_back(text.substr(start));
  return lines;
}

std::string csvStringWithDelimiter(const CsvRow& fields, char delimiter) {
  std::string line;
  for (std::size_t index = 0; index < fields.size(); ++index) {
    const std::string& field = fields[index];
    if (index > 0) line += delimiter;
    if (field.find(delimiter) == std::string::npos && field.find('"') == std::string::npos) {
      line += field;
      continue;
    }
    line += '"';
    for (const char character : field) line.append(character == '"' ? 2 : 1, character);
    line += '"';
  }
  return line;
}

std::string csvStringFromLinesWithDelimiter(const std::vector<CsvRow>& rows, char delimiter) {
  std::string text;
  for (const CsvRow& row : rows) text += csvStringWithDelimiter(row, delimiter) + '\n';
  return text;
}

}  // namespace zolvar
