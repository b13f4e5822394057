#pragma once

#include <QLineEdit>

namespace zolvar {

/// Where a password is typed: hidden, with a button that shows it. Main thread.
class PasswordEdit : public QLineEdit {
 public:
  explicit PasswordEdit(QWidget* parent);
};

}  // namespace zolvar
