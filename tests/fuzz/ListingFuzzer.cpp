// What the transfer tool lists of a participant's folder, as it comes out of a pipe.

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "fuzz/Fuzz.h"
#include "pool/LineSplitter.h"
#include "pool/ListingLine.h"

namespace zolvar::fuzz {
namespace {

constexpr std::size_t LongestLine = 512;

std::vector<std::string> linesOf(std::string_view bytes, std::size_t piece) {
  std::vector<std::string> lines;
  LineSplitter splitter(LongestLine, [&lines](std::string_view line) { lines.emplace_back(line); });
  for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
    splitter.add(bytes.substr(0, piece));
  }
  splitter.finish();
  return lines;
}

std::string escaped(std::string_view path) {
  std::string text;
  for (const char byte : path) {
    text += byte > ' ' && byte <= '~' && byte != '\\'
                ? std::string(1, byte)
                : fmt::format("\\#{:03o}", static_cast<unsigned char>(byte));
  }
  return text;
}

void checkLine(std::string_view line) {
  const auto parsed = parseListingLine(line);
  if (!parsed) return;
  expect(!parsed->path.empty() && parsed->path != ".", "the folder itself is no file in it");
  expect(parsed->path.size() <= line.size(), "a name does not grow");
  const auto times = parsed->modTimes();
  expect(times.size() <= 2 && std::is_sorted(times.begin(), times.end()), "one time or two");
  if (parsed->kind() != 'd') {
    expect(std::all_of(times.begin(), times.end(), [](auto time) { return time >= 1; }),
           "no time of a file means that it is deleted");
  }
  const std::string text = fmt::format("{} {:>14} {} {}", parsed->mode, parsed->size, parsed->time,
                                       escaped(parsed->path));
  const auto again = parseListingLine(text);
  expect(again && again->mode == parsed->mode && again->size == parsed->size &&
             again->time == parsed->time && again->path == parsed->path,
         "a line survives being written");
}

}  // namespace
}  // namespace zolvar::fuzz

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  setenv("TZ", "Europe/Berlin", 1);
  tzset();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zolvar::fuzz;
  const std::string_view bytes = textOf(data, size);
  const auto lines = linesOf(bytes, SIZE_MAX);
  expect(linesOf(bytes, 1 + size % 5) == lines, "pieces make no difference");
  for (const std::string& line : lines) {
    expect(line.size() <= LongestLine && line.find('\n') == std::string::npos, "lines are lines");
    checkLine(line);
  }
  return 0;
}
