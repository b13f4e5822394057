#include "ui/FolderHeader.h"

#include <QEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

#include "app/FolderRules.h"
#include "app/VisibleFiles.h"
#include "ui/ElidingLabel.h"
#include "ui/Icons.h"
#include "ui/StateTexts.h"
#include "ui/TabParts.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr int IconSide = 44;  // device-independent pixels, as all of these
constexpr int StateIconSide = 18;
constexpr double NameSize = 1.45;  // of the ordinary font

QString placeText(const PoolInfo& info, const std::string& home) {
  if (info.folder.empty()) return Zolvar::tr("Shared by others on this network");
  const std::string path = abbreviateHome(info.folder, home);
  const QString place = toQt(pathForDisplay(path));
  return QGuiApplication::isRightToLeft() ? QString(place).replace(u'▸', u'◂') : place;
}

}  // namespace

FolderHeader::FolderHeader(const QList<QAction*>& actions, std::string homeFolder, QWidget* parent)
    : QWidget(parent), homeFolder_(std::move(homeFolder)) {
  icon_ = new QLabel(this);
  name_ = new ElidingLabel(Qt::ElideRight, this);
  QFont font = name_->font();
  font.setPointSizeF(font.pointSizeF() * NameSize);
  font.setWeight(QFont::DemiBold);
  name_->setFont(font);
  place_ = new ElidingLabel(Qt::ElideMiddle, this);
  stateIcon_ = new QLabel(this);
  state_ = new QLabel(this);
  QFont bold = state_->font();
  bold.setBold(true);
  state_->setFont(bold);
  explanation_ = new ElidingLabel(Qt::ElideRight, this);
  bar_ = new QProgressBar(this);
  bar_->setRange(0, 1000);
  bar_->setTextVisible(false);
  bar_->setMaximumHeight(8);
  bar_->setAccessibleName(Zolvar::tr("Progress of the fetch"));
  figures_ = new ElidingLabel(Qt::ElideRight, this);

  auto* titles = new QVBoxLayout;
  titles->setSpacing(1);
  titles->addWidget(name_);
  titles->addWidget(place_);
  auto* first = new QHBoxLayout;
  first->setSpacing(12);
  first->addWidget(icon_);
  first->addLayout(titles, 1);
  first->addWidget(buttonRow(actions, this));
  auto* second = new QHBoxLayout;
  second->setSpacing(8);
  second->addWidget(stateIcon_);
  second->addWidget(state_);
  second->addWidget(explanation_, 1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 12, 14, 8);
  layout->setSpacing(8);
  layout->addLayout(first);
  layout->addLayout(second);
  layout->addWidget(bar_);
  layout->addWidget(figures_);
  faint();
}

void FolderHeader::faint() {
  const double ratio = devicePixelRatioF();
  const char* const icon = isAddressFolder_ ? "contacts" : "zolvar";
  icon_->setPixmap(ownIcon(icon).pixmap(QSize(IconSide, IconSide), ratio));
  stateIcon_->setPixmap(stateIcon(kind_).pixmap(QSize(StateIconSide, StateIconSide), ratio));
  QPalette palette = this->palette();
  palette.setColor(QPalette::WindowText,
                   faintColor(palette, QPalette::WindowText, QPalette::Window));
  for (QLabel* label : {place_, explanation_, figures_}) label->setPalette(palette);
}

void FolderHeader::show(const PoolInfo& info, const std::optional<TransferProgress>& progress) {
  name_->setText(toQt(info.displayName));
  place_->setText(placeText(info, homeFolder_));
  if (kind_ != shownKind(info) || isAddressFolder_ != info.isAddressFolder) {
    kind_ = shownKind(info);
    isAddressFolder_ = info.isAddressFolder;
    faint();
  }
  state_->setText(stateText(info, progress));
  // A trouble has a line of its own, and may be another reason than the usual one.
  explanation_->setText(info.trouble.empty() ? stateExplanation(info) : QString());
  const bool isFetching = progress && progress->filesWanted > 0;
  bar_->setVisible(isFetching);
  figures_->setVisible(isFetching);
  if (!isFetching) return;
  bar_->setValue(progressPermille(*progress));
  figures_->setText(progressText(*progress));
}

void FolderHeader::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange) faint();
  QWidget::changeEvent(event);
}

}  // namespace zolvar
