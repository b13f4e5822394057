#pragma once

#include <QValidator>
#include <memory>

#include "app/QMCharFilterFormatter.h"

namespace zolvar {

/// Lets a formatter clean what is typed or pasted into a line edit, and keeps the cursor in its
/// place. Main thread.
class FormatterValidator : public QValidator {
 public:
  FormatterValidator(std::unique_ptr<QMCharFilterFormatter> formatter, QObject* parent)
      : QValidator(parent), formatter_(std::move(formatter)) {}

  State validate(QString& input, int& position) const override;

 private:
  std::unique_ptr<QMCharFilterFormatter> formatter_;
};

}  // namespace zolvar
