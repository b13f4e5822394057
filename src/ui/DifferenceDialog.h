#pragma once

#include <QDialog>
#include <vector>

#include "ui/TextDifference.h"

namespace zolvar {

/// Shows how two versions of a text differ: lines of the one on red ground with "−", of the other
/// on green ground with "+". Deletes itself when closed. Main thread.
class DifferenceDialog : public QDialog {
  Q_OBJECT

 public:
  DifferenceDialog(const QString& file, const QString& left, const QString& right,
                   const std::vector<DifferenceLine>& lines, QWidget* parent);

 Q_SIGNALS:
  /// To look at both in the desktop's programs after all.
  void openBothWanted();
};

}  // namespace zolvar
