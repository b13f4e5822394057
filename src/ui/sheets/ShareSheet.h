#pragma once

#include "app/SheetsController.h"
#include "ui/sheets/Sheet.h"

class QLineEdit;

namespace zolvar {

class FolderPlaceEdit;

/// Shares a folder of this computer: which one, and with what password. Main thread.
class ShareSheet : public Sheet {
  Q_OBJECT

 public:
  /// `path`: proposed, may be empty.
  ShareSheet(WindowContext& context, const std::string& path, QWidget* window);
  void accept() override;

 Q_SIGNALS:
  void wasShared(const std::string& poolName);

 private:
  WindowContext& context_;
  SheetsController controller_;
  FolderPlaceEdit* place_;
  QLineEdit* password_;
  QPushButton* share_;
};

}  // namespace zolvar
