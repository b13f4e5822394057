#include "ui/sheets/Picture.h"

#include <QPainter>
#include <cmath>

namespace zolvar {

Picture::Picture(const QIcon& icon, double lines, QWidget* parent)
    : QWidget(parent), icon_(icon), lines_(lines) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Picture::sizeHint() const {
  const int side = static_cast<int>(std::lround(lines_ * fontMetrics().height()));
  return {side, side};
}

void Picture::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  icon_.paint(&painter, rect());
}

}  // namespace zolvar
