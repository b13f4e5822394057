#include "ui/sheets/SubscribeSheet.h"

#include <QLineEdit>
#include <QLocale>

#include "app/Application.h"
#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/FolderPlaceEdit.h"

namespace zolvar {

SubscribeSheet::SubscribeSheet(WindowContext& context, const std::string& poolName, QWidget* window)
    : PlaceSheet(context, window) {
  introduce(ownIcon("subscribe"), Zolvar::tr("Subscribe"),
            Zolvar::tr("Subscribe to '%1'").arg(toQt(poolName)), sharers(poolName));
  controller().subscribeToPool(poolName);
  const auto* presence = context.application.peer().presence(poolName);
  const bool needsPassword = context.operations.info(*presence).passwordRequired;
  const QString hint =
      Zolvar::tr("Ask the others for it: files come from those who have the same one.");
  fill(needsPassword ? Zolvar::tr("Required") : Zolvar::tr("None"),
       needsPassword ? hint : QString(), Zolvar::tr("&Subscribe"));
  (needsPassword ? static_cast<QWidget&>(password()) : place()).setFocus();
  closeWithFolder(context, poolName);
}

QString SubscribeSheet::sharers(const std::string& poolName) {
  constexpr int MostNamed = 3;
  QStringList names;
  if (const auto participants = context().operations.participants(poolName)) {
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
  if (!controller().isAcceptable()) return;
  const std::string typed = password().text().toStdString();
  controller().doSubscribe(typed.empty() ? std::nullopt : std::optional(typed),
                           ending(context(), place().note(), Zolvar::tr("Subscribing failed.")));
}

}  // namespace zolvar
