#pragma once

#include <QList>
#include <QString>

class QAction;
class QTableView;
class QWidget;

namespace zolvar {

// What the tabs have in common.

/// An action that belongs to the widget and its children.
QAction* makeAction(QWidget& owner, const char* themeIcon, const char* ownIcon, const QString& text,
                    const QString& toolTip);
/// The actions as a row of push buttons with text; null makes a stretch.
QWidget* buttonRow(const QList<QAction*>& actions, QWidget* parent);
/// A plain list of whole rows with columns: no grid, no row numbers, uniform heights.
void setUpTable(QTableView& view, const QString& accessibleName);

}  // namespace zolvar
