#include "ui/TabParts.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QProxyStyle>
#include <QPushButton>
#include <QTableView>

#include "ui/Icons.h"

namespace zolvar {
namespace {

/// Right to left, the toolkit says which side a button's words stand at in absolute terms, but then
/// mirrors it: they would stand at the far edge, away from their icon.
class WordsBesideIcon : public QProxyStyle {
 public:
  void drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette,
                    bool isEnabled, const QString& text, QPalette::ColorRole role) const override {
    QProxyStyle::drawItemText(painter, rect, flags | Qt::AlignAbsolute, palette, isEnabled, text,
                              role);
  }
};

/// A push button that shows and does what the action is and does.
QPushButton* buttonFor(QAction* action, QWidget* parent) {
  auto* button = new QPushButton(parent);
  if (button->layoutDirection() == Qt::RightToLeft) {
    auto* style = new WordsBesideIcon;
    style->setParent(button);
    button->setStyle(style);
  }
  const auto follow = [action, button] {
    button->setText(action->text());
    button->setIcon(action->icon());
    button->setEnabled(action->isEnabled());
    button->setVisible(action->isVisible());
    button->setToolTip(action->toolTip());
  };
  follow();
  QObject::connect(action, &QAction::changed, button, follow);
  if (action->menu() != nullptr) {
    button->setMenu(action->menu());
  } else {
    QObject::connect(button, &QPushButton::clicked, action, &QAction::trigger);
  }
  return button;
}

}  // namespace

QAction* makeAction(QWidget& owner, const char* themeIcon, const char* ownName, const QString& text,
                    const QString& toolTip) {
  auto* action = new QAction(icon(themeIcon, ownName), text, &owner);
  action->setToolTip(toolTip);
  action->setStatusTip(toolTip);
  owner.addAction(action);
  return action;
}

QWidget* buttonRow(const QList<QAction*>& actions, QWidget* parent) {
  auto* row = new QWidget(parent);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  for (QAction* action : actions) {
    if (action == nullptr) {
      layout->addStretch();
    } else {
      layout->addWidget(buttonFor(action, row));
    }
  }
  return row;
}

void setUpTable(QTableView& view, const QString& accessibleName) {
  view.setShowGrid(false);
  view.setWordWrap(false);
  view.setSelectionBehavior(QAbstractItemView::SelectRows);
  view.setSelectionMode(QAbstractItemView::ExtendedSelection);
  view.setEditTriggers(QAbstractItemView::NoEditTriggers);
  view.setTabKeyNavigation(false);
  view.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  view.setContextMenuPolicy(Qt::ActionsContextMenu);
  view.setAccessibleName(accessibleName);
  view.verticalHeader()->hide();
  view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  view.horizontalHeader()->setHighlightSections(false);
  view.horizontalHeader()->setStretchLastSection(true);
  view.horizontalHeader()->setDefaultAlignment(Qt::AlignLeading | Qt::AlignVCenter);
}

}  // namespace zolvar
