#pragma once

#include "ui/sheets/Sheet.h"

namespace zolvar {

/// What this program is, and who one is on the network. Main thread.
class AboutPanel : public Sheet {
  Q_OBJECT

 public:
  AboutPanel(WindowContext& context, QWidget* window);
};

}  // namespace zolvar
