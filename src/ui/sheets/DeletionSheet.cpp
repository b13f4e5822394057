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

DeletionSheet::DeletionSheet(const Alert& alert, const QStringList& files, Answered answered,
                             QWidget* window)
    : QuestionSheet(wordsOf(alert), std::move(answered), window) {
  if (files.size() > Few) {
    auto* list = new QListView(this);
    list->setModel(new QStringListModel(files, list));
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setSelectionMode(QAbstractItemView::NoSelection);
    list->setUniformItemSizes(true);
    list->setTextElideMode(Qt::ElideMiddle);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const int rows = std::min(static_cast<int>(files.size()), Rows);
    list->setMinimumHeight(rows * list->sizeHintForRow(0) + 2 * list->frameWidth());
    auto* label = new QLabel(Zolvar::tr("The &files:"), this);
    label->setBuddy(list);
    body().addWidget(label);
    body().addWidget(list, 1);
  }
  auto* hint = new NoteLabel(this);
  hint->say(
      Zolvar::tr("Re-Get brings the files back here from the others. Delete Everywhere moves "
                 "them to the Trash of everybody who has them."));
  body().addWidget(hint);
}

}  // namespace zolvar
