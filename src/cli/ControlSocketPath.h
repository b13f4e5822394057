#pragma once

#include <string>

namespace zolvar {

/// Where this user's control socket lies: "zolvar/control.sock" in $XDG_RUNTIME_DIR, or in
/// $HOME/.local/state when that is unset. Absolute; empty when neither variable is an absolute
/// path.
std::string controlSocketPath();

}  // namespace zolvar
