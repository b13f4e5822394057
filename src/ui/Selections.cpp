#include "ui/Selections.h"

#include <algorithm>

namespace zolvar {

std::vector<int> selectedRows(const QItemSelectionModel& selection, const QModelIndex& parent) {
  std::vector<int> rows;
  for (const QItemSelectionRange& range : selection.selection()) {
    if (range.parent() != parent) continue;
    for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

QItemSelection rowSelection(const QAbstractItemModel& model, const std::vector<int>& rows) {
  QItemSelection selection;
  const int lastColumn = model.columnCount() - 1;
  for (std::size_t first = 0; first < rows.size();) {
    std::size_t last = first;
    while (last + 1 < rows.size() && rows[last + 1] == rows[last] + 1) ++last;
    selection.append({model.index(rows[first], 0), model.index(rows[last], lastColumn)});
    first = last + 1;
  }
  return selection;
}

}  // namespace zolvar
