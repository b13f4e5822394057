#include "pool/LinkTarget.h"

#include <algorithm>

namespace zolvar {

bool isInnerLinkTarget(std::string_view path, std::string_view target) {
  if (target.empty() || target.front() == '/') return false;
  auto depth = std::count(path.begin(), path.end(), '/');
  while (!target.empty()) {
    const auto slash = target.find('/');
    const auto step = target.substr(0, slash);
    target.remove_prefix(slash == std::string_view::npos ? target.size() : slash + 1);
    if (step.empty() || step == ".") continue;
    depth += step == ".." ? -1 : 1;
    if (depth < 0) return false;
  }
  return true;
}

}  // namespace zolvar
