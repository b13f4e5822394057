#include "ui/EmptyState.h"

#include <QEvent>
#include <QLabel>
#include <QVBoxLayout>

#include "ui/Icons.h"
#include "ui/TabParts.h"

namespace zolvar {

EmptyState::EmptyState(const QString& iconName, QWidget* parent)
    : QWidget(parent), iconName_(iconName) {
  icon_ = new QLabel(this);
  title_ = new QLabel(this);
  text_ = new QLabel(this);
  QFont font = title_->font();
  font.setPointSizeF(font.pointSizeF() * 1.2);
  font.setBold(true);
  title_->setFont(font);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(32, 16, 32, 16);
  layout->addStretch(2);
  for (QLabel* label : {icon_, title_, text_}) {
    label->setAlignment(Qt::AlignCenter);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    layout->addWidget(label);
  }
  layout->addStretch(3);
  layout->setSpacing(8);
  draw();
}

void EmptyState::say(const QString& title, const QString& text) {
  title_->setText(title);
  text_->setText(text);
}

void EmptyState::offer(QAction* action) {
  auto* below = static_cast<QVBoxLayout*>(layout());
  below->insertWidget(below->indexOf(text_) + 1, buttonRow({action}, this), 0, Qt::AlignCenter);
}

void EmptyState::draw() {
  constexpr int Side = 48;
  icon_->setPixmap(ownIcon(iconName_).pixmap(QSize(Side, Side), devicePixelRatioF()));
  QPalette faint = palette();
  faint.setColor(QPalette::WindowText, faintColor(faint, QPalette::WindowText, QPalette::Window));
  text_->setPalette(faint);
}

void EmptyState::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange) draw();
  QWidget::changeEvent(event);
}

}  // namespace zolvar
