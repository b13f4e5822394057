#include "ui/FolderList.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <utility>

#include "ui/FolderDelegate.h"
#include "ui/FolderListModel.h"
#include "ui/Icons.h"
#include "ui/Texts.h"

namespace zolvar {

void FolderFilter::setWords(const QString& words) {
  words_ = words;
  invalidateFilter();
}

void FolderFilter::reconsider() { invalidateFilter(); }

void FolderFilter::setShowsOnlyMine(bool only) {
  showsOnlyMine_ = only;
  invalidateFilter();
}

bool FolderFilter::filterAcceptsRow(int row, const QModelIndex& parent) const {
  if (!parent.isValid()) {
    const QModelIndex section = sourceModel()->index(row, 0);
    for (int each = 0; each < sourceModel()->rowCount(section); ++each) {
      if (filterAcceptsRow(each, section)) return true;
    }
    return false;
  }
  if (showsOnlyMine_ && parent.row() == FolderListModel::Network) return false;
  const QString name =
      sourceModel()->index(row, 0, parent).data(FolderListModel::NameRole).toString();
  return words_.isEmpty() || name.contains(words_, Qt::CaseInsensitive);
}

FolderList::FolderList(FolderListModel& model, QWidget* parent) : QWidget(parent), model_(model) {
  filter_ = new FolderFilter(this);
  filter_->setSourceModel(&model);
  field_ = new QLineEdit(this);
  field_->setPlaceholderText(Zolvar::tr("Filter"));
  field_->setAccessibleName(Zolvar::tr("Filter folders"));
  field_->setClearButtonEnabled(true);
  field_->addAction(icon("edit-find-symbolic", "search"), QLineEdit::LeadingPosition);
  view_ = new QTreeView(this);
  view_->setModel(filter_);
  view_->setItemDelegate(new FolderDelegate(view_));
  view_->setHeaderHidden(true);
  view_->setRootIsDecorated(false);
  view_->setItemsExpandable(false);
  view_->setIndentation(0);
  view_->setFrameShape(QFrame::NoFrame);
  view_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  view_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  view_->setContextMenuPolicy(Qt::CustomContextMenu);
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setAccessibleName(Zolvar::tr("Folders"));
  footer_ = new QWidget(this);
  auto* top = new QHBoxLayout;
  top->setContentsMargins(8, 8, 8, 8);
  top->addWidget(field_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addLayout(top);
  layout->addWidget(view_, 1);
  layout->addWidget(footer_);
  setFocusProxy(view_);

  connect(field_, &QLineEdit::textChanged, filter_, &FolderFilter::setWords);
  connect(field_, &QLineEdit::returnPressed, view_, qOverload<>(&QWidget::setFocus));
  connect(filter_, &QAbstractItemModel::rowsInserted, this, &FolderList::rowsCame);
  connect(filter_, &QAbstractItemModel::modelReset, this, &FolderList::rowsCame);
  connect(&model_, &FolderListModel::updating, this, [this] { isUpdating_ = true; });
  connect(&model_, &FolderListModel::updated, this, &FolderList::listUpdated);
  connect(view_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          &FolderList::currentBecame);
  connect(view_, &QTreeView::activated, this, [this](const QModelIndex& index) {
    const QString name = index.data(FolderListModel::NameRole).toString();
    if (!name.isEmpty()) Q_EMIT activated(name.toStdString());
  });
  connect(view_, &QTreeView::customContextMenuRequested, this, [this](const QPoint& position) {
    if (!view_->indexAt(position).data(FolderListModel::NameRole).isValid()) return;
    Q_EMIT menuWanted(view_->viewport()->mapToGlobal(position));
  });
  rowsCame();
}

void FolderList::setFooter(const QList<QAction*>& actions) {
  delete footer_->layout();
  auto* layout = new QHBoxLayout(footer_);
  layout->setContentsMargins(6, 4, 6, 4);
  layout->setSpacing(2);
  for (QAction* action : actions) {
    if (action == nullptr) {
      layout->addStretch();
      continue;
    }
    auto* button = new QToolButton(footer_);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    button->setIconSize({18, 18});
    button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(action->iconText());
    layout->addWidget(button);
  }
}

void FolderList::setShowsOnlyMine(bool only) { filter_->setShowsOnlyMine(only); }

void FolderList::focusFilter() {
  field_->setFocus(Qt::ShortcutFocusReason);
  field_->selectAll();
}

QModelIndex FolderList::shown(const std::string& poolName) const {
  return filter_->mapFromSource(model_.indexOf(poolName));
}

std::string FolderList::selected() const { return selected_; }

void FolderList::select(const std::string& poolName) {
  const QModelIndex index = shown(poolName);
  if (!index.isValid()) {
    wanted_ = poolName;
    return;
  }
  wanted_.clear();
  view_->setCurrentIndex(index);
  view_->scrollTo(index);
}

void FolderList::rowsCame() {
  view_->expandAll();
  if (!isUpdating_) listUpdated();
}

void FolderList::listUpdated() {
  filter_->reconsider();
  isUpdating_ = false;
  view_->expandAll();
  const bool hasCome = !wanted_.empty() && shown(wanted_).isValid();
  if (hasCome) return select(std::string(wanted_));
  if (const QModelIndex kept = shown(selected_); !selected_.empty() && kept.isValid()) {
    if (view_->currentIndex() != kept) view_->setCurrentIndex(kept);
    return;
  }
  if (!view_->currentIndex().data(FolderListModel::NameRole).isValid()) {
    const QModelIndex first = filter_->index(0, 0, filter_->index(0, 0));
    if (first.isValid() && wanted_.empty()) view_->setCurrentIndex(first);
  }
  currentBecame(view_->currentIndex());
}

void FolderList::currentBecame(const QModelIndex& current) {
  if (isUpdating_) return;
  const std::string name = current.data(FolderListModel::NameRole).toString().toStdString();
  if (name == selected_) return;
  selected_ = name;
  Q_EMIT selectionChanged(name);
}

}  // namespace zolvar
