#pragma once

#include "ui/sheets/QuestionSheet.h"

namespace zolvar {

struct Alert;

/// The question about vanished files, with all of them where the text names only some; it can also
/// stay open for later. Main thread.
class DeletionSheet : public QuestionSheet {
  Q_OBJECT

 public:
  DeletionSheet(const Alert& alert, const QStringList& files, Answered answered, QWidget* window);
};

}  // namespace zolvar
