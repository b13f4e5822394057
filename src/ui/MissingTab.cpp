#include "ui/MissingTab.h"

#include <QAction>
#include <QHeaderView>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>
#include <utility>

#include "app/Operations.h"
#include "ui/EmptyState.h"
#include "ui/Selections.h"
#include "ui/Sheets.h"
#include "ui/TabParts.h"
#include "ui/Texts.h"
#include "ui/WindowMemory.h"

namespace zolvar {

MissingTab::MissingTab(WindowContext& context, WindowMemory& memory, QWidget* parent)
    : QWidget(parent), context_(context) {
  view_ = new QTableView(this);
  model_.setDescription(
      [this](const std::string& path) { return context_.operations.describe(poolName_, path); });
  view_->setModel(&model_);
  setUpTable(*view_, Zolvar::tr("Missing files"));
  view_->setTextElideMode(Qt::ElideMiddle);
  view_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
  if (!memory.restore("ColumnsMissing", *view_->horizontalHeader())) {
    constexpr int PathWidth = 360;
    constexpr int HoldersWidth = 180;
    view_->setColumnWidth(MissingModel::Path, PathWidth);
    view_->setColumnWidth(MissingModel::Holders, HoldersWidth);
  }
  get_ = makeAction(*view_, "view-refresh", "subscribe", Zolvar::tr("&Fetch Now"),
                    Zolvar::tr("Ask everybody for the missing files now"));
  delete_ = makeAction(*view_, "edit-delete", "remove", Zolvar::tr("&Delete Everywhere…"),
                       Zolvar::tr("Give the selected files up, here and at everybody"));
  delete_->setShortcut(QKeySequence::Delete);
  delete_->setShortcutContext(Qt::WidgetShortcut);
  nothing_ = new EmptyState("state-instep", this);
  nothing_->say(Zolvar::tr("Nothing is missing"),
                Zolvar::tr("Every file that the others have told of is here."));
  setFocusProxy(view_);
  stack_ = new QStackedWidget(this);
  stack_->addWidget(nothing_);
  stack_->addWidget(view_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(stack_, 1);
  layout->addWidget(buttonRow({delete_, nullptr, get_}, this));

  connect(get_, &QAction::triggered, this, &MissingTab::getAgain);
  connect(delete_, &QAction::triggered, this, &MissingTab::deleteEverywhere);
  connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    updateActions();
    tellFile();
  });
  connect(&model_, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
    for (const int row : selectedRows(*view_->selectionModel())) kept_.push_back(model_.path(row));
  });
  connect(&model_, &QAbstractItemModel::modelReset, this, [this] {
    std::vector<int> rows;
    for (const auto& path : std::exchange(kept_, {})) {
      if (const int row = model_.rowOf(path); row >= 0) rows.push_back(row);
    }
    view_->selectionModel()->select(rowSelection(model_, rows), QItemSelectionModel::Select);
  });
  updateActions();
}

void MissingTab::show(const std::string& poolName, std::shared_ptr<const PoolSnapshot> snapshot) {
  if (poolName != poolName_) model_.setSnapshot(nullptr);
  poolName_ = poolName;
  model_.setSnapshot(std::move(snapshot));
  stack_->setCurrentIndex(model_.rowCount() == 0 ? 0 : 1);
  updateActions();
}

void MissingTab::saveColumns(WindowMemory& memory) const {
  memory.save("ColumnsMissing", *view_->horizontalHeader());
}

void MissingTab::updateActions() {
  get_->setEnabled(model_.rowCount() > 0);
  delete_->setEnabled(view_->selectionModel()->hasSelection());
}

void MissingTab::tellFile() {
  const QItemSelection selection = view_->selectionModel()->selection();
  const bool isOne = selection.size() == 1 && selection.front().height() == 1;
  Q_EMIT fileSelected(isOne ? model_.path(selection.front().top()) : std::string());
}

void MissingTab::getAgain() {
  const auto started = context_.operations.sync(poolName_);
  if (!started && context_.sheets != nullptr) {
    context_.sheets->showProblem(Zolvar::tr("No sync was started."),
                                 said(refusalText(started.error())));
  }
}

void MissingTab::deleteEverywhere() {
  std::vector<std::string> paths;
  for (const int row : selectedRows(*view_->selectionModel())) paths.push_back(model_.path(row));
  if (paths.empty()) return;
  // The engine asks whether this is really meant.
  const auto asked = context_.operations.deleteQueuedFiles(poolName_, std::move(paths));
  if (!asked && context_.sheets != nullptr) {
    context_.sheets->showProblem(Zolvar::tr("The files cannot be deleted."),
                                 said(refusalText(asked.error())));
  }
}

}  // namespace zolvar
