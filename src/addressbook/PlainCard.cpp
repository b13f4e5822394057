#include "addressbook/PlainCard.h"

#include <algorithm>

#include "addressbook/VCardReader.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

bool isPlain(const VCardLine& line, std::string_view raw) {
  const std::string_view head = raw.substr(0, raw.find(':'));
  return !line.isBase64 && isValidUtf8(raw) && head.find('"') == std::string_view::npos &&
         raw.find('\0') == std::string_view::npos;
}

std::string parameterText(const VCardLine::Parameter& parameter) {
  std::string text;
  bool isQuoted = false;
  for (const char character : parameter.value) {
    isQuoted = isQuoted || character == ':' || character == ';' || character == ',';
    if (character == '\n' || character == '"' || character == '^') {
      text += '^';
      text += character == '\n' ? 'n' : character == '"' ? '\'' : '^';
    } else {
      text += character;
    }
  }
  const std::string_view quote = isQuoted ? "\"" : "";
  return ";" + parameter.name + "=" + std::string(quote) + text + std::string(quote);
}

/// Others could not be read again as what they are, and nobody understands them.
bool isWord(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == '-' || character == '_';
  });
}

std::string written(const VCardLine& line) {
  std::string text = (line.group.empty() ? "" : line.group + ".") + line.name;
  for (const auto& parameter : line.parameters) {
    if (parameter.name == "ENCODING" || parameter.name == "CHARSET") continue;
    if (!isWord(parameter.name)) continue;
    text += parameterText(parameter);
  }
  text += line.isBase64 ? ";ENCODING=b:" : ":";
  for (const char character : line.value) {
    const bool isBlank = character == ' ' || character == '\t';
    if (character == '\r' || character == '\0' || (line.isBase64 && isBlank)) continue;
    text += character == '\n' ? "\\n" : std::string(1, character);
  }
  return text + "\r\n";
}

}  // namespace

std::string plainCard(std::string_view card) {
  const auto lines = linesOfCard(card);
  const bool isOld = std::any_of(lines.begin(), lines.end(), [](const VCardLine& line) {
    return line.name == "VERSION" && line.value.starts_with("2");
  });
  std::string plain;
  for (const VCardLine& line : lines) {
    const std::string_view raw = card.substr(line.begin, line.end - line.begin);
    const bool isFrame = &line == &lines.front() || &line == &lines.back();
    // Without what keeps it from being one now, it would begin or end a card.
    if (!isFrame && (line.name == "BEGIN" || line.name == "END")) continue;
    if (isOld && line.name == "VERSION") {
      plain += "VERSION:3.0\r\n";
    } else if (isOld || !isPlain(line, raw)) {
      plain += written(line);
    } else {
      plain += raw;
    }
  }
  return plain;
}

}  // namespace zolvar
