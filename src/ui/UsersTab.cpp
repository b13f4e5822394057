#include "ui/UsersTab.h"

#include <QAction>
#include <QHeaderView>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>

#include "app/Operations.h"
#include "ui/EmptyState.h"
#include "ui/Sheets.h"
#include "ui/TabParts.h"
#include "ui/Texts.h"
#include "ui/WindowMemory.h"

namespace zolvar {

UsersTab::UsersTab(WindowContext& context, WindowMemory& memory, QWidget* parent)
    : QWidget(parent),
      context_(context),
      model_(context.application, context.operations, context.colors) {
  view_ = new QTableView(this);
  view_->setModel(&model_);
  setUpTable(*view_, Zolvar::tr("Users"));
  view_->setSelectionMode(QAbstractItemView::SingleSelection);
  view_->verticalHeader()->setDefaultSectionSize(ParticipantsModel::PictureSide + 10);
  view_->setIconSize({ParticipantsModel::PictureSide, ParticipantsModel::PictureSide});
  if (!memory.restore("ColumnsUsers", *view_->horizontalHeader())) {
    constexpr int Widths[] = {180, 140, 160};
    for (int column = 0; column < 3; ++column) view_->setColumnWidth(column, Widths[column]);
  }
  sync_ = makeAction(*view_, "view-refresh", "sync", Zolvar::tr("S&ync With"),
                     Zolvar::tr("Fetch this user's changes now"));
  ignore_ = makeAction(*view_, "action-unavailable", "ignore", Zolvar::tr("&Ignore"),
                       Zolvar::tr("Say no more about this user's different password"));
  nobody_ = new EmptyState("user", this);
  setFocusProxy(view_);
  stack_ = new QStackedWidget(this);
  stack_->addWidget(nobody_);
  stack_->addWidget(view_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(stack_, 1);
  layout->addWidget(buttonRow({nullptr, ignore_, sync_}, this));

  connect(sync_, &QAction::triggered, this, &UsersTab::syncWithSelected);
  connect(ignore_, &QAction::triggered, this, &UsersTab::ignoreSelected);
  connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &UsersTab::updateActions);
  updateActions();
}

void UsersTab::setFolder(const std::string& poolName) {
  poolName_ = poolName;
  model_.setFolder(poolName);
  nobody_->say(Zolvar::tr("Nobody else is here"),
               Zolvar::tr("Whoever runs Zolvar on this network sees “%1” in the list and can "
                          "subscribe to it.")
                   .arg(toQt(poolName)));
  refresh();
}

void UsersTab::refresh() {
  model_.update();
  stack_->setCurrentIndex(model_.rowCount() == 0 ? 0 : 1);
  updateActions();
}

void UsersTab::saveColumns(WindowMemory& memory) const {
  memory.save("ColumnsUsers", *view_->horizontalHeader());
}

const ParticipantInfo* UsersTab::selected() const {
  const QModelIndex current = view_->currentIndex();
  const bool isSelected = view_->selectionModel()->isRowSelected(current.row(), {});
  return current.isValid() && isSelected ? model_.info(current) : nullptr;
}

void UsersTab::updateActions() {
  const ParticipantInfo* user = selected();
  sync_->setEnabled(user != nullptr);
  ignore_->setEnabled(user != nullptr);
  ignore_->setText(user != nullptr && user->isIgnored ? Zolvar::tr("Stop &Ignoring")
                                                      : Zolvar::tr("&Ignore"));
}

void UsersTab::syncWithSelected() {
  const ParticipantInfo* user = selected();
  if (user == nullptr) return;
  const auto started = context_.operations.syncWith(poolName_, user->address.userId());
  if (!started && context_.sheets != nullptr) {
    context_.sheets->showProblem(Zolvar::tr("No sync was started."),
                                 said(refusalText(started.error())));
  }
}

void UsersTab::ignoreSelected() {
  const ParticipantInfo* user = selected();
  if (user == nullptr) return;
  const auto done = context_.operations.ignore(poolName_, user->address.userId(), !user->isIgnored);
  if (!done && context_.sheets != nullptr) {
    context_.sheets->showProblem(Zolvar::tr("The user cannot be ignored."),
                                 said(refusalText(done.error())));
  }
}

}  // namespace zolvar
