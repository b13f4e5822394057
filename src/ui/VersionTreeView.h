#pragma once

#include <QAbstractScrollArea>
#include <optional>
#include <string>
#include <vector>

#include "pool/FileHistory.h"
#include "ui/VersionTreeLayout.h"

namespace zolvar {

class PersonColors;

/// Draws the versions of one file as a tree: a row each, time downwards, branches side by side, a
/// node in its author's colour, the one that is here marked in green. Arrow keys and clicks make a
/// version the current one; hovering tells all about it. Main thread.
class VersionTreeView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  VersionTreeView(std::string localUserId, PersonColors& colors, QWidget* parent);

  /// Keeps the current version when it is still there.
  void setHistory(FileHistory history);
  [[nodiscard]] const FileHistory& history() const { return history_; }
  void setCurrent(const std::optional<VersionId>& version);
  /// Null when none is current.
  [[nodiscard]] const HistoryVersion* current() const;
  /// All there is to tell about a version, in lines.
  [[nodiscard]] QString description(const HistoryVersion& version) const;

 Q_SIGNALS:
  /// The person made another version the current one.
  void currentChanged(const VersionId& version);
  void menuWanted(const QPoint& globalPosition);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  [[nodiscard]] QSize sizeHint() const override;

 private:
  [[nodiscard]] int rowHeight() const;
  [[nodiscard]] int rowAt(const QPoint& position) const;  ///< -1: none
  [[nodiscard]] QPointF node(int row) const;              ///< centre, in the viewport
  [[nodiscard]] QString what(const HistoryVersion& version) const;
  [[nodiscard]] QString person(const std::string& userId) const;
  void paintRow(QPainter& painter, int row) const;
  void paintLine(QPainter& painter, int row) const;
  void paintNode(QPainter& painter, int row) const;
  void makeCurrent(int row);
  void updateScrollBar();
  void updateAccessibleText();

  std::string localUserId_;
  PersonColors& colors_;
  FileHistory history_;
  std::vector<VersionPlace> places_;
  int lanes_ = 0;
  int current_ = -1;  ///< row; -1: none
};

}  // namespace zolvar
