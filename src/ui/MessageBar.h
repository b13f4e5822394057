#pragma once

#include <QFrame>
#include <functional>

class QLabel;
class QPushButton;
class QToolButton;

namespace zolvar {

/// A line in the window that says something of the moment, with one thing to do about it: "Kept
/// your version of 3 files. [Undo]". Takes no focus and no place while there is nothing to say.
/// Main thread.
class MessageBar : public QFrame {
  Q_OBJECT

 public:
  enum class Weight { Note, Question, Warning };

  explicit MessageBar(QWidget* parent);

  /// `button` empty: none. With `isLasting` it cannot be closed; it stays until hidden.
  void say(const QString& text, Weight weight, const QString& button = {},
           std::function<void()> act = {}, bool isLasting = false);
  [[nodiscard]] QString text() const;

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void color();

  Weight weight_ = Weight::Note;
  QLabel* icon_;
  QLabel* label_;
  QPushButton* button_;
  QToolButton* close_;
  std::function<void()> act_;
};

}  // namespace zolvar
