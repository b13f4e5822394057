#pragma once

#include <string_view>

namespace zolvar {

/// Whether a symbolic link at `path` (relative to the pool's folder) with this target stays inside
/// the folder: relative, and never above the top on its way. Such links are shared, others are not.
[[nodiscard]] bool isInnerLinkTarget(std::string_view path, std::string_view target);

}  // namespace zolvar
