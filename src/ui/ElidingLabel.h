#pragma once

#include <QLabel>

namespace zolvar {

/// A label of one line that gives way where there is no room: the text is cut with an ellipsis, and
/// the tool tip has all of it. Main thread.
class ElidingLabel : public QLabel {
 public:
  ElidingLabel(Qt::TextElideMode mode, QWidget* parent);
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Qt::TextElideMode mode_;
};

}  // namespace zolvar
