#include "ui/sheets/SettingsSheet.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

#include "app/Application.h"
#include "app/FolderRules.h"
#include "app/Outcomes.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/NoteLabel.h"
#include "ui/sheets/PasswordEdit.h"

namespace zolvar {

SettingsSheet::SettingsSheet(WindowContext& context, const std::string& poolName, QWidget* window)
    : Sheet(window),
      context_(context),
      poolName_(poolName),
      controller_(context.application, context.operations) {
  controller_.showPoolSettings(poolName);
  const auto pool = context.application.peer().poolNamed(poolName);
  const PasswordState state = pool->passwordState();
  hadPassword_ = state == PasswordState::Set || state == PasswordState::Unreadable;
  introduce(ownIcon("settings"), Zolvar::tr("Folder Settings"),
            Zolvar::tr("Settings of '%1'").arg(toQt(poolName)),
            pool->hasFullFolderPath()
                ? toQt(abbreviateHome(pool->folderPath(), context.platform.fileSystem.homeFolder()))
                : Zolvar::tr("It has no folder on this computer."));
  hasPassword_ = new QCheckBox(Zolvar::tr("&Password:"), this);
  hasPassword_->setChecked(hadPassword_);
  hasPassword_->setAccessibleName(Zolvar::tr("The folder has a password"));
  password_ = new PasswordEdit(this);
  password_->setPlaceholderText(hadPassword_ ? Zolvar::tr("Unchanged")
                                             : Zolvar::tr("New password"));
  note_ = new NoteLabel(this);
  notices_ = new QCheckBox(Zolvar::tr("Show &notices about this folder"), this);
  notices_->setChecked(context.outcomes.usesNotices(poolName));
  auto* hint = new NoteLabel(this);
  hint->say(Zolvar::tr("Conflicts are shown either way."));
  auto* form = addForm();
  form->addRow(hasPassword_, password_);
  form->addRow(QString(), note_);
  form->addRow(QString(), notices_);
  form->addRow(QString(), hint);
  addButton(Zolvar::tr("&Save"), QDialogButtonBox::AcceptRole)->setDefault(true);
  addCancel();
  connect(hasPassword_, &QCheckBox::toggled, this, [this](bool has) {
    judge();
    if (has) password_->setFocus();
  });
  connect(password_, &QLineEdit::textChanged, this, &SettingsSheet::judge);
  judge();
  if (state == PasswordState::Unreadable) {
    note_->say(Zolvar::tr("The keyring does not give the password. Unlock it, or type the "
                          "password again."),
               NoteLabel::Weight::Error);
  }
  (hadPassword_ ? static_cast<QWidget*>(password_) : hasPassword_)->setFocus();
  closeWithFolder(context, poolName);
}

std::optional<std::string> SettingsSheet::wantedPassword() const {
  if (!hasPassword_->isChecked()) return hadPassword_ ? std::optional(std::string()) : std::nullopt;
  if (password_->text().isEmpty()) return std::nullopt;
  return password_->text().toStdString();
}

void SettingsSheet::judge() {
  password_->setEnabled(hasPassword_->isChecked());
  const auto wanted = wantedPassword();
  if (!wanted) return note_->say({});
  note_->say(wanted->empty()
                 ? Zolvar::tr("Everybody on the network can have the files then.")
                 : Zolvar::tr("Each user sets the password on the own computer. Files travel "
                              "between those who have the same one."));
}

void SettingsSheet::accept() {
  if (!context_.application.peer().poolNamed(poolName_)) return reject();
  SheetsController::Settings settings;
  settings.password = wantedPassword();
  settings.usesNotices = notices_->isChecked();
  controller_.savePoolSettingsSheet(
      settings, ending(context_, *note_, Zolvar::tr("The settings could not be saved.")));
}

}  // namespace zolvar
