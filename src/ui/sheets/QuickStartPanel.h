#pragma once

#include "ui/sheets/Sheet.h"

namespace zolvar {

/// How to begin, in three steps with pictures. Main thread.
class QuickStartPanel : public Sheet {
  Q_OBJECT

 public:
  explicit QuickStartPanel(QWidget* window);

 Q_SIGNALS:
  void shareWanted();
};

}  // namespace zolvar
