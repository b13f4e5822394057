#include "app/QMCharFilterFormatter.h"

#include <algorithm>

namespace zolvar {
namespace {

struct Character {
  char32_t code = 0;
  std::size_t length = 1;
};

/// The character at `start`; a byte that begins none stands for itself, above all code points.
Character characterAt(std::string_view text, std::size_t start) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[start + i]); };
  const unsigned first = byte(0);
  if (first < 0x80) return {first, 1};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  constexpr char32_t NoCharacter = 0x110000;
  if (first < 0xC2 || start + length > text.size()) return {NoCharacter, 1};
  char32_t code = first & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return {NoCharacter, 1};
    code = code << 6U | (byte(i) & 0x3FU);
  }
  return {code, length};
}

}  // namespace

QMCharFilterFormatter::Verdict QMCharFilterFormatter::check(const TypedText& proposed) const {
  TypedText clean;
  const std::size_t start = std::min(proposed.selectionStart, proposed.text.size());
  const std::size_t end = std::min(start + proposed.selectionLength, proposed.text.size());
  std::size_t removedBefore = 0;
  std::size_t removedInside = 0;
  for (std::size_t at = 0; at < proposed.text.size();) {
    const Character character = characterAt(proposed.text, at);
    if (!isInvalid(character.code)) {
      clean.text.append(proposed.text, at, character.length);
    } else if (at < start) {
      removedBefore += character.length;
    } else if (at < end) {
      removedInside += character.length;
    }
    at += character.length;
  }
  if (clean.text.size() == proposed.text.size()) return {};
  clean.selectionStart = start - std::min(start, removedBefore);
  clean.selectionLength = end - start - std::min(end - start, removedInside);
  return {false, std::move(clean)};
}

bool QMCharFilterFormatter::isInvalid(char32_t character) const {
  return character == U'\r' || character == U'\n';
}

}  // namespace zolvar
