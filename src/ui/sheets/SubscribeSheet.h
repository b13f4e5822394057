#pragma once

#include "ui/sheets/PlaceSheet.h"

namespace zolvar {

/// Subscribes to a folder that others share: where it is to lie, and its password. Main thread.
class SubscribeSheet : public PlaceSheet {
  Q_OBJECT

 public:
  /// Requires: the pool.
  SubscribeSheet(WindowContext& context, const std::string& poolName, QWidget* window);
  void accept() override;

 private:
  [[nodiscard]] QString sharers(const std::string& poolName);
};

}  // namespace zolvar
