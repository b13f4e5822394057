#include "ui/ConflictsTab.h"

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QStackedWidget>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/Application.h"
#include "app/Operations.h"
#include "ui/EmptyState.h"
#include "ui/MessageBar.h"
#include "ui/Selections.h"
#include "ui/Sheets.h"
#include "ui/TabParts.h"
#include "ui/Texts.h"
#include "ui/VersionComparison.h"
#include "ui/WindowMemory.h"

namespace zolvar {
namespace {

constexpr int MostUnfolded = 25;        // files that are shown with their versions from the start
constexpr std::size_t MostPeople = 30;  // in the menu

}  // namespace

ConflictsTab::ConflictsTab(WindowContext& context, WindowMemory& memory, QWidget* parent)
    : QWidget(parent),
      context_(context),
      model_(context.application.peer().userId(), context.colors) {
  view_ = new QTreeView(this);
  model_.setDescription(
      [this](const std::string& path) { return context_.operations.describe(poolName_, path); });
  view_->setModel(&model_);
  view_->setUniformRowHeights(true);
  view_->setAllColumnsShowFocus(true);
  view_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setContextMenuPolicy(Qt::ActionsContextMenu);
  view_->setTextElideMode(Qt::ElideMiddle);
  view_->setAccessibleName(Zolvar::tr("Files in conflict"));
  if (!memory.restore("ColumnsConflicts", *view_->header())) {
    constexpr int Widths[] = {300, 150, 80};
    for (int column = 0; column < 3; ++column) view_->setColumnWidth(column, Widths[column]);
  }
  use_ = makeAction(*view_, "dialog-ok-apply", "use", Zolvar::tr("&Use This Version"),
                    Zolvar::tr("Put the selected version into your folder"));
  drop_ = makeAction(*view_, "edit-delete", "remove", Zolvar::tr("&Delete This Version…"),
                     Zolvar::tr("Delete the selected version for everybody"));
  drop_->setShortcut(QKeySequence::Delete);
  drop_->setShortcutContext(Qt::WidgetShortcut);
  compare_ = makeAction(*view_, "view-split-left-right", "compare", Zolvar::tr("&Compare"),
                        Zolvar::tr("Look at the selected version beside the one that is here"));
  keepMine_ = makeAction(*view_, "user-home", "user", Zolvar::tr("&Keep Mine"),
                         Zolvar::tr("Settle the selected files: your version stays"));
  useTheirs_ = makeAction(*view_, "system-users", "subscribe", Zolvar::tr("Use &Theirs"),
                          Zolvar::tr("Settle the selected files: the others' version stays"));
  people_ = new QMenu(this);
  useFrom_ = makeAction(*view_, "avatar-default", "user", Zolvar::tr("Use Version &From"),
                        Zolvar::tr("Settle the selected files: one person's version stays"));
  useFrom_->setMenu(people_);
  undo_ = new QAction(Zolvar::tr("&Undo Choice"), this);
  undo_->setShortcut(QKeySequence::Undo);

  auto* hint = new QLabel(
      Zolvar::tr("Changed in two places at once. Nothing is lost: every version is kept until you "
                 "choose."),
      this);
  hint->setWordWrap(true);
  bar_ = new MessageBar(this);
  auto* page = new QWidget(this);
  auto* pageLayout = new QVBoxLayout(page);
  pageLayout->setContentsMargins(0, 0, 0, 0);
  pageLayout->addWidget(hint);
  pageLayout->addWidget(view_, 1);
  pageLayout->addWidget(
      buttonRow({keepMine_, useTheirs_, useFrom_, nullptr, compare_, drop_, use_}, page));
  none_ = new EmptyState("state-instep", this);
  none_->say(Zolvar::tr("No conflicts"),
             Zolvar::tr("When two people change one file at once, both versions are kept, and you "
                        "choose here."));
  setFocusProxy(view_);
  stack_ = new QStackedWidget(this);
  stack_->addWidget(none_);
  stack_->addWidget(page);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(bar_);
  layout->addWidget(stack_, 1);
  comparison_ = std::make_unique<VersionComparison>(context, *this, [this](const QString& words) {
    if (words.isEmpty()) return bar_->hide();
    bar_->say(words, MessageBar::Weight::Note);
  });

  connect(keepMine_, &QAction::triggered, this, [this] {
    settle({ConflictChoice::Kind::KeepMine, {}});
  });
  connect(useTheirs_, &QAction::triggered, this, [this] {
    settle({ConflictChoice::Kind::UseTheirs, {}});
  });
  connect(people_, &QMenu::aboutToShow, this, &ConflictsTab::fillPeople);
  connect(use_, &QAction::triggered, this, &ConflictsTab::useVersion);
  connect(drop_, &QAction::triggered, this, &ConflictsTab::dropVersion);
  connect(compare_, &QAction::triggered, this, &ConflictsTab::compareVersions);
  connect(undo_, &QAction::triggered, this, &ConflictsTab::undo);
  connect(view_, &QTreeView::activated, this, &ConflictsTab::compareVersions);
  connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    updateActions();
    tellFile();
  });
  const auto unfold = [this](const QModelIndex& parent, int first, int last) {
    if (parent.isValid() || model_.rowCount() > MostUnfolded) return;
    for (int row = first; row <= last; ++row) view_->expand(model_.index(row, 0));
  };
  connect(&model_, &QAbstractItemModel::rowsInserted, this, unfold);
  connect(&model_, &QAbstractItemModel::modelReset, this,
          [this, unfold] { unfold({}, 0, model_.rowCount() - 1); });
  updateActions();
}

ConflictsTab::~ConflictsTab() = default;

QList<QAction*> ConflictsTab::tabActions() const {
  return {use_, drop_, compare_, keepMine_, useTheirs_, useFrom_};
}

void ConflictsTab::show(const std::string& poolName, const std::string& folder,
                        std::shared_ptr<const PoolSnapshot> snapshot) {
  if (poolName != poolName_) {
    model_.setSnapshot(nullptr);
    bar_->hide();
  }
  poolName_ = poolName;
  folder_ = folder;
  model_.setSnapshot(std::move(snapshot));
  stack_->setCurrentIndex(model_.rowCount() == 0 ? 0 : 1);
  updateActions();
}

bool ConflictsTab::selectFile(const std::string& path) {
  const QModelIndex index = model_.indexOf(path);
  if (!index.isValid()) return false;
  view_->expand(index);
  view_->setCurrentIndex(index);
  view_->scrollTo(index, QAbstractItemView::PositionAtCenter);
  return true;
}

bool ConflictsTab::selectVersion(const std::string& path, const VersionId& version) {
  const QModelIndex index = model_.indexOf(path, version);
  if (!index.isValid()) return false;
  view_->expand(index.parent());
  view_->setCurrentIndex(index);
  view_->scrollTo(index);
  return true;
}

void ConflictsTab::noteHistory(const FileHistory& history) {
  for (const auto& version : history.versions) {
    if (version.size) model_.noteSize(history.path, version.id, *version.size);
  }
}

void ConflictsTab::saveColumns(WindowMemory& memory) const {
  memory.save("ColumnsConflicts", *view_->header());
}

// What is selected.

std::vector<Conflict> ConflictsTab::selectedConflicts() const {
  std::vector<const Conflict*> found;
  for (const QItemSelectionRange& range : view_->selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      found.push_back(model_.conflict(model_.index(row, 0, range.parent())));
    }
  }
  std::sort(found.begin(), found.end(),
            [](const auto* left, const auto* right) { return left->path < right->path; });
  found.erase(std::unique(found.begin(), found.end()), found.end());
  std::vector<Conflict> conflicts;
  for (const Conflict* conflict : found) conflicts.push_back(*conflict);
  return conflicts;
}

const Conflict* ConflictsTab::singleConflict() const {
  const QItemSelection selection = view_->selectionModel()->selection();
  const bool isOne = selection.size() == 1 && selection.front().height() == 1;
  return isOne ? model_.conflict(selection.front().topLeft()) : nullptr;
}

const ConflictVersion* ConflictsTab::singleVersion() const {
  if (singleConflict() == nullptr) return nullptr;
  return model_.version(view_->selectionModel()->selection().front().topLeft());
}

void ConflictsTab::updateActions() {
  undo_->setEnabled(!context_.lastUndo.files.empty());
  const Conflict* file = singleConflict();
  const ConflictVersion* version = singleVersion();
  const bool hasSelection = view_->selectionModel()->hasSelection();
  keepMine_->setEnabled(hasSelection);
  useTheirs_->setEnabled(hasSelection);
  useFrom_->setEnabled(hasSelection);
  use_->setEnabled(version != nullptr && !version->isLocal);
  drop_->setEnabled(version != nullptr);
  compare_->setEnabled(file != nullptr && file->versions.size() > 1);
}

void ConflictsTab::tellFile() {
  const Conflict* file = singleConflict();
  const ConflictVersion* version = singleVersion();
  Q_EMIT fileSelected(file != nullptr ? file->path : std::string(),
                      version != nullptr ? std::optional(version->id) : std::nullopt);
}

void ConflictsTab::fillPeople() {
  people_->clear();
  auto people = peopleIn(selectedConflicts());
  std::erase(people, context_.application.peer().userId());
  if (people.size() > MostPeople) people.resize(MostPeople);
  for (const auto& userId : people) {
    QAction* action = people_->addAction(personText(userId));
    connect(action, &QAction::triggered, this, [this, userId] {
      settle({ConflictChoice::Kind::FromPerson, userId});
    });
  }
}

// Decisions.

void ConflictsTab::settle(const ConflictChoice& choice) {
  auto conflicts = selectedConflicts();
  const std::size_t selected = conflicts.size();
  std::erase_if(conflicts,
                [&](const Conflict& conflict) { return !chosenVersion(conflict, choice); });
  if (conflicts.empty() || context_.sheets == nullptr) return;
  const auto count = static_cast<int>(conflicts.size());
  QString title;
  QString text = Zolvar::tr(
      "The other versions go to the Trash of those who have them, and everybody goes on with this "
      "one.");
  QString button;
  QString told;
  switch (choice.kind) {
    case ConflictChoice::Kind::KeepMine:
      title = Zolvar::tr("Keep your version of %n file(s)?", nullptr, count);
      button = Zolvar::tr("&Keep Mine");
      told = Zolvar::tr("Your version of %n file(s) stays.", nullptr, count);
      break;
    case ConflictChoice::Kind::UseTheirs:
      title = Zolvar::tr("Use the others' version of %n file(s)?", nullptr, count);
      text += ' ' + Zolvar::tr("Yours is kept for a while: Undo brings it back.");
      button = Zolvar::tr("Use &Theirs");
      told = Zolvar::tr("The others' version of %n file(s) is coming.", nullptr, count);
      break;
    case ConflictChoice::Kind::FromPerson: {
      const QString person = personText(choice.userId);
      title = Zolvar::tr("Use the version from %1 of %n file(s)?", nullptr, count).arg(person);
      text += ' ' + Zolvar::tr("Yours is kept for a while: Undo brings it back.");
      button = Zolvar::tr("&Use");
      told = Zolvar::tr("The version from %1 of %n file(s) is coming.", nullptr, count).arg(person);
      break;
    }
  }
  if (const auto left = static_cast<int>(selected) - count; left > 0) {
    text += "\n\n" + Zolvar::tr("%n selected file(s) have no such version and stay as they are.",
                                nullptr, left);
  }
  context_.sheets->confirm(title, text, button, [this, pool = poolName_, conflicts, choice, told] {
    context_.decisions.settle(pool, conflicts, choice, reporting(told));
  });
}

void ConflictsTab::useVersion() {
  const Conflict* file = singleConflict();
  const ConflictVersion* version = singleVersion();
  if (file == nullptr || version == nullptr || context_.sheets == nullptr) return;
  const QString told =
      Zolvar::tr("The version from %1 is coming.").arg(personText(version->id.userId));
  context_.sheets->confirmSwitch(
      file->path, version->id.userId, dateText(version->modTime).toStdString(),
      [this, pool = poolName_, conflict = *file, id = version->id, told] {
        context_.decisions.use(pool, conflict, id, reporting(told));
      });
}

void ConflictsTab::dropVersion() {
  const Conflict* file = singleConflict();
  const ConflictVersion* version = singleVersion();
  if (file == nullptr || version == nullptr || context_.sheets == nullptr) return;
  const QString person = personText(version->id.userId);
  const QString text =
      version->isLocal
          ? Zolvar::tr(
                "It is the one in your folder. It goes to the Trash of everybody who has "
                "it, and another version takes its place. Undo brings it back for you.")
          : Zolvar::tr(
                "It goes to the Trash of everybody who has it. Nothing changes in your "
                "folder.");
  context_.sheets->confirm(
      Zolvar::tr("Delete the version from %1 for everybody?").arg(person), text,
      Zolvar::tr("&Delete"), [this, pool = poolName_, conflict = *file, id = version->id, person] {
        context_.decisions.drop(
            pool, conflict, id,
            reporting(Zolvar::tr("The version from %1 is deleted.").arg(person)));
      });
}

void ConflictsTab::compareVersions() {
  const Conflict* file = singleConflict();
  if (file == nullptr || file->versions.size() < 2) return;
  const auto& versions = file->versions;
  const auto here = std::find_if(versions.begin(), versions.end(),
                                 [](const auto& version) { return version.isLocal; });
  const ConflictVersion& left = here != versions.end() ? *here : versions.front();
  const ConflictVersion* right = singleVersion();
  if (right == nullptr || right->id == left.id) {
    right = versions.front().id == left.id ? &versions[1] : &versions.front();
  }
  comparison_->compare(poolName_, folder_, file->path, left, *right);
}

void ConflictsTab::undo() {
  const Undo undone = std::exchange(context_.lastUndo, {});
  updateActions();
  if (undone.files.empty()) return;
  context_.decisions.undo(undone, [self = QPointer(this)](const auto& report) {
    if (!self) return;
    self->problem(Zolvar::tr("Not everything could be brought back."), report);
    if (report.settled == 0) return;
    self->bar_->say(Zolvar::tr("Your version of %n file(s) is back.", nullptr,
                               static_cast<int>(report.settled)),
                    MessageBar::Weight::Note);
  });
}

void ConflictsTab::problem(const QString& title, const ConflictDecisions::Report& report) {
  if (report.problems == 0 || context_.sheets == nullptr) return;
  QString text = said(refusalText(*report.firstProblem));
  if (report.problems > 1) {
    text += "\n\n" + Zolvar::tr("The same or the like happened to %n more file(s).", nullptr,
                                static_cast<int>(report.problems) - 1);
  }
  context_.sheets->showProblem(title, text);
}

ConflictDecisions::Done ConflictsTab::reporting(const QString& words) {
  return [self = QPointer(this), &context = context_, words](const auto& report) {
    if (report.settled > 0) context.lastUndo = report.undo;
    if (self) self->report(words, report);
  };
}

void ConflictsTab::report(const QString& words, const ConflictDecisions::Report& report) {
  problem(Zolvar::tr("Not every choice could be carried out."), report);
  if (report.settled == 0) return;
  const bool canUndo = !context_.lastUndo.files.empty();
  updateActions();
  bar_->say(words, MessageBar::Weight::Note, canUndo ? Zolvar::tr("&Undo") : QString(),
            [this] { undo(); });
}

}  // namespace zolvar
