#include "ui/sheets/PlaceSheet.h"

#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/FolderPlaceEdit.h"
#include "ui/sheets/NoteLabel.h"
#include "ui/sheets/PasswordEdit.h"

namespace zolvar {

PlaceSheet::PlaceSheet(WindowContext& context, QWidget* window)
    : Sheet(window),
      context_(context),
      controller_(context.application, context.operations),
      place_(new FolderPlaceEdit(controller_, context.platform.fileSystem.homeFolder(), this)),
      password_(new PasswordEdit(this)) {}

void PlaceSheet::fill(const QString& placeholder, const QString& hint, const QString& button) {
  password_->setPlaceholderText(placeholder);
  auto* note = new NoteLabel(this);
  if (!hint.isEmpty()) note->say(hint);
  auto* label = new QLabel(Zolvar::tr("&Folder:"), this);
  label->setBuddy(&place_->edit());
  auto* form = addForm();
  form->addRow(label, place_);
  form->addRow(Zolvar::tr("&Password:"), password_);
  form->addRow(QString(), note);
  auto* confirm = addButton(button, QDialogButtonBox::AcceptRole);
  confirm->setDefault(true);
  addCancel();
  connect(place_, &FolderPlaceEdit::changed, this,
          [this, confirm] { confirm->setEnabled(controller_.isAcceptable()); });
  place_->refresh();
}

}  // namespace zolvar
