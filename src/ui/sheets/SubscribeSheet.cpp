#include "ui/sheets/SubscribeSheet.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>

#include "app/Application.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/FolderPlaceEdit.h"
#include "ui/sheets/NoteLabel.h"
#include "ui/sheets/PasswordEdit.h"

namespace zolvar {

SubscribeSheet::SubscribeSheet(WindowContext& context, const std::string& poolName, QWidget* window)
    : Sheet(window), context_(context), controller_(context.application, context.operations) {
  introduce(ownIcon("subscribe"), Zolvar::tr("Subscribe"),
            Zolvar::tr("Subscribe to '%1'").arg(toQt(poolName)), sharers(poolName));
  controller_.subscribeToPool(poolName);
  place_ = new FolderPlaceEdit(controller_, context.platform.fileSystem.homeFolder(), this);
  const auto* presence = context.application.peer().presence(poolName);
  const bool needsPassword = context.operations.info(*presence).passwordRequired;
  password_ = new PasswordEdit(this);
  password_->setPlaceholderText(needsPassword ? Zolvar::tr("Required") : Zolvar::tr("None"));
  auto* hint = new NoteLabel(this);
  if (needsPassword) {
    hint->say(Zolvar::tr("Ask the others for it: files come from those who have the same one."));
  }
  auto* form = addForm();
  auto* label = new QLabel(Zolvar::tr("&Folder:"), this);
  label->setBuddy(&place_->edit());
  form->addRow(label, place_);
  form->addRow(Zolvar::tr("&Password:"), password_);
  form->addRow(QString(), hint);
  auto* subscribe = addButton(Zolvar::tr("&Subscribe"), QDialogButtonBox::AcceptRole);
  subscribe->setDefault(true);
  addCancel();
  connect(place_, &FolderPlaceEdit::changed, this,
          [this, subscribe] { subscribe->setEnabled(controller_.isAcceptable()); });
  place_->refresh();
  (needsPassword ? static_cast<QWidget*>(password_) : place_)->setFocus();
  closeWithFolder(context, poolName);
}

QString SubscribeSheet::sharers(const std::string& poolName) const {
  constexpr int MostNamed = 3;
  QStringList names;
  if (const auto participants = context_.operations.participants(poolName)) {
    for (const auto& info : *participants) {
      if (!info.isLocal) names += personText(info.address.userId());
    }
  }
  QString who;
  if (names.size() > MostNamed) {
    who = Zolvar::tr("Shared by %n user(s).", nullptr, static_cast<int>(names.size()));
  } else if (!names.isEmpty()) {
    who = Zolvar::tr("Shared by %1.").arg(QLocale().createSeparatedList(names));
  }
  const QString what =
      Zolvar::tr("The files arrive in a folder on this computer and stay in step.");
  return who.isEmpty() ? what : who + ' ' + what;
}

void SubscribeSheet::accept() {
  if (!controller_.isAcceptable()) return;
  const std::string password = password_->text().toStdString();
  controller_.doSubscribe(password.empty() ? std::nullopt : std::optional(password),
                          ending(context_, place_->note(), Zolvar::tr("Subscribing failed.")));
}

}  // namespace zolvar
