#include "addressbook/VCardReader.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "util/PathRules.h"

namespace zolvar {
namespace {

char upper(char character) {
  return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                              : character;
}

bool isBlank(char character) { return character == ' ' || character == '\t'; }

/// A stretch of the text up to a line end.
struct PhysicalLine {
  std::string_view text;  ///< without the line end
  std::size_t begin = 0;
  std::size_t end = 0;  ///< behind the line end
};

/// Takes a text apart at LF and CR LF; at CR where the text has no LF at all.
class PhysicalLines {
 public:
  explicit PhysicalLines(std::string_view text)
      : text_(text), lineEnd_(text.find('\n') == std::string_view::npos ? '\r' : '\n') {}

  [[nodiscard]] bool isAtEnd() const { return position_ >= text_.size(); }
  [[nodiscard]] PhysicalLine peek() const {
    PhysicalLine line;
    line.begin = position_;
    const std::size_t found = text_.find(lineEnd_, position_);
    line.end = found == std::string_view::npos ? text_.size() : found + 1;
    line.text =
        text_.substr(line.begin, (found == std::string_view::npos ? line.end : found) - line.begin);
    if (line.text.ends_with('\r')) line.text.remove_suffix(1);
    return line;
  }
  PhysicalLine take() {
    const PhysicalLine line = peek();
    position_ = line.end;
    return line;
  }

 private:
  std::string_view text_;
  char lineEnd_;
  std::size_t position_ = 0;
};

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool isMarker(std::string_view line, std::string_view marker) {
  const std::size_t colon = line.find(':');
  return colon != std::string_view::npos && !isBlank(line.front()) &&
         isSameInAnyCase(trimmed(line.substr(0, colon)), marker) &&
         isSameInAnyCase(trimmed(line.substr(colon + 1)), "VCARD");
}

int hexDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  character = upper(character);
  return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

std::string decodeQuotedPrintable(std::string_view text) {
  std::string decoded;
  for (std::size_t index = 0; index < text.size(); ++index) {
    if (text[index] == '=' && index + 2 < text.size()) {
      const int high = hexDigit(text[index + 1]);
      const int low = hexDigit(text[index + 2]);
      if (high >= 0 && low >= 0) {
        decoded += static_cast<char>(high * 16 + low);
        index += 2;
        continue;
      }
    }
    decoded += text[index];
  }
  return decoded;
}

void appendUtf8(std::string& text, unsigned codePoint) {
  if (codePoint < 0x80) {
    text += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    text += static_cast<char>(0xC0U | codePoint >> 6U);
    text += static_cast<char>(0x80U | (codePoint & 0x3FU));
  } else {
    text += static_cast<char>(0xE0U | codePoint >> 12U);
    text += static_cast<char>(0x80U | (codePoint >> 6U & 0x3FU));
    text += static_cast<char>(0x80U | (codePoint & 0x3FU));
  }
}

/// What is no UTF-8 is Western European text of old devices (code page 1252).
std::string asUtf8(std::string text) {
  constexpr std::array<std::uint16_t, 32> From0x80 = {
      0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
  if (isValidUtf8(text)) return text;
  std::string converted;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    appendUtf8(converted, byte >= 0x80 && byte < 0xA0 ? From0x80[byte - 0x80] : byte);
  }
  return converted;
}

/// Undoes the circumflex escapes of parameter values.
std::string parameterText(std::string_view text) {
  std::string plain;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const char next = index + 1 < text.size() ? text[index + 1] : '\0';
    if (text[index] == '^' && (next == 'n' || next == '\'' || next == '^')) {
      plain += next == 'n' ? '\n' : next == '\'' ? '"' : '^';
      ++index;
    } else {
      plain += text[index];
    }
  }
  return plain;
}

/// Cuts what stands before the first of `stops` off `rest`, leaving the stop; a quotation is passed
/// over as a whole, if it ends.
std::string_view takeUntil(std::string_view& rest, std::string_view stops) {
  std::size_t index = 0;
  while (index < rest.size() && stops.find(rest[index]) == std::string_view::npos) {
    if (rest[index] == '"') {
      const std::size_t closing = rest.find('"', index + 1);
      if (closing != std::string_view::npos) index = closing;
    }
    ++index;
  }
  const std::string_view taken = rest.substr(0, index);
  rest.remove_prefix(index);
  return taken;
}

std::string_view unquoted(std::string_view text) {
  text = trimmed(text);
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
    return text.substr(1, text.size() - 2);
  }
  return text;
}

std::string nameOfBareParameter(std::string_view value) {
  for (const std::string_view encoding : {"QUOTED-PRINTABLE", "BASE64", "7BIT", "8BIT"}) {
    if (isSameInAnyCase(value, encoding)) return "ENCODING";
  }
  for (const std::string_view place : {"INLINE", "URL", "CONTENT-ID", "CID"}) {
    if (isSameInAnyCase(value, place)) return "VALUE";
  }
  return "TYPE";
}

void addParameter(VCardLine& line, std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) {
    text = trimmed(text);
    if (!text.empty()) line.parameters.push_back({nameOfBareParameter(text), std::string(text)});
    return;
  }
  const std::string name = upperCase(trimmed(text.substr(0, equals)));
  std::string_view rest = text.substr(equals + 1);
  if (name != "TYPE") {
    line.parameters.push_back({name, parameterText(unquoted(rest))});
    return;
  }
  std::string types;  // TYPE="work,voice" means the same as TYPE=work,voice
  std::copy_if(rest.begin(), rest.end(), std::back_inserter(types),
               [](char character) { return character != '"'; });
  for (std::string_view left = types; !left.empty();) {
    const std::string_view type = trimmed(left.substr(0, left.find(',')));
    left.remove_prefix(
        std::min(left.size(), left.find(',') == left.npos ? left.size() : left.find(',') + 1));
    if (!type.empty()) line.parameters.push_back({name, std::string(type)});
  }
}

/// Reads "group.NAME;parameters:"; what is left is the value. False when it is no property.
bool readHead(std::string_view& rest, VCardLine& line) {
  std::string_view name = trimmed(takeUntil(rest, ";:"));
  if (rest.empty()) return false;
  if (const std::size_t dot = name.rfind('.'); dot != std::string_view::npos) {
    line.group = name.substr(0, dot);
    name.remove_prefix(dot + 1);
  }
  if (name.empty()) return false;
  line.name = upperCase(name);
  while (rest.starts_with(';')) {
    rest.remove_prefix(1);
    addParameter(line, takeUntil(rest, ";:"));
    if (rest.empty()) return false;
  }
  rest.remove_prefix(1);
  return true;
}

bool isBase64Only(std::string_view text) {
  return !text.empty() && text.find_first_not_of(
                              "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="
                              " \t") == std::string_view::npos;
}

constexpr std::size_t LongestHead = 256;  // looked at, lest long ones cost a look for each line

/// Whether the line ends in the sign by which quoted-printable text goes on in the next line.
bool endsSoftly(std::string_view line) {
  if (!line.ends_with('=')) return false;
  const std::string_view head = line.substr(0, LongestHead);
  return upperCase(head.substr(0, head.find(':'))).find("QUOTED-PRINTABLE") != std::string::npos;
}

/// Takes one property with its continuation lines.
VCardLine takeProperty(PhysicalLines& lines) {
  const PhysicalLine first = lines.take();
  VCardLine line;
  line.begin = first.begin;
  line.end = first.end;
  std::string whole(first.text);
  const auto takeContinuation = [&](std::size_t blanks) {
    const PhysicalLine next = lines.take();
    whole += next.text.substr(blanks);
    line.end = next.end;
  };
  const bool isFrame = isMarker(first.text, "BEGIN") || isMarker(first.text, "END");
  bool mayEndSoftly = true;
  const auto takeFolded = [&] {
    while (!isFrame && !lines.isAtEnd()) {
      const std::string_view next = lines.peek().text;
      if (next.empty() || !isBlank(next.front()) || (mayEndSoftly && endsSoftly(whole))) break;
      takeContinuation(1);
    }
  };
  takeFolded();
  std::string_view rest = whole;
  if (!readHead(rest, line)) return line;
  const std::size_t head = whole.size() - rest.size();
  const std::string_view encoding = line.parameter("ENCODING");
  line.isBase64 = isSameInAnyCase(encoding, "B") || isSameInAnyCase(encoding, "BASE64");
  mayEndSoftly = isSameInAnyCase(encoding, "QUOTED-PRINTABLE");
  takeFolded();  // where the head only looked like it
  // Whatever is not folded as it should be is taken along: it belongs to nothing else.
  if (mayEndSoftly) {
    while (whole.size() > head && whole.back() == '=' && !lines.isAtEnd() &&
           !isMarker(lines.peek().text, "END") && !isMarker(lines.peek().text, "BEGIN")) {
      whole.pop_back();
      takeContinuation(0);
      takeFolded();
    }
    line.value = asUtf8(decodeQuotedPrintable(std::string_view(whole).substr(head)));
  } else if (line.isBase64) {
    while (!lines.isAtEnd() && isBase64Only(lines.peek().text)) {
      takeContinuation(0);
      takeFolded();
    }
    if (!lines.isAtEnd() && lines.peek().text.empty()) takeContinuation(0);  // their end in 2.1
    takeFolded();
    line.value = asUtf8(whole.substr(head));  // it may be text for all it says
  } else {
    line.value = asUtf8(whole.substr(head));
  }
  return line;
}

}  // namespace

bool isSameInAnyCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char one, char other) { return upper(one) == upper(other); });
}

std::string upperCase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), upper);
  return result;
}

bool VCardLine::hasType(std::string_view type) const {
  return std::any_of(parameters.begin(), parameters.end(), [&](const Parameter& parameter) {
    return parameter.name == "TYPE" && isSameInAnyCase(parameter.value, type);
  });
}

std::string_view VCardLine::parameter(std::string_view wanted) const {
  const auto found =
      std::find_if(parameters.begin(), parameters.end(),
                   [&](const Parameter& parameter) { return parameter.name == wanted; });
  return found == parameters.end() ? std::string_view() : found->value;
}

std::vector<std::string_view> cardsIn(std::string_view text) {
  std::vector<std::string_view> cards;
  PhysicalLines lines(text);
  std::size_t depth = 0;
  std::size_t begin = 0;
  while (!lines.isAtEnd()) {
    PhysicalLine line = lines.take();
    if (line.begin == 0 && line.text.starts_with("\xEF\xBB\xBF")) {
      line.text.remove_prefix(3);
      line.begin += 3;
    }
    if (isMarker(line.text, "BEGIN")) {
      if (depth++ == 0) begin = line.begin;
    } else if (depth > 0 && isMarker(line.text, "END") && --depth == 0) {
      cards.push_back(text.substr(begin, line.end - begin));
    }
  }
  return cards;
}

std::vector<VCardLine> linesOfCard(std::string_view card) {
  std::vector<VCardLine> found;
  PhysicalLines lines(card);
  std::size_t depth = 0;
  while (!lines.isAtEnd()) {
    const PhysicalLine next = lines.peek();
    const bool begins = isMarker(next.text, "BEGIN");
    const bool ends = depth > 0 && isMarker(next.text, "END");
    if (begins) ++depth;
    if (depth > 1 || next.text.empty() || isBlank(next.text.front())) {
      lines.take();  // what goes on from nothing is no property
    } else {
      VCardLine line = takeProperty(lines);
      if (!line.name.empty()) found.push_back(std::move(line));
    }
    if (ends) --depth;
  }
  return found;
}

std::string unescapedValue(std::string_view value) {
  std::string text;
  for (std::size_t index = 0; index < value.size(); ++index) {
    if (value[index] == '\\' && index + 1 < value.size()) {
      const char next = value[++index];
      text += next == 'n' || next == 'N' ? '\n' : next;
    } else {
      text += value[index];
    }
  }
  return text;
}

std::vector<std::string_view> rawPartsOfValue(std::string_view value, char separator) {
  std::vector<std::string_view> parts;
  std::size_t begin = 0;
  for (std::size_t index = 0; index < value.size(); ++index) {
    if (value[index] == '\\') {
      if (++index == value.size()) value.remove_suffix(1);  // it escapes nothing
    } else if (value[index] == separator) {
      parts.push_back(value.substr(begin, index - begin));
      begin = index + 1;
    }
  }
  parts.push_back(value.substr(begin));
  return parts;
}

std::vector<std::string> partsOfValue(std::string_view value, char separator) {
  std::vector<std::string> parts;
  for (const auto part : rawPartsOfValue(value, separator)) parts.push_back(unescapedValue(part));
  return parts;
}

std::string escapedValue(std::string_view text) {
  std::string value;
  for (const char character : text) {
    if (character == '\n') {
      value += "\\n";
      continue;
    }
    if (character == '\\' || character == ',' || character == ';') value += '\\';
    if (character != '\r' && character != '\0') value += character;
  }
  return value;
}

std::string decodeBase64(std::string_view text) {
  constexpr std::string_view Digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<signed char, 256> values{};
  values.fill(-1);
  for (std::size_t index = 0; index < Digits.size(); ++index) {
    values[static_cast<unsigned char>(Digits[index])] = static_cast<signed char>(index);
  }
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t bits = 0;
  int count = 0;
  for (const char character : text) {
    if (isBlank(character) || character == '\r' || character == '\n') continue;
    if (character == '=') break;
    const signed char value = values[static_cast<unsigned char>(character)];
    if (value < 0) return {};
    bits = bits << 6U | static_cast<std::uint32_t>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes += static_cast<char>(bits >> static_cast<unsigned>(count) & 0xFFU);
    }
  }
  return bytes;
}

}  // namespace zolvar
