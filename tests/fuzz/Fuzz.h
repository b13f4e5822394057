#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/Log.h"

/// What a fuzzer calls with each input; a program has one. Returns 0, or -1 for an input that is
/// not worth keeping.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace zolvar::fuzz {

/// Ends the program, which is how a fuzzer is told of a fault.
inline void expect(bool truth, const char* what) {
  if (truth) return;
  std::fprintf(stderr, "Does not hold: %s\n", what);
  std::abort();
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Cuts the text before the first `separator` off `rest`; all of it when there is none.
inline std::string_view takeUntil(std::string_view& rest, char separator) {
  const std::size_t end = rest.find(separator);
  const std::string_view taken = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return taken;
}

inline bool hasControl(std::string_view text) {
  for (const char byte : text) {
    if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) return true;
  }
  return false;
}

/// A log that nobody reads.
class SilentLog : public Log {
 public:
  void write(Level, std::string_view) override {}
};

}  // namespace zolvar::fuzz
