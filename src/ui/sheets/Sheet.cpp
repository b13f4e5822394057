#include "ui/sheets/Sheet.h"

#include <QCoreApplication>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

#include "app/Application.h"
#include "ui/FolderNews.h"
#include "ui/Sheets.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/LongWords.h"
#include "ui/sheets/NoteLabel.h"
#include "ui/sheets/Picture.h"

namespace zolvar {
namespace {

constexpr int Columns = 54;  // characters of an average width, at the least
constexpr double PictureLines = 2.6;

}  // namespace

Sheet::Sheet(QWidget* window) : QDialog(window) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowModality(Qt::WindowModal);
  content_ = new QWidget(this);
  side_ = new QVBoxLayout;
  heading_ = new QLabel(content_);
  text_ = new QLabel(content_);
  QFont font = heading_->font();
  font.setPointSizeF(font.pointSizeF() * 1.15);
  font.setBold(true);
  heading_->setFont(font);
  body_ = new QVBoxLayout;
  auto* words = new QVBoxLayout;
  for (QLabel* label : {heading_, text_}) {
    label->setWordWrap(true);
    label->hide();
    words->addWidget(label);
  }
  words->addLayout(body_);
  words->addStretch();
  words->addItem(new QSpacerItem(fontMetrics().averageCharWidth() * Columns, 0));
  auto* across = new QHBoxLayout(content_);
  across->setContentsMargins(0, 0, 0, 0);
  across->setSpacing(fontMetrics().height());
  across->addLayout(side_);
  across->addLayout(words, 1);
  buttons_ = new QDialogButtonBox(this);
  connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  const int margin = fontMetrics().height();
  layout->setContentsMargins(margin, margin, margin, margin);
  layout->setSpacing(margin);
  layout->addWidget(content_, 1);
  layout->addWidget(buttons_);
}

void Sheet::introduce(const QIcon& picture, const QString& title, const QString& heading,
                      const QString& text) {
  setWindowTitle(title);
  putWords(*heading_, heading);
  heading_->setVisible(!heading.isEmpty());
  putWords(*text_, text);
  text_->setVisible(!text.isEmpty());
  setAccessibleName(heading.isEmpty() ? title : heading);
  setAccessibleDescription(text);
  if (picture.isNull()) return;
  side_->addWidget(new Picture(picture, PictureLines, content_));
  side_->addStretch();
}

QFormLayout* Sheet::addForm() {
  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  form->setContentsMargins(0, fontMetrics().height() / 2, 0, 0);
  body_->addLayout(form);
  return form;
}

QPushButton* Sheet::addButton(const QString& text, QDialogButtonBox::ButtonRole role) {
  return buttons_->addButton(text, role);
}

QPushButton* Sheet::addCancel() {
  return addButton(Zolvar::tr("Cancel"), QDialogButtonBox::RejectRole);
}

void Sheet::wait() {
  focus_ = focusWidget();
  content_->setEnabled(false);
  for (QAbstractButton* button : buttons_->buttons()) {
    if (buttons_->buttonRole(button) != QDialogButtonBox::RejectRole) button->setEnabled(false);
  }
}

Operations::Done Sheet::ending(WindowContext& context, NoteLabel& note, const QString& title,
                               std::function<void()> then) {
  wait();
  return [self = QPointer<Sheet>(this), window = QPointer<QWidget>(parentWidget()), &context, &note,
          title, then = std::move(then)](const Result<>& done) {
    if (!window) return;  // nobody is there any more, the context neither
    if (done) {
      if (self) self->QDialog::accept();
      if (then) then();
      return;
    }
    const QString sentence = said(refusalText(done.error()));
    if (!self || !self->isVisible()) {
      if (context.sheets != nullptr) context.sheets->showProblem(title, sentence);
      return;
    }
    self->content_->setEnabled(true);
    for (QAbstractButton* button : self->buttons_->buttons()) button->setEnabled(true);
    if (self->focus_) self->focus_->setFocus();
    note.say(sentence, NoteLabel::Weight::Error);
  };
}

void Sheet::closeWithFolder(WindowContext& context, const std::string& poolName) {
  connect(&context.news, &FolderNews::changed, this,
          [this, &context, poolName](const std::set<std::string>& /*names*/, bool isList) {
            if (isList && !context.application.peer().poolNamed(poolName)) reject();
          });
}

bool Sheet::event(QEvent* event) {
  const bool isHandled = QDialog::event(event);
  if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Show) grow();
  return isHandled;
}

void Sheet::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  grow();
}

void Sheet::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return;
  fit();
}

void Sheet::fit() {
  // Notes know their heights only when they have their widths, and one pass settles the next.
  constexpr int MostPasses = 6;
  for (int pass = 0, before = -1; pass < MostPasses && before != height(); ++pass) {
    before = height();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    setMinimumHeight(0);
    layout()->activate();
    resize(width(), 0);
    adjustSize();
  }
  grow();
  fitted_ = height();
}

void Sheet::grow() {
  // Layouts of windows count the height of wrapped texts at the narrowest width only.
  if (layout() == nullptr || !layout()->hasHeightForWidth()) return;
  const bool follows = height() == fitted_;
  setMinimumHeight(layout()->totalMinimumHeightForWidth(width()));
  if (!follows) return;
  resize(width(), layout()->totalHeightForWidth(width()));
  fitted_ = height();
}

}  // namespace zolvar
