#pragma once

#include <QStyledItemDelegate>

namespace zolvar {

/// Draws the source list: section titles, and folders as the icon of their state, the name and a
/// line about it. Main thread.
class FolderDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                               const QModelIndex& index) const override;
};

}  // namespace zolvar
