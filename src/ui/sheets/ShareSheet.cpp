#include "ui/sheets/ShareSheet.h"

#include <QLineEdit>
#include <QPointer>

#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/sheets/FolderPlaceEdit.h"
#include "util/PathRules.h"

namespace zolvar {

ShareSheet::ShareSheet(WindowContext& context, const std::string& path, QWidget* window)
    : PlaceSheet(context, window) {
  introduce(ownIcon("share"), Zolvar::tr("Share Folder"), Zolvar::tr("Share a folder"),
            Zolvar::tr("Everybody on this network who runs Zolvar sees it by its name and can "
                       "subscribe to it. The files stay where they are."));
  controller().addPool();
  controller().setPoolPath(path);
  fill(Zolvar::tr("None: everybody can subscribe"),
       Zolvar::tr("Whoever enters the same password gets the files."), Zolvar::tr("&Share"));
  place().setFocus();
}

void ShareSheet::accept() {
  if (!controller().isAcceptable()) return;
  const std::string name(lastPathComponent(controller().poolPath()));
  controller().doAddPool(
      password().text().toStdString(),
      ending(context(), place().note(), Zolvar::tr("The folder cannot be shared."),
             [self = QPointer(this), name] {
               if (self) Q_EMIT self->wasShared(name);
             }));
}

}  // namespace zolvar
