#include "ui/sheets/PasswordFailureSheet.h"

#include <QButtonGroup>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <utility>

#include "ui/Icons.h"
#include "ui/Texts.h"

namespace zolvar {

PasswordFailureSheet::PasswordFailureSheet(const PasswordFailureText& text, Answered answered,
                                           QWidget* window)
    : Sheet(window), answered_(std::move(answered)) {
  introduce(ownIcon("lock"), "Zolvar", said(text.message), said(text.informative));
  answers_ = new QButtonGroup(this);
  body().addSpacing(fontMetrics().height() / 2);
  for (const auto& resolution : text.resolutions) {
    auto* button = new QRadioButton(said(resolution).replace('&', "&&"), this);
    answers_->addButton(button, static_cast<int>(answers_->buttons().size()));
    body().addWidget(button);
  }
  answers_->button(0)->setChecked(true);
  answers_->button(0)->setFocus();
  addButton(Zolvar::tr("OK"), QDialogButtonBox::AcceptRole)->setDefault(true);
  addCancel();
}

void PasswordFailureSheet::done(int result) {
  Sheet::done(result);
  const auto answered = std::exchange(answered_, {});
  if (!answered) return;
  answered(result == Accepted ? static_cast<PasswordAnswer>(answers_->checkedId())
                              : PasswordAnswer::Cancelled);
}

}  // namespace zolvar
