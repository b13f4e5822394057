#include "ui/sheets/ShareContactsSheet.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>

#include "addressbook/KDAddressPool.h"
#include "app/Operations.h"
#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/NoteLabel.h"
#include "ui/sheets/PasswordEdit.h"

namespace zolvar {

ShareContactsSheet::ShareContactsSheet(WindowContext& context, QWidget* window)
    : Sheet(window), context_(context) {
  introduce(
      ownIcon("contacts"), Zolvar::tr("Share Contacts"), Zolvar::tr("Share a group of contacts"),
      Zolvar::tr("Who subscribes to it has these contacts in the own address book, and changes "
                 "travel both ways. Notes stay where they are."));
  groups_ = new QListWidget(this);
  groups_->setUniformItemSizes(true);
  password_ = new PasswordEdit(this);
  password_->setPlaceholderText(Zolvar::tr("None: everybody can subscribe"));
  note_ = new NoteLabel(this);
  auto* form = addForm();
  form->addRow(Zolvar::tr("&Group:"), groups_);
  form->addRow(Zolvar::tr("&Password:"), password_);
  form->addRow(QString(), note_);
  share_ = addButton(Zolvar::tr("&Share"), QDialogButtonBox::AcceptRole);
  share_->setDefault(true);
  addCancel();
  const auto groups = context.operations.addressGroups();
  if (!groups) {
    note_->say(said(refusalText(groups.error())));
  } else if (groups->empty()) {
    note_->say(Zolvar::tr("There are no groups in the address book."));
  } else {
    for (const auto& name : *groups) groups_->addItem(toQt(name));
    groups_->setCurrentRow(0);
  }
  share_->setEnabled(groups_->currentRow() >= 0);
  connect(groups_, &QListWidget::currentRowChanged, this,
          [this](int row) { share_->setEnabled(row >= 0); });
  groups_->setFocus();
}

std::string ShareContactsSheet::group() const {
  return groups_->currentItem() == nullptr ? "" : groups_->currentItem()->text().toStdString();
}

void ShareContactsSheet::accept() {
  if (group().empty()) return;
  const std::string password = password_->text().toStdString();
  context_.operations.shareAddresses(
      group(), password.empty() ? std::nullopt : std::optional(password),
      ending(context_, *note_, Zolvar::tr("The contacts cannot be shared."),
             [self = QPointer(this), name = group() + std::string(KDAddressPool::Extension)] {
               if (self) Q_EMIT self->wasShared(name);
             }));
}

}  // namespace zolvar
