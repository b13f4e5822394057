#pragma once

#include "ui/sheets/Sheet.h"

namespace zolvar {

/// What is new in this version. Main thread.
class ReleaseNotesPanel : public Sheet {
  Q_OBJECT

 public:
  ReleaseNotesPanel(const std::string& version, QWidget* window);
};

}  // namespace zolvar
