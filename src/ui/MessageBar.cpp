#include "ui/MessageBar.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <utility>

#include "ui/Icons.h"
#include "ui/Texts.h"

namespace zolvar {

MessageBar::MessageBar(QWidget* parent) : QFrame(parent) {
  setFrameShape(QFrame::NoFrame);
  setAutoFillBackground(true);
  icon_ = new QLabel(this);
  label_ = new QLabel(this);
  label_->setWordWrap(true);
  label_->setTextFormat(Qt::PlainText);
  button_ = new QPushButton(this);
  close_ = new QToolButton(this);
  close_->setAutoRaise(true);
  close_->setIcon(icon("window-close-symbolic", "close"));
  close_->setAccessibleName(Zolvar::tr("Close this message"));
  close_->setToolTip(Zolvar::tr("Close this message"));
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(10, 6, 6, 6);
  layout->addWidget(icon_, 0, Qt::AlignTop);
  layout->addWidget(label_, 1);
  layout->addWidget(button_);
  layout->addWidget(close_);
  connect(button_, &QPushButton::clicked, this, [this] {
    const auto act = act_;  // which may say something else here
    if (!close_->isHidden()) hide();
    if (act) act();
  });
  connect(close_, &QToolButton::clicked, this, &QWidget::hide);
  color();
  hide();
}

void MessageBar::say(const QString& text, Weight weight, const QString& button,
                     std::function<void()> act, bool isLasting) {
  weight_ = weight;
  act_ = std::move(act);
  label_->setText(text);
  setAccessibleName(text);
  button_->setText(button);
  button_->setVisible(!button.isEmpty());
  close_->setHidden(isLasting);
  color();
  show();
}

QString MessageBar::text() const { return label_->text(); }

void MessageBar::color() {
  const QPalette around = parentWidget()->palette();
  const bool dark = isDark(around);
  QPalette own = around;
  if (weight_ != Weight::Note) {
    own.setColor(QPalette::Window, dark ? QColor(0x4a, 0x38, 0x1c) : QColor(0xff, 0xf1, 0xd6));
  } else {
    own.setColor(QPalette::Window, dark ? QColor(0x22, 0x3a, 0x54) : QColor(0xe3, 0xef, 0xfb));
  }
  own.setColor(QPalette::WindowText, dark ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x20, 0x20, 0x20));
  if (own != palette()) setPalette(own);
  const char* const name = weight_ == Weight::Note       ? "state-instep"
                           : weight_ == Weight::Question ? "state-question"
                                                         : "state-problem";
  icon_->setPixmap(ownIcon(name).pixmap(18, 18));
}

void MessageBar::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange) color();
  QFrame::changeEvent(event);
}

}  // namespace zolvar
