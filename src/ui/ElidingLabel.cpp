#include "ui/ElidingLabel.h"

#include <QPainter>
#include <QStyle>

namespace zolvar {

ElidingLabel::ElidingLabel(Qt::TextElideMode mode, QWidget* parent) : QLabel(parent), mode_(mode) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QSize ElidingLabel::minimumSizeHint() const { return {0, QLabel::minimumSizeHint().height()}; }

void ElidingLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QString shown = fontMetrics().elidedText(text(), mode_, contentsRect().width());
  setToolTip(shown == text() ? QString() : text());
  const auto alignment = QStyle::visualAlignment(layoutDirection(), this->QLabel::alignment());
  style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment), palette(),
                        isEnabled(), shown, foregroundRole());
}

}  // namespace zolvar
