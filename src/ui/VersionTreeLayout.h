#pragma once

#include <vector>

#include "pool/FileHistory.h"

namespace zolvar {

/// Where a version stands in the picture of its file's tree: one row each, oldest on top; a branch
/// keeps its lane, and the branch of the version that is here keeps that of its ancestors.
struct VersionPlace {
  int lane = 0;
  bool operator==(const VersionPlace&) const = default;
};

/// One place a version, in the history's order. Pure.
std::vector<VersionPlace> versionPlaces(const FileHistory& history);

}  // namespace zolvar
