#include "ui/sheets/QuestionSheet.h"

#include <QCheckBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "ui/Icons.h"
#include "ui/Texts.h"

namespace zolvar {

QuestionSheet::QuestionSheet(const Words& words, Answered answered, QWidget* window)
    : Sheet(window), answered_(std::move(answered)) {
  introduce(ownIcon(words.isWarning ? "state-question" : "zolvar"), "Zolvar", words.heading,
            words.text.trimmed());
  QList<QAbstractButton*> answers;
  for (const QString& text : words.buttons) {
    auto* button = addButton(text, QDialogButtonBox::AcceptRole);
    button->setDefault(answers.isEmpty() && !words.isDestructive);
    answers.append(button);
  }
  // Comes before the box's own signal, which closes the sheet.
  connect(&buttons(), &QDialogButtonBox::clicked, this, [this, answers](QAbstractButton* button) {
    answer_ = static_cast<int>(answers.indexOf(button));
  });
  if (words.close.isEmpty()) return;
  auto* close = addButton(words.close, QDialogButtonBox::RejectRole);
  if (!words.isDestructive) return;
  close->setDefault(true);
  close->setFocus();
}

void QuestionSheet::withdraw() {
  answered_ = {};
  reject();
}

void QuestionSheet::offerSilence() {
  silence_ = new QCheckBox(Zolvar::tr("Do &not ask again"), this);
  body().addSpacing(fontMetrics().height() / 2);
  body().addWidget(silence_);
  setTabOrder(silence_, buttons().buttons().first());
}

bool QuestionSheet::isSilenced() const { return silence_ != nullptr && silence_->isChecked(); }

void QuestionSheet::done(int result) {
  Sheet::done(result);
  if (answer_ < 0) return;
  if (const auto answered = std::exchange(answered_, {})) answered(answer_);
}

}  // namespace zolvar
