#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdlib>

#include "util/PropertyList.h"

namespace zolvar {
namespace {

using Strings = std::vector<std::string>;

std::string inXml(const std::string& body) {
  return "<?xml version=\"1.0\"?>\n<plist version=\"1.0\">" + body + "</plist>";
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int index = 0; index < count; ++index) all += text;
  return all;
}

std::string binary(const Strings& strings) {
  plist_t array = plist_new_array();
  for (const std::string& string : strings) {
    plist_array_append_item(array, plist_new_string(string.c_str()));
  }
  char* bytes = nullptr;
  std::uint32_t length = 0;
  plist_to_bin(array, &bytes, &length);
  std::string all(bytes, length);
  std::free(bytes);
  plist_free(array);
  return all;
}

/// A binary property list of `objects`, the first one its root; offsets and references take a byte.
std::string rawBinary(const Strings& objects) {
  std::string bytes = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += static_cast<char>(bytes.size());
    bytes += object;
  }
  const std::size_t table = bytes.size();
  const auto number = [](std::size_t value) {
    return std::string(7, '\0') + static_cast<char>(value);
  };
  return bytes + offsets + std::string(6, '\0') + "\1\1" + number(objects.size()) + number(0) +
         number(table);
}

TEST(PropertyList, bringsBackWhatItWrote) {
  const Strings strings = {"a/b.txt",   "",   " outer blanks ", "tab\tand\x01",
                           "<&>\"']]>", "Ä😀", "&amp;",          "<!-- no comment -->"};
  EXPECT_EQ(stringsFromPropertyList(propertyListFromStrings(strings)).value(), strings);
  EXPECT_EQ(stringsFromPropertyList(propertyListFromStrings({})).value(), Strings());
  EXPECT_EQ(stringsFromPropertyList(binary(strings)).value(), strings);
}

TEST(PropertyList, leavesOutWhatIsNoString) {
  const std::string members =
      "<date>2026-01-01T00:00:00Z</date><string>x</string><integer>3</integer><true/>"
      "<array><string>inner</string></array><dict><key>k</key><data>AAAA</data></dict>";
  EXPECT_EQ(stringsFromPropertyList(inXml("<array>" + members + "</array>")).value(), Strings{"x"});
}

TEST(PropertyList, refusesWhatIsDamagedOrOutOfBounds) {
  const std::pair<const char*, std::string> cases[] = {
      {"empty", ""},
      {"rubbish", "rubbish"},
      {"no array", inXml("<dict><key>a</key><string>b</string></dict>")},
      {"a string alone", inXml("<string>a</string>")},
      {"very deep", inXml(repeated("<array>", 200000) + repeated("</array>", 200000))},
      {"very deep and cut off", inXml(repeated("<dict><key>k</key>", 200000))},
      {"deep with closing brackets in comments", inXml(repeated("<array><!--</array>-->", 200000))},
      {"deep with closing brackets in attributes",
       inXml(repeated("<array a=\"</array>\">", 200000))},
      {"binary, cut off", "bplist00"},
      {"binary that contains itself", rawBinary({"\xA1" + std::string(1, '\0')})},
      {"binary, reference to nowhere", rawBinary({"\xA1\x09"})},
      {"binary, longer than the file", rawBinary({"\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})},
  };
  for (const auto& [what, bytes] : cases) {
    const auto strings = stringsFromPropertyList(bytes);
    ASSERT_FALSE(strings) << what;
    EXPECT_EQ(strings.error().kind, FailureKind::Damaged) << what;
  }
  const std::string fine = propertyListFromStrings({"a"});
  EXPECT_FALSE(stringsFromPropertyList(fine, {fine.size() - 1, 16}));
  EXPECT_TRUE(stringsFromPropertyList(fine, {fine.size(), 1}));
  EXPECT_FALSE(stringsFromPropertyList(inXml("<array><array/><array></array></array>"), {1000, 1}));
}

TEST(PropertyList, refusesAFewBytesThatStandForBillionsOfObjects) {
  Strings objects;
  for (char next = 1; next < 14; ++next) objects.push_back("\xA9" + std::string(9, next));
  objects.push_back("\x51x");
  EXPECT_FALSE(stringsFromPropertyList(rawBinary(objects), {1000, 64}));
}

TEST(PropertyList, survivesEveryTruncation) {
  for (const std::string& whole :
       {propertyListFromStrings({"one", "two"}), binary({"one", "two"})}) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
      const auto strings = stringsFromPropertyList(whole.substr(0, length));
      EXPECT_TRUE(!strings || *strings == (Strings{"one", "two"})) << length;
    }
  }
}

}  // namespace
}  // namespace zolvar
