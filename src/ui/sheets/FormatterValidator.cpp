#include "ui/sheets/FormatterValidator.h"

namespace zolvar {

QValidator::State FormatterValidator::validate(QString& input, int& position) const {
  TypedText typed;
  typed.text = input.toStdString();
  typed.selectionStart = static_cast<std::size_t>(input.left(position).toUtf8().size());
  const auto verdict = formatter_->check(typed);
  if (verdict.isValid) return Acceptable;
  if (!verdict.corrected) return Invalid;
  const std::string& clean = verdict.corrected->text;
  input = QString::fromStdString(clean);
  position = static_cast<int>(
      QString::fromStdString(clean.substr(0, verdict.corrected->selectionStart)).size());
  return Acceptable;
}

}  // namespace zolvar
