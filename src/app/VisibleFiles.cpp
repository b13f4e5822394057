#include "app/VisibleFiles.h"

#include <algorithm>
#include <array>

namespace zolvar {
namespace {

constexpr std::array<std::string_view, 10> BundleExtensions = {
    "app", "bundle", "framework",     "pages",        "numbers",
    "key", "rtfd",   "photoslibrary", "sparsebundle", "zolvaraddresses"};

bool isHidden(std::string_view path) {
  return path.starts_with('.') || path.find("/.") != std::string_view::npos;
}

template <class Visible, class Paths>
std::vector<Visible> visibleOf(const Paths& paths) {
  std::vector<Visible> visible;
  std::string bundle;  // the last one kept, with a slash
  for (const auto& path : paths) {
    if (isHidden(path) || (!bundle.empty() && path.starts_with(bundle))) continue;
    visible.emplace_back(path);
    if (isBundlePath(path)) bundle = path + '/';
  }
  return visible;
}

}  // namespace

bool isBundlePath(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  const auto dot = path.rfind('.');
  const auto slash = path.rfind('/');
  const std::size_t name = slash == std::string_view::npos ? 0 : slash + 1;
  if (dot == std::string_view::npos || dot <= name) return false;
  const auto extension = path.substr(dot + 1);
  return std::find(BundleExtensions.begin(), BundleExtensions.end(), extension) !=
         BundleExtensions.end();
}

std::vector<std::string> visibleFiles(const std::set<std::string>& paths) {
  return visibleOf<std::string>(paths);
}

std::vector<std::string_view> visibleOfSorted(const std::vector<std::string>& paths) {
  return visibleOf<std::string_view>(paths);
}

std::string pathForDisplay(std::string_view path) {
  constexpr std::string_view Separator = " ▸ ";
  std::string text;
  while (!path.empty()) {
    const auto slash = std::min(path.find('/'), path.size());
    if (slash > 0) {
      if (!text.empty()) text += Separator;
      text += path.substr(0, slash);
    }
    path.remove_prefix(std::min(slash + 1, path.size()));
  }
  return text;
}

}  // namespace zolvar
