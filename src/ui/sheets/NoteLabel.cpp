#include "ui/sheets/NoteLabel.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QResizeEvent>

#include "ui/Icons.h"
#include "ui/sheets/LongWords.h"
#include "ui/sheets/Picture.h"

namespace zolvar {
namespace {

constexpr int Columns = 24;  // characters of an average width, at the least

}  // namespace

NoteLabel::NoteLabel(QWidget* parent) : QWidget(parent) {
  warning_ = new Picture(ownIcon("state-question"), 1, this);
  error_ = new Picture(ownIcon("state-problem"), 1, this);
  label_ = new QLabel(this);
  label_->setWordWrap(true);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(warning_, 0, Qt::AlignTop);
  layout->addWidget(error_, 0, Qt::AlignTop);
  layout->addWidget(label_, 1);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  hide();
}

void NoteLabel::say(const QString& text, Weight weight) {
  if (text == text_ && weight == weight_) return;
  weight_ = weight;
  text_ = text;
  putWords(*label_, text);
  warning_->setVisible(weight == Weight::Warning);
  error_->setVisible(weight == Weight::Error);
  color();
  setVisible(!text.isEmpty());
  updateGeometry();
  if (text.isEmpty()) return;
  QAccessibleEvent event(label_, QAccessible::Alert);
  QAccessible::updateAccessibility(&event);
}

QSize NoteLabel::sizeHint() const {
  return {fontMetrics().averageCharWidth() * Columns, layout()->totalHeightForWidth(width())};
}

void NoteLabel::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (event->oldSize().width() != width()) updateGeometry();
}

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
