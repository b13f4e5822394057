#include "ui/FolderDelegate.h"

#include <QApplication>
#include <QPainter>

#include "ui/FolderListModel.h"
#include "ui/Icons.h"

namespace zolvar {
namespace {

constexpr int Margin = 8;  // device-independent pixels
constexpr int IconSide = 20;
constexpr int Spacing = 3;
constexpr double SmallerFont = 0.88;

bool isSection(const QModelIndex& index) { return !index.parent().isValid(); }

QFont smaller(QFont font) {
  font.setPointSizeF(font.pointSizeF() * SmallerFont);
  return font;
}

}  // namespace

QSize FolderDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  const int line = QFontMetrics(option.font).height();
  const int small = QFontMetrics(smaller(option.font)).height();
  if (isSection(index)) return {80, small + 2 * Margin};
  return {80, std::max(line + small + Spacing, IconSide) + 2 * Margin - 2};
}

void FolderDelegate::paint(QPainter* painter, const QStyleOptionViewItem& given,
                           const QModelIndex& index) const {
  QStyleOptionViewItem option = given;
  initStyleOption(&option, index);
  const QStyle* style = option.widget != nullptr ? option.widget->style() : QApplication::style();
  const QString name = option.text;
  const QIcon icon = option.icon;
  const auto visual = [&](const QRect& rect) {
    return QStyle::visualRect(option.direction, option.rect, rect);
  };
  const auto write = [&](const QFont& font, const QColor& color, const QRect& rect,
                         const QString& text) {
    painter->setFont(font);
    painter->setPen(color);
    const QString shown = QFontMetrics(font).elidedText(text, Qt::ElideRight, rect.width());
    const auto align = QStyle::visualAlignment(option.direction, Qt::AlignLeft | Qt::AlignVCenter);
    painter->drawText(visual(rect), static_cast<int>(align) | Qt::TextSingleLine, shown);
  };
  painter->save();
  if (isSection(index)) {
    QFont font = smaller(option.font);
    font.setBold(true);
    write(font, faintColor(option.palette),
          option.rect.adjusted(Margin + 2, Margin / 2, -Margin, 0), name);
    painter->restore();
    return;
  }
  option.text.clear();
  option.icon = {};
  option.features &= ~QStyleOptionViewItem::HasDecoration;
  style->drawControl(QStyle::CE_ItemViewItem, &option, painter, option.widget);

  const bool isSelected = (option.state & QStyle::State_Selected) != 0;
  const auto group =
      (option.state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
  const QColor text =
      option.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
  const QRect box = option.rect.adjusted(Margin + 2, 0, -Margin, 0);
  const QRect iconBox(box.left(), box.center().y() - IconSide / 2, IconSide, IconSide);
  icon.paint(painter, visual(iconBox));
  QFont nameFont = option.font;
  nameFont.setBold(isSelected);
  const QFont lineFont = smaller(option.font);
  const int nameHeight = QFontMetrics(nameFont).height();
  const int lineHeight = QFontMetrics(lineFont).height();
  const int left = iconBox.right() + Margin + 2;
  const int width = box.right() - left + 1;
  const int top = box.center().y() - (nameHeight + Spacing + lineHeight) / 2;
  write(nameFont, text, {left, top, width, nameHeight}, name);
  write(lineFont, isSelected ? text : faintColor(option.palette),
        {left, top + nameHeight + Spacing, width, lineHeight},
        index.data(FolderListModel::SummaryRole).toString());
  painter->restore();
}

}  // namespace zolvar
