#include "util/PathRules.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace zolvar {

namespace {

unsigned char byteAt(std::string_view text, std::size_t index) {
  return static_cast<unsigned char>(text[index]);
}

/// Length of the valid UTF-8 sequence at `index`, which is not ASCII; 0 when there is none.
std::size_t multibyteLength(std::string_view text, std::size_t index) {
  const unsigned char lead = byteAt(text, index);
  std::size_t length = 0;
  unsigned char lowest = 0x80;   // bounds of the second byte: they rule out overlong forms,
  unsigned char highest = 0xBF;  // surrogates and what lies beyond U+10FFFF
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) lowest = 0xA0;
    if (lead == 0xED) highest = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) lowest = 0x90;
    if (lead == 0xF4) highest = 0x8F;
  } else {
    return 0;
  }
  if (index + length > text.size()) return 0;
  if (byteAt(text, index + 1) < lowest || byteAt(text, index + 1) > highest) return 0;
  for (std::size_t next = index + 2; next < index + length; ++next) {
    if ((byteAt(text, next) & 0xC0U) != 0x80U) return 0;
  }
  return length;
}

constexpr std::uint64_t eachByte(unsigned char byte) { return byte * 0x0101010101010101U; }

/// Eight bytes from `index` on, the first one lowest; harmless letters where the text has ended.
std::uint64_t wordAt(std::string_view text, std::size_t index) {
  static_assert(std::endian::native == std::endian::little);
  std::uint64_t word = eachByte('x');
  const std::size_t left = text.size() - index;
  if (left >= sizeof word) {
    std::memcpy(&word, text.data() + index, sizeof word);
  } else {
    std::memcpy(&word, text.data() + index, left);
  }
  return word;
}

/// Whether an ASCII word has a byte below `limit`.
constexpr bool hasByteBelow(std::uint64_t word, unsigned char limit) {
  return (~(word + eachByte(0x80 - limit)) & eachByte(0x80)) != 0;
}

/// The highest bit of each byte of an ASCII word that is `byte`.
constexpr std::uint64_t equalBytes(std::uint64_t word, char byte) {
  const std::uint64_t zeroWhereEqual = word ^ eachByte(static_cast<unsigned char>(byte));
  return ~(zeroWhereEqual + eachByte(0x7F)) & eachByte(0x80);
}

/// C0, DEL and C1 (which UTF-8 writes as C2 80 to C2 9F).
bool hasControlCharacter(std::string_view text) {
  for (std::size_t index = 0; index < text.size(); ++index) {
    const unsigned char byte = byteAt(text, index);
    if (byte < 0x20 || byte == 0x7F) return true;
    if (byte == 0xC2 && index + 1 < text.size() && byteAt(text, index + 1) < 0xA0) return true;
  }
  return false;
}

bool isAsciiLetterOrDigit(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9');
}

/// "127", "0x7f000001" and the like, which a resolver takes for an address.
bool looksLikeNumber(std::string_view label) {
  const bool isHex = label.starts_with("0x") || label.starts_with("0X");
  return label.find_first_not_of(isHex ? "0123456789abcdefABCDEF" : "0123456789", isHex ? 2 : 0) ==
         std::string_view::npos;
}

}  // namespace

bool isValidUtf8(std::string_view text) {
  for (std::size_t index = 0; index < text.size();) {
    const std::size_t length = byteAt(text, index) < 0x80 ? 1 : multibyteLength(text, index);
    if (length == 0) return false;
    index += length;
  }
  return true;
}

bool isMetadataPath(std::string_view path) {
  constexpr std::string_view Forbidden = ".zolvar";
  if (path.size() < Forbidden.size() || path == IgnoreFileName) return false;
  return std::equal(Forbidden.begin(), Forbidden.end(), path.begin(), [](char wanted, char found) {
    return found == wanted || (found >= 'A' && found <= 'Z' && found - 'A' + 'a' == wanted);
  });
}

// Runs once for every line of every log, so ASCII is looked at eight bytes at a time.
bool isSafeRelativePath(std::string_view path) {
  if (path.empty() || path.size() > LongestPath || isMetadataPath(path)) return false;
  std::size_t componentStart = 0;
  const auto endComponent = [&](std::size_t end) {
    const std::size_t size = end - componentStart;
    const char* const component = path.data() + componentStart;
    componentStart = end + 1;
    if (size > 2) return size <= LongestComponent;
    return size > 0 && !(component[0] == '.' && (size == 1 || component[1] == '.'));
  };
  for (std::size_t index = 0; index < path.size();) {
    std::uint64_t word = wordAt(path, index);
    const std::uint64_t beyondAscii = word & eachByte(0x80);
    const auto asciiCount = static_cast<unsigned>(std::countr_zero(beyondAscii)) / 8;  // 8 for none
    if (asciiCount == 0) {
      const std::size_t length = multibyteLength(path, index);
      if (length == 0) return false;
      index += length;
      continue;
    }
    if (beyondAscii != 0) {
      const std::uint64_t kept = (std::uint64_t{1} << (asciiCount * 8)) - 1;
      word = (word & kept) | (eachByte('x') & ~kept);
    }
    if (hasByteBelow(word, '\r' + 1) &&
        (equalBytes(word, '\0') | equalBytes(word, '\n') | equalBytes(word, '\r')) != 0) {
      return false;
    }
    for (std::uint64_t slashes = equalBytes(word, '/'); slashes != 0; slashes &= slashes - 1) {
      const auto place = static_cast<unsigned>(std::countr_zero(slashes)) / 8;
      if (!endComponent(index + place)) return false;
    }
    index += asciiCount;
  }
  return endComponent(path.size());
}

namespace {

/// Why the configuration cannot carry this component of a path.
std::optional<std::string> componentProblem(std::string_view name) {
  if (name.empty()) return "The name is empty.";
  if (name.size() > LongestPoolName) {
    return fmt::format("The name is {} bytes long; at most {} are possible.", name.size(),
                       LongestPoolName);
  }
  if (!isValidUtf8(name)) return "The name is not valid UTF-8 text.";
  if (hasControlCharacter(name)) return "The name contains a control character.";
  const std::size_t special = name.find_first_of(":/[]%\\");
  if (special != std::string_view::npos) {
    return fmt::format(
        "The name '{}' contains the character '{}', which a shared folder cannot have.", name,
        name[special]);
  }
  if (name.front() == ' ' || name.back() == ' ' || name.find("  ") != std::string_view::npos) {
    return fmt::format("The name '{}' begins or ends with a blank or contains two in a row.", name);
  }
  if (name == "." || name == "..") {
    return fmt::format("The name '{}' has another meaning and cannot be used.", name);
  }
  return std::nullopt;
}

bool isGlobal(std::string_view name) {
  constexpr std::string_view Global = "global";
  return std::equal(name.begin(), name.end(), Global.begin(), Global.end(),
                    [](char left, char right) {
                      return (left >= 'A' && left <= 'Z' ? left - 'A' + 'a' : left) == right;
                    });
}

}  // namespace

std::optional<std::string> poolNameProblem(std::string_view name) {
  if (auto problem = componentProblem(name)) return problem;
  if (name.front() == '#' || name.front() == '-') {
    return fmt::format("The name '{}' begins with '{}', which a shared folder cannot have.", name,
                       name.front());
  }
  if (isGlobal(name) || isMetadataPath(name))
    return fmt::format("The name '{}' has another meaning and cannot be used.", name);
  return std::nullopt;
}

std::optional<std::string> poolPathProblem(std::string_view absolutePath) {
  if (absolutePath.size() < 2 || absolutePath.front() != '/') {
    return "The folder's path must begin with '/' and name a folder.";
  }
  if (absolutePath.size() > LongestPath) return "The folder's path is too long.";
  std::string_view rest = absolutePath.substr(1);
  while (true) {
    const std::size_t slash = rest.find('/');
    if (auto problem = componentProblem(rest.substr(0, slash))) {
      return fmt::format("The folder's path cannot be served by the transfer daemon. {}", *problem);
    }
    if (slash == std::string_view::npos) return std::nullopt;
    rest.remove_prefix(slash + 1);
  }
}

bool isLogFileName(std::string_view name) {
  return name.ends_with(LogFileExtension) && !name.starts_with('.') &&
         name.find('@') != std::string_view::npos && name.find('/') == std::string_view::npos;
}

bool isLocalHostName(std::string_view host) {
  constexpr std::size_t LongestHostName = 253;
  constexpr std::size_t LongestLabel = 63;
  if (host.size() > LongestHostName) return false;
  std::size_t labels = 0;
  for (std::string_view rest = host;; ++labels) {
    const std::size_t dot = rest.find('.');
    const std::string_view label = rest.substr(0, dot);
    if (label.empty() || label.size() > LongestLabel || label.front() == '-') return false;
    if (!std::all_of(label.begin(), label.end(), [](char character) {
          return isAsciiLetterOrDigit(character) || character == '-' || character == '_';
        })) {
      return false;
    }
    if (dot == std::string_view::npos) break;
    rest.remove_prefix(dot + 1);
  }
  if (labels == 0) return !looksLikeNumber(host);
  return host.ends_with(".local") || host.ends_with(".lan");
}

std::string_view withoutLocalSuffix(std::string_view text) {
  for (const std::string_view suffix : {".local", ".lan"}) {
    if (text.ends_with(suffix)) return text.substr(0, text.size() - suffix.size());
  }
  return text;
}

std::string_view lastPathComponent(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view parentPath(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
}

std::string joinPath(std::string_view folder, std::string_view component) {
  std::string joined;
  joined.reserve(folder.size() + 1 + component.size());
  joined = folder;
  if (!joined.empty() && joined.back() != '/') joined += '/';
  joined += component;
  return joined;
}

}  // namespace zolvar
