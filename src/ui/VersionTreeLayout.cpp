#include "ui/VersionTreeLayout.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace zolvar {
namespace {

/// The rows in which a lane is taken.
using Taken = std::vector<std::pair<int, int>>;

bool isFree(const Taken& lane, int first, int last) {
  return std::none_of(lane.begin(), lane.end(), [&](const auto& taken) {
    return taken.first <= last && first <= taken.second;
  });
}

}  // namespace

std::vector<VersionPlace> versionPlaces(const FileHistory& history) {
  const auto& versions = history.versions;
  const auto count = static_cast<int>(versions.size());
  const auto at = [&](int row) -> const HistoryVersion& {
    return versions[static_cast<std::size_t>(row)];
  };
  // The child that goes on in its parent's lane: the first, or the one that leads to what is here.
  std::vector<int> heir(versions.size(), -1);
  for (int row = 0; row < count; ++row) {
    const int parent = at(row).parent;
    if (parent >= 0 && heir[static_cast<std::size_t>(parent)] < 0) {
      heir[static_cast<std::size_t>(parent)] = row;
    }
  }
  const auto here = std::find_if(versions.begin(), versions.end(),
                                 [](const auto& version) { return version.isHere; });
  if (here != versions.end()) {
    for (int row = static_cast<int>(here - versions.begin()); at(row).parent >= 0;
         row = at(row).parent) {
      heir[static_cast<std::size_t>(at(row).parent)] = row;
    }
  }
  std::vector<VersionPlace> places(versions.size());
  std::vector<Taken> lanes;
  for (int row = 0; row < count; ++row) {
    const int parent = at(row).parent;
    if (parent >= 0 && heir[static_cast<std::size_t>(parent)] == row) {
      places[static_cast<std::size_t>(row)] = places[static_cast<std::size_t>(parent)];
      continue;
    }
    int last = row;
    while (heir[static_cast<std::size_t>(last)] >= 0) last = heir[static_cast<std::size_t>(last)];
    const int first = parent >= 0 ? parent : row;
    const auto free = std::find_if(lanes.begin(), lanes.end(),
                                   [&](const Taken& lane) { return isFree(lane, first, last); });
    places[static_cast<std::size_t>(row)].lane = static_cast<int>(free - lanes.begin());
    if (free == lanes.end()) {
      lanes.push_back({{first, last}});
    } else {
      free->emplace_back(first, last);
    }
  }
  return places;
}

}  // namespace zolvar
