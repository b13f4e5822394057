#include "ui/sheets/PasswordEdit.h"

#include <QAction>

#include "ui/Icons.h"
#include "ui/Texts.h"
#include "ui/sheets/FormatterValidator.h"

namespace zolvar {

PasswordEdit::PasswordEdit(QWidget* parent) : QLineEdit(parent) {
  setEchoMode(QLineEdit::Password);
  setAccessibleName(Zolvar::tr("Password"));
  // A pasted password often brings its line's end along.
  setValidator(new FormatterValidator(std::make_unique<QMCharFilterFormatter>(), this));
  auto* show = addAction(icon("view-reveal-symbolic", "visible"), QLineEdit::TrailingPosition);
  show->setCheckable(true);
  show->setText(Zolvar::tr("Show the password"));
  show->setToolTip(show->text());
  connect(show, &QAction::toggled, this,
          [this](bool shows) { setEchoMode(shows ? QLineEdit::Normal : QLineEdit::Password); });
}

}  // namespace zolvar
