#include "ui/sheets/DeletionSheet.h"

#include <QLabel>
#include <QListView>
#include <QStringListModel>
#include <QVBoxLayout>

#include "app/OutcomeTexts.h"
#include "ui/Texts.h"
#include "ui/sheets/NoteLabel.h"

namespace zolvar {
namespace {

constexpr int Few = 3;  // files that a sentence can name
constexpr int Rows = 8;

QuestionSheet::Words wordsOf(const Alert& alert) {
  QuestionSheet::Words words{
      said(alert.title), said(alert.text), {}, Zolvar::tr("&Later"), true, false};
  for (const auto& button : alert.buttons) words.buttons += said(button);
  return words;
}

}  // namespace

DeletionSheet::DeletionSheet(const Alert& alert, Answered answered, QWidget* window)
    : QuestionSheet(wordsOf(alert), std::move(answered), window) {
  files_ = new QStringListModel(this);
  list_ = new QListView(this);
  list_->setModel(files_);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->setSelectionMode(QAbstractItemView::NoSelection);
  list_->setUniformItemSizes(true);
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  label_ = new QLabel(Zolvar::tr("The &files:"), this);
  label_->setBuddy(list_);
  list_->hide();
  label_->hide();
  auto* hint = new NoteLabel(this);
  hint->say(
      Zolvar::tr("Re-Get brings the files back here from the others. Delete Everywhere moves "
                 "them to the Trash of everybody who has them."));
  body().addWidget(label_);
  body().addWidget(list_, 1);
  body().addWidget(hint);
}

void DeletionSheet::showFiles(const QStringList& files) {
  if (files.size() <= Few || files == files_->stringList()) return;
  files_->setStringList(files);
  const int rows = std::min(static_cast<int>(files.size()), Rows);
  list_->setMinimumHeight(rows * list_->sizeHintForRow(0) + 2 * list_->frameWidth());
  list_->show();
  label_->show();
}

}  // namespace zolvar
