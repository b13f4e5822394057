#include "ui/DetailsPane.h"

#include <QLabel>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "app/Application.h"
#include "app/Operations.h"
#include "net/KDPeer.h"
#include "ui/ElidingLabel.h"
#include "ui/Texts.h"
#include "ui/VersionTreeView.h"

namespace zolvar {

DetailsPane::DetailsPane(WindowContext& context, QWidget* parent)
    : QWidget(parent), context_(context) {
  title_ = new ElidingLabel(Qt::ElideMiddle, this);
  title_->setContentsMargins(4, 2, 4, 2);
  hint_ = new QLabel(this);
  hint_->setAlignment(Qt::AlignCenter);
  hint_->setWordWrap(true);
  hint_->setEnabled(false);
  tree_ = new VersionTreeView(context.application.peer().userId(), context.colors, this);
  stack_ = new QStackedWidget(this);
  stack_->addWidget(hint_);
  stack_->addWidget(tree_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 4, 0, 0);
  layout->setSpacing(2);
  layout->addWidget(title_);
  layout->addWidget(stack_, 1);
  say(Zolvar::tr("Select a file to see its versions."));
}

void DetailsPane::say(const QString& words) {
  hint_->setText(words);
  stack_->setCurrentWidget(hint_);
}

void DetailsPane::showFile(const std::string& poolName, const std::string& path,
                           const std::optional<VersionId>& version) {
  const bool isSame = poolName == poolName_ && path == path_;
  poolName_ = poolName;
  path_ = path;
  wanted_ = version;
  if (isSame && stack_->currentWidget() == tree_) {
    if (version) tree_->setCurrent(version);
    return;
  }
  title_->setText(path.empty() ? QString() : Zolvar::tr("Versions of %1").arg(toQt(path)));
  title_->setVisible(!path.empty());
  if (path.empty()) return say(Zolvar::tr("Select a file to see its versions."));
  update();
}

void DetailsPane::update() {
  if (path_.empty() || !isVisible()) return;
  context_.operations.history(poolName_, path_,
                              [this, alive = std::weak_ptr<bool>(alive_), pool = poolName_,
                               path = path_](const Result<FileHistory>& history) {
                                if (alive.expired() || pool != poolName_ || path != path_) return;
                                if (!history)
                                  return say(Zolvar::tr("No version of this file is known yet."));
                                took(*history);
                              });
}

void DetailsPane::took(const FileHistory& history) {
  tree_->setHistory(history);
  if (wanted_) tree_->setCurrent(wanted_);
  wanted_.reset();
  stack_->setCurrentWidget(tree_);
  Q_EMIT historyKnown(history);
}

}  // namespace zolvar
