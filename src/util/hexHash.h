#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zolvar {

/// The string hash that every peer must compute alike: 32-bit FNV-1a over the UTF-8 bytes.
constexpr std::uint32_t stringHash(std::string_view text) {
  std::uint32_t hash = 2166136261U;
  for (const char character : text) {
    hash ^= static_cast<unsigned char>(character);
    hash *= 16777619U;
  }
  return hash;
}

/// stringHash as eight lower-case hexadecimal digits.
std::string hexHash(std::string_view text);

}  // namespace zolvar
