#pragma once

#include "ui/sheets/QuestionSheet.h"

class QLabel;
class QListView;
class QStringListModel;

namespace zolvar {

struct Alert;

/// The question about vanished files, with all of them where the text names only some; it can also
/// stay open for later. Main thread.
class DeletionSheet : public QuestionSheet {
  Q_OBJECT

 public:
  DeletionSheet(const Alert& alert, Answered answered, QWidget* window);
  /// They may be known only a moment after the question.
  void showFiles(const QStringList& files);

 private:
  QStringListModel* files_;
  QListView* list_;
  QLabel* label_;
};

}  // namespace zolvar
