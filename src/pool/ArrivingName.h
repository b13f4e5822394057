#pragma once

#include <string_view>

namespace zolvar {

/// Whether a name is shaped like the one that the transfer tool gives a file while it arrives:
/// ".NAME.XXXXXX", with six letters or digits.
[[nodiscard]] bool isShapedAsArriving(std::string_view name);

/// Whether `name` is what the tool calls a file while it arrives that is to become `target`, in the
/// same directory: a leading dot is not doubled, and a long name is cut, down to nothing in a
/// script of which every byte is part of a longer character.
[[nodiscard]] bool isArriving(std::string_view name, std::string_view target);

}  // namespace zolvar
