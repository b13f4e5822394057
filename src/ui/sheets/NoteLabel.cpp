#include "ui/sheets/NoteLabel.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

#include "ui/Icons.h"
#include "ui/sheets/Picture.h"

namespace zolvar {

NoteLabel::NoteLabel(QWidget* parent) : QWidget(parent) {
  warning_ = new Picture(ownIcon("state-question"), 1, this);
  error_ = new Picture(ownIcon("state-problem"), 1, this);
  label_ = new QLabel(this);
  label_->setWordWrap(true);
  label_->setTextFormat(Qt::PlainText);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(warning_, 0, Qt::AlignTop);
  layout->addWidget(error_, 0, Qt::AlignTop);
  layout->addWidget(label_, 1);
  hide();
}

void NoteLabel::say(const QString& text, Weight weight) {
  if (text == label_->text() && weight == weight_) return;
  weight_ = weight;
  label_->setText(text);
  warning_->setVisible(weight == Weight::Warning);
  error_->setVisible(weight == Weight::Error);
  color();
  setVisible(!text.isEmpty());
  if (text.isEmpty()) return;
  QAccessibleEvent event(label_, QAccessible::Alert);
  QAccessible::updateAccessibility(&event);
}

QString NoteLabel::text() const { return label_->text(); }

void NoteLabel::color() {
  QPalette own;
  if (weight_ == Weight::Hint) {
    own.setColor(QPalette::WindowText, faintColor(palette(), QPalette::Text, QPalette::Window));
  }
  label_->setPalette(own);
}

void NoteLabel::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange) color();
  QWidget::changeEvent(event);
}

}  // namespace zolvar
