#pragma once

#include <QWidget>

class QAction;
class QLabel;

namespace zolvar {

/// What stands where a list would be when there is nothing to list: a picture and a sentence or
/// two. Main thread.
class EmptyState : public QWidget {
 public:
  EmptyState(const QString& iconName, QWidget* parent);
  void say(const QString& title, const QString& text);
  /// A button below the words, for what can be done about it.
  void offer(QAction* action);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void draw();

  QString iconName_;
  QLabel* icon_;
  QLabel* title_;
  QLabel* text_;
};

}  // namespace zolvar
