#include "ui/sheets/FolderPlaceEdit.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>

#include "app/FolderRules.h"
#include "app/SheetsController.h"
#include "ui/Texts.h"
#include "ui/sheets/FormatterValidator.h"
#include "ui/sheets/NoteLabel.h"

namespace zolvar {

FolderPlaceEdit::FolderPlaceEdit(SheetsController& controller, std::string homeFolder,
                                 QWidget* parent)
    : QWidget(parent), controller_(controller), homeFolder_(std::move(homeFolder)) {
  edit_ = new QLineEdit(this);
  edit_->setAccessibleName(Zolvar::tr("Folder"));
  edit_->setValidator(new FormatterValidator(std::make_unique<QMCharFilterFormatter>(), edit_));
  edit_->setLayoutDirection(Qt::LeftToRight);  // paths read so in every language
  auto* choose = new QPushButton(Zolvar::tr("&Choose…"), this);
  choose->setAccessibleName(Zolvar::tr("Choose the folder"));
  note_ = new NoteLabel(this);
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(edit_, 0, 0);
  layout->addWidget(choose, 0, 1);
  layout->addWidget(note_, 1, 0, 1, 2);
  setFocusProxy(edit_);
  connect(edit_, &QLineEdit::textEdited, this, [this](const QString& text) {
    controller_.setPoolPath(expandHome(text.toStdString(), homeFolder_));
    judge();
  });
  connect(choose, &QPushButton::clicked, this, &FolderPlaceEdit::choose);
}

void FolderPlaceEdit::refresh() {
  edit_->setText(toQt(abbreviateHome(controller_.poolPath(), homeFolder_)));
  judge();
}

void FolderPlaceEdit::judge() {
  const QString problem = said(controller_.errorText());
  if (!problem.isEmpty()) {
    // What is accepted all the same is only for information.
    note_->say(problem,
               controller_.isAcceptable() ? NoteLabel::Weight::Hint : NoteLabel::Weight::Error);
  } else {
    note_->say(said(controller_.warningText()), NoteLabel::Weight::Warning);
  }
  Q_EMIT changed();
}

void FolderPlaceEdit::choose() {
  auto* chooser =
      new QFileDialog(this, Zolvar::tr("Select Folder"), toQt(controller_.startOfChoosing()));
  chooser->setAttribute(Qt::WA_DeleteOnClose);
  chooser->setFileMode(QFileDialog::Directory);
  chooser->setOption(QFileDialog::ShowDirsOnly);
  chooser->setLabelText(QFileDialog::Accept, Zolvar::tr("Select Folder"));
  connect(chooser, &QFileDialog::fileSelected, this, [this](const QString& path) {
    controller_.chooseAddPath(path.toStdString());
    refresh();
  });
  chooser->open();
}

}  // namespace zolvar
