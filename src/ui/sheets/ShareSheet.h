#pragma once

#include "ui/sheets/PlaceSheet.h"

namespace zolvar {

/// Shares a folder of this computer: which one, and with what password. Main thread.
class ShareSheet : public PlaceSheet {
  Q_OBJECT

 public:
  /// `path`: proposed, may be empty.
  ShareSheet(WindowContext& context, const std::string& path, QWidget* window);
  void accept() override;

 Q_SIGNALS:
  void wasShared(const std::string& poolName);
};

}  // namespace zolvar
