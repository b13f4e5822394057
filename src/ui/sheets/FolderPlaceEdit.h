#pragma once

#include <QWidget>
#include <string>

class QLineEdit;

namespace zolvar {

class NoteLabel;
class SheetsController;

/// The folder in which a synced folder lies: typed, or chosen in the desktop's chooser, with what
/// the controller says about it live below. The controller outlives it. Main thread.
class FolderPlaceEdit : public QWidget {
  Q_OBJECT

 public:
  FolderPlaceEdit(SheetsController& controller, std::string homeFolder, QWidget* parent);

  /// For the label's mnemonic.
  [[nodiscard]] QLineEdit& edit() { return *edit_; }
  [[nodiscard]] NoteLabel& note() { return *note_; }
  /// Shows the controller's path anew.
  void refresh();

 Q_SIGNALS:
  void changed();

 private:
  void choose();
  void judge();

  SheetsController& controller_;
  std::string homeFolder_;
  QLineEdit* edit_;
  NoteLabel* note_;
};

}  // namespace zolvar
