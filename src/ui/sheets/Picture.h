#pragma once

#include <QIcon>
#include <QWidget>

namespace zolvar {

/// A square picture as large as some lines of text, sharp at every scale and in the palette's
/// colours of the moment. Takes no focus; what it shows is also said in words. Main thread.
class Picture : public QWidget {
 public:
  Picture(const QIcon& icon, double lines, QWidget* parent);
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QIcon icon_;
  double lines_;
};

}  // namespace zolvar
