#include "addressbook/CardText.h"

#include <fmt/format.h>

#include <algorithm>

namespace zolvar {
namespace {

constexpr std::size_t LongestLine = 75;  // bytes, without the line end

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

std::string quotedPrintable(std::string_view text) {
  std::string quoted;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '\n') quoted += "=0D";
    if (byte < 0x20 || byte > 0x7E || character == '=') {
      quoted += fmt::format("={:02X}", byte);
    } else {
      quoted += character;
    }
  }
  return quoted;
}

std::string_view lineEndOf(std::string_view text) {
  const std::size_t feed = text.find('\n');
  if (feed == std::string_view::npos) {
    return text.find('\r') == std::string_view::npos ? "\r\n" : "\r";
  }
  return feed > 0 && text[feed - 1] == '\r' ? "\r\n" : "\n";
}

}  // namespace

CardText::CardText(std::string_view text)
    : text_(text), lines_(linesOfCard(text)), lineEnd_(lineEndOf(text)) {
  for (const auto& line : lines_) {
    if (line.name != "VERSION") continue;
    if (line.value.starts_with("2")) version_ = Version::V21;
    if (line.value.starts_with("4")) version_ = Version::V40;
  }
}

const VCardLine* CardText::first(std::string_view name) const {
  const auto found = std::find_if(lines_.begin(), lines_.end(), [&](const VCardLine& line) {
    return line.name == name && !removed_.contains(line.begin);
  });
  return found == lines_.end() ? nullptr : &*found;
}

std::string CardText::escaped(std::string_view text) const {
  if (version_ != Version::V21) return escapedValue(text);
  std::string value;  // line feeds are left to the transfer encoding
  for (const char character : text) {
    if (character == ';' || character == '\\') value += '\\';
    value += character;
  }
  return value;
}

std::string CardText::newGroup() {
  for (int number = 1;; ++number) {
    std::string group = fmt::format("item{}", number);
    const bool isTaken = std::any_of(lines_.begin(), lines_.end(), [&](const VCardLine& line) {
      return isSameInAnyCase(line.group, group);
    });
    if (!isTaken && newGroups_.insert(group).second) return group;
  }
}

/// A last line that wants to go on, which nothing did so far, is kept from going on in ours.
std::string& CardText::insertedAt(std::size_t place) {
  std::string& inserted = inserted_[place];
  if (!inserted.empty()) return inserted;
  for (const auto& line : lines_) {
    if (line.end != place || !isSameInAnyCase(line.parameter("ENCODING"), "QUOTED-PRINTABLE")) {
      continue;
    }
    std::string_view raw = text_.substr(line.begin, line.end - line.begin);
    while (raw.ends_with('\n') || raw.ends_with('\r')) raw.remove_suffix(1);
    if (raw.ends_with('=')) inserted = lineEnd_;
  }
  return inserted;
}

void CardText::removeAll(std::string_view name) {
  for (const auto& line : lines_) {
    if (line.name == name) remove(line);
  }
}

void CardText::replace(const VCardLine* old, const std::string& name, std::string_view parameters,
                       std::string_view value) {
  const std::string group = old && !old->group.empty() ? old->group + "." : "";
  insert(old ? old->begin : end(), group + name, parameters, value);
  if (old) remove(*old);
}

void CardText::move(const VCardLine& line, std::size_t place) {
  insertedAt(place) += text_.substr(line.begin, line.end - line.begin);
  remove(line);
}

std::string CardText::written() const {
  std::string result;
  std::size_t position = 0;
  for (const auto& line : lines_) {
    const auto inserted = inserted_.find(line.begin);
    const bool isRemoved = removed_.contains(line.begin);
    if (inserted == inserted_.end() && !isRemoved) continue;
    result += text_.substr(position, line.begin - position);
    if (inserted != inserted_.end()) result += inserted->second;
    position = isRemoved ? line.end : line.begin;
  }
  result += text_.substr(position);
  return result;
}

std::string CardText::encoded(const std::string& name, std::string_view parameters,
                              std::string_view value) const {
  std::string line = name;
  line += parameters;
  if (version_ != Version::V21) return folded(line.append(":").append(value));
  const bool isPlain = std::all_of(value.begin(), value.end(), [](char character) {
    return static_cast<unsigned char>(character) < 0x80 && character != '\n';
  });
  if (!isPlain) {
    return line + ";CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" + quotedPrintable(value) + lineEnd_;
  }
  line.append(":").append(value);
  // There, folding would change a text; and an empty line ends bytes.
  const bool isBytes = parameters.find("BASE64") != std::string_view::npos;
  return isBytes ? folded(line) + lineEnd_ : line + lineEnd_;
}

std::string CardText::folded(std::string_view line) const {
  std::string result;
  std::size_t limit = LongestLine;
  while (line.size() > limit) {
    std::size_t length = limit;
    while (length > 1 && isContinuation(line[length])) --length;
    result.append(line.substr(0, length)).append(lineEnd_).append(" ");
    line.remove_prefix(length);
    limit = LongestLine - 1;
  }
  return result.append(line).append(lineEnd_);
}

}  // namespace zolvar
