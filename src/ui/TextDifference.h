#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zolvar {

/// One line of a comparison of two texts.
struct DifferenceLine {
  enum class Side { Both, Left, Right } side = Side::Both;
  std::string text;
  bool operator==(const DifferenceLine&) const = default;
};

/// Whether bytes look like text that people can read: valid UTF-8 without control characters other
/// than white space.
[[nodiscard]] bool isText(std::string_view bytes);

/// The lines of both texts in order, those in common once. None when they differ in more than
/// `most` lines: then looking at them side by side tells more. Pure.
std::optional<std::vector<DifferenceLine>> textDifference(std::string_view left,
                                                          std::string_view right,
                                                          std::size_t most = 800);

/// Leaves out lines in common that are further than `context` lines from any difference; a run of
/// them becomes one line with the text "…". Pure.
std::vector<DifferenceLine> withoutFarLines(const std::vector<DifferenceLine>& lines,
                                            std::size_t context);

}  // namespace zolvar
