#pragma once

#include <cstddef>
#include <vector>

namespace zolvar {

/// One step that turns a sorted list of rows into another: `count` rows from `row` on go, or come
/// (taken from `source` on in the new list). Rows count as they are when the steps before are done.
struct RowChange {
  enum class Kind { Removed, Inserted } kind = Kind::Removed;
  std::size_t row = 0;
  std::size_t count = 0;
  std::size_t source = 0;
};

/// The steps from `from` to `to`, both sorted without duplicates; `compare(old, new)` is negative,
/// 0 or positive. Gives up, with one step too many, when there are more than `most`.
template <class Old, class New, class Compare>
std::vector<RowChange> rowChanges(const Old& from, const New& to, const Compare& compare,
                                  std::size_t most) {
  std::vector<RowChange> changes;
  const auto add = [&](RowChange::Kind kind, std::size_t row, std::size_t source) {
    if (!changes.empty() && changes.back().kind == kind) {
      RowChange& last = changes.back();
      const bool continues =
          kind == RowChange::Kind::Removed
              ? last.row == row
              : last.row + last.count == row && last.source + last.count == source;
      if (continues) {
        ++last.count;
        return;
      }
    }
    changes.push_back({kind, row, 1, source});
  };
  std::size_t left = 0;
  std::size_t right = 0;
  std::size_t row = 0;
  while ((left < from.size() || right < to.size()) && changes.size() <= most) {
    int order = 0;
    if (left == from.size()) {
      order = 1;
    } else if (right == to.size()) {
      order = -1;
    } else {
      order = compare(from[left], to[right]);
    }
    if (order == 0) {
      ++left, ++right, ++row;
    } else if (order < 0) {
      add(RowChange::Kind::Removed, row, 0);
      ++left;
    } else {
      add(RowChange::Kind::Inserted, row, right);
      ++right, ++row;
    }
  }
  return changes;
}

}  // namespace zolvar
