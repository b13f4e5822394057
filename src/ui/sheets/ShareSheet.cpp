#include "ui/sheets/ShareSheet.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/FolderPlaceEdit.h"
#include "ui/sheets/NoteLabel.h"
#include "ui/sheets/PasswordEdit.h"
#include "util/PathRules.h"

namespace zolvar {

ShareSheet::ShareSheet(WindowContext& context, const std::string& path, QWidget* window)
    : Sheet(window), context_(context), controller_(context.application, context.operations) {
  introduce(ownIcon("share"), Zolvar::tr("Share Folder"), Zolvar::tr("Share a folder"),
            Zolvar::tr("Everybody on this network who runs Zolvar sees it by its name and can "
                       "subscribe to it. The files stay where they are."));
  controller_.addPool();
  controller_.setPoolPath(path);
  place_ = new FolderPlaceEdit(controller_, context.platform.fileSystem.homeFolder(), this);
  password_ = new PasswordEdit(this);
  password_->setPlaceholderText(Zolvar::tr("None: everybody can subscribe"));
  auto* hint = new NoteLabel(this);
  hint->say(Zolvar::tr("Whoever enters the same password gets the files."));
  auto* form = addForm();
  auto* label = new QLabel(Zolvar::tr("&Folder:"), this);
  label->setBuddy(&place_->edit());
  form->addRow(label, place_);
  form->addRow(Zolvar::tr("&Password:"), password_);
  form->addRow(QString(), hint);
  share_ = addButton(Zolvar::tr("&Share"), QDialogButtonBox::AcceptRole);
  share_->setDefault(true);
  addCancel();
  connect(place_, &FolderPlaceEdit::changed, this,
          [this] { share_->setEnabled(controller_.isAcceptable()); });
  place_->refresh();
  place_->setFocus();
}

void ShareSheet::accept() {
  if (!controller_.isAcceptable()) return;
  const std::string name(lastPathComponent(controller_.poolPath()));
  controller_.doAddPool(password_->text().toStdString(),
                        ending(context_, place_->note(), Zolvar::tr("The folder cannot be shared."),
                               [self = QPointer(this), name] {
                                 if (self) Q_EMIT self->wasShared(name);
                               }));
}

}  // namespace zolvar
