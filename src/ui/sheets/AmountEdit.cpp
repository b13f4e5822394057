#include "ui/sheets/AmountEdit.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QSpinBox>
#include <algorithm>

#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr unsigned long Factors[] = {1, 1024};

}  // namespace

AmountEdit::AmountEdit(const Kind& kind, QWidget* parent)
    : QWidget(parent), least_(kind.least), most_(kind.most) {
  number_ = new QSpinBox(this);
  number_->setSpecialValueText(kind.zero);
  number_->setAccessibleName(kind.name);
  number_->setGroupSeparatorShown(true);
  number_->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
  unit_ = new QComboBox(this);
  unit_->addItems({kind.small, kind.large});
  unit_->setAccessibleName(Zolvar::tr("Unit"));
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(number_, 1);
  layout->addWidget(unit_);
  setFocusProxy(number_);
  limit();
  connect(unit_, &QComboBox::currentIndexChanged, this, &AmountEdit::limit);
  connect(number_, &QSpinBox::editingFinished, this, [this] {
    if (unit_->currentIndex() == 0) number_->setValue(static_cast<int>(value()));
  });
}

void AmountEdit::limit() {
  number_->setMaximum(static_cast<int>(most_ / Factors[unit_->currentIndex()]));
}

void AmountEdit::setValue(unsigned long value) {
  const bool isLarge = value > 0 && value % Factors[1] == 0;
  unit_->setCurrentIndex(isLarge ? 1 : 0);
  number_->setValue(static_cast<int>(std::min(value, most_) / Factors[isLarge ? 1 : 0]));
}

unsigned long AmountEdit::value() const {
  const unsigned long value =
      static_cast<unsigned long>(number_->value()) * Factors[unit_->currentIndex()];
  return value == 0 ? 0 : std::max(value, least_);
}

}  // namespace zolvar
