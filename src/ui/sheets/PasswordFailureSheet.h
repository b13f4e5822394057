#pragma once

#include <functional>

#include "app/FrontEnd.h"
#include "ui/sheets/Sheet.h"

class QButtonGroup;

namespace zolvar {

/// What to do about a participant who has another password: three answers, or none. Main thread.
class PasswordFailureSheet : public Sheet {
  Q_OBJECT

 public:
  using Answered = std::function<void(PasswordAnswer)>;

  PasswordFailureSheet(const PasswordFailureText& text, Answered answered, QWidget* window);
  void done(int result) override;

 private:
  Answered answered_;
  QButtonGroup* answers_;
};

}  // namespace zolvar
