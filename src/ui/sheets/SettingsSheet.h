#pragma once

#include "app/SheetsController.h"
#include "ui/sheets/Sheet.h"

class QCheckBox;
class QLineEdit;

namespace zolvar {

class NoteLabel;

/// The settings of one folder: its password, and whether there are notices about it. Main thread.
class SettingsSheet : public Sheet {
  Q_OBJECT

 public:
  /// Requires: the pool.
  SettingsSheet(WindowContext& context, const std::string& poolName, QWidget* window);
  void accept() override;

 private:
  [[nodiscard]] std::optional<std::string> wantedPassword() const;
  void judge();

  WindowContext& context_;
  std::string poolName_;
  SheetsController controller_;
  bool hadPassword_ = false;
  QCheckBox* hasPassword_;
  QLineEdit* password_;
  NoteLabel* note_;
  QCheckBox* notices_;
};

}  // namespace zolvar
