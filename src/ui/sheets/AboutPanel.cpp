#include "ui/sheets/AboutPanel.h"

#include <QApplication>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/WindowContext.h"
#include "ui/sheets/LongWords.h"

namespace zolvar {

AboutPanel::AboutPanel(WindowContext& context, QWidget* window) : Sheet(window) {
  const ProgramStatus status = context.operations.status();
  introduce(ownIcon("zolvar"), Zolvar::tr("About Zolvar"), "Zolvar",
            Zolvar::tr("Keeps folders in step between the computers of one local network, with no "
                       "server and no account."));
  auto* form = addForm();
  const auto add = [&](const QString& title, const QString& value) {
    auto* label = new QLabel(this);
    putWords(*label, value);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setAccessibleName(title + ' ' + value);
    label->setWordWrap(true);
    form->addRow(title, label);
  };
  add(Zolvar::tr("Version:"), toQt(status.version));
  add(Zolvar::tr("You are:"), toQt(status.userId));
  add(Zolvar::tr("Reached at port:"),
      status.port ? QString::number(*status.port) : Zolvar::tr("nobody reaches you now"));
  add(Zolvar::tr("License:"), Zolvar::tr("GNU General Public License, version 3. It comes without "
                                         "any warranty."));
  auto* close = addButton(Zolvar::tr("Close"), QDialogButtonBox::RejectRole);
  close->setDefault(true);
  close->setFocus();
  auto* toolkit = addButton(Zolvar::tr("About &Qt"), QDialogButtonBox::ActionRole);
  connect(toolkit, &QPushButton::clicked, this, [] { QApplication::aboutQt(); });
}

}  // namespace zolvar
