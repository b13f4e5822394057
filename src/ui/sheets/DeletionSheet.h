#pragma once

#include <memory>
#include <string>

#include "ui/sheets/QuestionSheet.h"

class QLabel;
class QListView;

namespace zolvar {

struct Alert;
struct DeleteQuestion;

/// The question about vanished files, with all of them where the text names only some; it can also
/// stay open for later. Main thread.
class DeletionSheet : public QuestionSheet {
  Q_OBJECT

 public:
  /// `describe`: a file as people know it.
  DeletionSheet(const Alert& alert, Answered answered,
                std::function<std::string(const std::string& path)> describe, QWidget* window);
  /// They may be known only a moment after the question, and become fewer.
  void showFiles(const std::shared_ptr<const DeleteQuestion>& question);

 private:
  class Files;

  Files* files_;
  QListView* list_;
  QLabel* label_;
};

}  // namespace zolvar
