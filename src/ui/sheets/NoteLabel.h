#pragma once

#include <QString>
#include <QWidget>

class QLabel;

namespace zolvar {

class Picture;

/// A sentence where it belongs, below what it is about: a hint, or what is wrong. Takes no place
/// while there is nothing to say; screen readers are told what appears. Main thread.
class NoteLabel : public QWidget {
 public:
  enum class Weight { Hint, Warning, Error };

  explicit NoteLabel(QWidget* parent);
  /// Empty: nothing.
  void say(const QString& text, Weight weight = Weight::Hint);
  [[nodiscard]] QString text() const { return text_; }

  // As high as the text needs at the width that it has: forms take a height that depends on the
  // width from no field.
  [[nodiscard]] bool hasHeightForWidth() const override { return false; }
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void color();

  Weight weight_ = Weight::Hint;
  QString text_;
  Picture* warning_;
  Picture* error_;
  QLabel* label_;
};

}  // namespace zolvar
