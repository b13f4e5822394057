#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zolvar {

// Reads vCards 2.1, 3.0 and 4.0 as other programs and devices write them, mistakes included: what
// cannot be understood is passed over and nothing fails. Any thread; time linear in the text.

/// One property of a card, understood as far as all properties are written alike.
struct VCardLine {
  struct Parameter {
    std::string name;   ///< upper case; what 2.1 writes without a name is a TYPE or an ENCODING
    std::string value;  ///< "a,b" of TYPE are two parameters
  };

  std::size_t begin = 0;  ///< in the text it was read from
  std::size_t end = 0;    ///< behind its last line end; folded lines are one property
  std::string group;      ///< "item1" of "item1.TEL", as written
  std::string name;       ///< upper case
  std::vector<Parameter> parameters;
  /// Unfolded, without its transfer encoding and in UTF-8; backslashes still stand in it, since
  /// only who knows the property knows what its separators are. Base64 is left to decodeBase64().
  std::string value;
  bool isBase64 = false;

  /// Whether the line has TYPE=type, in any case.
  [[nodiscard]] bool hasType(std::string_view type) const;
  /// The first value of a parameter; "" without it.
  [[nodiscard]] std::string_view parameter(std::string_view name) const;
};

/// The cards in a text, each from its BEGIN:VCARD to its END:VCARD with the line end; one that is
/// not ended is none. A card within a card (an AGENT of 2.1) belongs to the outer one.
std::vector<std::string_view> cardsIn(std::string_view text);

/// The properties of one card in their order, BEGIN, VERSION and END included; none of a card
/// within it.
std::vector<VCardLine> linesOfCard(std::string_view card);

/// Splits a value at the separators that no backslash stands before. A value without separators,
/// and an empty one, is one part. A backslash at the very end is left out.
std::vector<std::string_view> rawPartsOfValue(std::string_view value, char separator);
/// The same, unescaped.
std::vector<std::string> partsOfValue(std::string_view value, char separator);
/// "\n" and "\N" are a line feed, any other escaped character is itself.
std::string unescapedValue(std::string_view value);
/// The opposite: backslash, comma, semicolon and line feed, as 3.0 and 4.0 want it.
std::string escapedValue(std::string_view text);

/// The bytes; blanks and line ends are passed over. Empty when the text is no Base64.
std::string decodeBase64(std::string_view text);

/// Whether two ASCII texts differ only in case.
bool isSameInAnyCase(std::string_view left, std::string_view right);
std::string upperCase(std::string_view text);

}  // namespace zolvar
