#include <gtest/gtest.h>

#include "log/LogLineCodec.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

using Rows = std::vector<CsvRow>;

TEST(LogLineCodec, quotesEveryFieldAndBringsItBack) {
  const Rows rows = {{"1", "", "a, \"b\""}, {"\"", " blank ", "line\nfeed", "Zoë"}, {""}};
  EXPECT_EQ(csvString(rows[0]), "\"1\",\"\",\"a, \"\"b\"\"\"");
  EXPECT_EQ(csvString({}), "");
  const CsvParse parse = csvLinesWithComponents(csvStringFromLines(rows));
  EXPECT_EQ(parse.rows, rows);
  EXPECT_EQ(parse.error, "");
  try {
    (void)csvString({"a\xFF"});
    FAIL();
  } catch (const InconsistencyError& error) {
    EXPECT_STREQ(error.what(), "CSV error: Could not encode component a\xFF in UTF-8.");
  }
}

TEST(LogLineCodec, parsesAsTheLibraryDoes) {
  EXPECT_EQ(csvLinesWithComponents("").rows, Rows());
  EXPECT_EQ(csvLinesWithComponents("a, b ,\"c \"\n\n\r\nlast,row").rows,
            (Rows{{"a", "b", "c "}, {"last", "row"}}));
  EXPECT_EQ(csvLinesWithComponents("\"open\nquote").rows, (Rows{{"open\nquote"}}));
  const CsvParse bad = csvLinesWithComponents("a,\xFF\n");
  EXPECT_EQ(bad.rows, Rows());
  EXPECT_EQ(bad.error, "CSV error: data cannot be converted to UTF-8.");
}

TEST(LogLineCodec, splitsByItselfWithItsQuirks) {
  const struct {
    const char* line;
    CsvRow fields;
  } cases[] = {
      {"", {}},
      {"a", {"a"}},
      {"a;b;", {"a", "b", ""}},
      {";", {"", ""}},
      {"\"a;b\";c", {"a;b", "c"}},
      {"\"say \"\"hi\"\"\";x", {"say \"hi\"", "x"}},
      {"\"\"", {"\""}},  // an empty quoted field yields one quote
      {"a;\"\";b", {"a", "\"", "b"}},
      {"\"\"\"\"", {"\"\""}},  // and so does each further pair
      {"\"open;end", {"open;end"}},
      {"in\"si;de\"x;y", {"insi;dex", "y"}},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(csvComponentsWithDelimiter(row.line, ';'), row.fields) << row.line;
  }
  EXPECT_EQ(csvLinesWithComponentsWithDelimiter("a\tb\r\n\n\nc\t\"d\te\"", '\t'),
            (Rows{{"a", "b"}, {"c", "d\te"}}));
}

TEST(LogLineCodec, knowsEveryLineTerminator) {
  EXPECT_EQ(componentsSeparatedByLineSeparators("a\nb\rc\r\nd\n\re\xE2\x80\xA8"
                                                "f\xE2\x80\xA9g\xC2\x85h"),
            (std::vector<std::string>{"a", "b", "c", "d", "", "e", "f", "g", "h"}));
  EXPECT_EQ(componentsSeparatedByLineSeparators(""), std::vector<std::string>());
  EXPECT_EQ(componentsSeparatedByLineSeparators("a\n"), std::vector<std::string>{"a"});
}

TEST(LogLineCodec, quotesByItselfOnlyWhatNeedsIt) {
  EXPECT_EQ(csvStringWithDelimiter({}, ','), "");
  EXPECT_EQ(csvStringWithDelimiter({"a b", "c,d", "e\"f", "", "two\nlines"}, ','),
            "a b,\"c,d\",\"e\"\"f\",,two\nlines");
  EXPECT_EQ(csvStringFromLinesWithDelimiter({{"a", "b,c"}, {"d;e"}}, ';'), "a;b,c\n\"d;e\"\n");
}

}  // namespace
}  // namespace zolvar
