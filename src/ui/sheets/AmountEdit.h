#pragma once

#include <QWidget>

class QComboBox;
class QSpinBox;

namespace zolvar {

/// A whole number of something that comes in two units, the larger being 1,024 of the smaller.
/// Main thread.
class AmountEdit : public QWidget {
 public:
  struct Kind {
    QString name;  ///< for screen readers
    QString small;
    QString large;
    QString zero;             ///< what 0 means
    unsigned long least = 0;  ///< of what is more than 0
    unsigned long most = 0;
  };
  AmountEdit(const Kind& kind, QWidget* parent);

  // In the smaller unit.
  void setValue(unsigned long value);
  [[nodiscard]] unsigned long value() const;
  [[nodiscard]] QSpinBox& number() { return *number_; }

 private:
  void limit();

  unsigned long least_;
  unsigned long most_;
  QSpinBox* number_;
  QComboBox* unit_;
};

}  // namespace zolvar
