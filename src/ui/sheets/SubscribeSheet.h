#pragma once

#include "app/SheetsController.h"
#include "ui/sheets/Sheet.h"

class QLineEdit;

namespace zolvar {

class FolderPlaceEdit;

/// Subscribes to a folder that others share: where it is to lie, and its password. Main thread.
class SubscribeSheet : public Sheet {
  Q_OBJECT

 public:
  /// Requires: the pool.
  SubscribeSheet(WindowContext& context, const std::string& poolName, QWidget* window);
  void accept() override;

 private:
  [[nodiscard]] QString sharers(const std::string& poolName) const;

  WindowContext& context_;
  SheetsController controller_;
  FolderPlaceEdit* place_;
  QLineEdit* password_;
};

}  // namespace zolvar
