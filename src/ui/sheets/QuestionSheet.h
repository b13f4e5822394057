#pragma once

#include <functional>

#include "ui/sheets/Sheet.h"

class QCheckBox;

namespace zolvar {

/// Says something, or asks what is answered by one of several buttons. Main thread.
class QuestionSheet : public Sheet {
  Q_OBJECT

 public:
  struct Words {
    QString heading;
    QString text;
    QStringList buttons;  ///< the answers, the first is the default
    QString close;        ///< the button that answers nothing; empty: there is none
    bool isWarning = false;
    bool isDestructive = false;  ///< then the one that answers nothing is the default
  };
  /// Told the answer's place among the buttons; not called when the sheet is closed otherwise.
  using Answered = std::function<void(int index)>;

  QuestionSheet(const Words& words, Answered answered, QWidget* window);

  void setAnswered(Answered answered) { answered_ = std::move(answered); }
  /// Closes without an answer.
  void withdraw();
  /// Adds a check box; whether it was checked is `isSilenced` when the answer comes.
  void offerSilence();
  [[nodiscard]] bool isSilenced() const;
  void done(int result) override;

 private:
  Answered answered_;
  int answer_ = -1;
  QCheckBox* silence_ = nullptr;
};

}  // namespace zolvar
