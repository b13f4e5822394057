#pragma once

#include <QItemSelectionModel>
#include <string>
#include <vector>

namespace zolvar {

/// The selected rows below `parent`, sorted, without asking for each of maybe many thousands.
std::vector<int> selectedRows(const QItemSelectionModel& selection, const QModelIndex& parent = {});

/// A selection of whole rows, from sorted row numbers.
QItemSelection rowSelection(const QAbstractItemModel& model, const std::vector<int>& rows);

}  // namespace zolvar
