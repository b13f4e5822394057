#include "ui/MainWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "app/Application.h"
#include "app/Operations.h"
#include "app/Outcomes.h"
#include "app/SheetsController.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "ui/ConflictsTab.h"
#include "ui/EmptyState.h"
#include "ui/FolderList.h"
#include "ui/FolderListModel.h"
#include "ui/FolderNews.h"
#include "ui/FolderView.h"
#include "ui/MainWindowActions.h"
#include "ui/MessageBar.h"
#include "ui/MissingTab.h"
#include "ui/Sheets.h"
#include "ui/Texts.h"
#include "ui/UsersTab.h"

namespace zolvar {
namespace {

constexpr double Hour = 3600;  // seconds
constexpr const char* ToldAboutTray = "MasterDetail-ToldAboutTray";

}  // namespace

MainWindow::MainWindow(WindowContext& context)
    : context_(context), memory_(context.platform.defaults) {
  setWindowTitle("Zolvar");
  setAcceptDrops(true);
  actions_ = std::make_unique<MainWindowActions>(*this);
  model_ = new FolderListModel(context.application, context.operations);
  model_->setParent(this);
  list_ = new FolderList(*model_, this);
  list_->setMinimumWidth(170);
  list_->setFooter(
      {actions_->share, actions_->remove, actions_->settings, nullptr, actions_->showUnsubscribed});
  view_ = new FolderView(
      context, memory_,
      {actions_->subscribe, actions_->unsubscribe, actions_->open, actions_->sync}, this);
  nothing_ = new EmptyState("zolvar", this);
  nothing_->say(Zolvar::tr("No folder yet"),
                Zolvar::tr("Share a folder of yours, or drag one here. "
                           "Folders that others share on this network appear by themselves."));
  nothing_->offer(actions_->share);
  stack_ = new QStackedWidget(this);
  stack_->addWidget(nothing_);
  stack_->addWidget(view_);
  splitter_ = new QSplitter(this);
  splitter_->addWidget(list_);
  serverTrouble_ = new MessageBar(this);
  warning_ = new MessageBar(this);
  auto* right = new QWidget(this);
  auto* below = new QVBoxLayout(right);
  below->setContentsMargins(0, 0, 0, 0);
  below->setSpacing(0);
  below->addWidget(serverTrouble_);
  below->addWidget(warning_);
  below->addWidget(stack_, 1);
  splitter_->addWidget(right);
  splitter_->setStretchFactor(1, 1);
  splitter_->setChildrenCollapsible(false);
  splitter_->setHandleWidth(1);
  splitter_->setSizes({230, 700});
  setCentralWidget(splitter_);
  connectActions();
  makeMenus();

  const bool showsOnlyMine = context.sheetsController.showsOnlyActivePools();
  actions_->showUnsubscribed->setChecked(!showsOnlyMine);
  list_->setShowsOnlyMine(showsOnlyMine);
  resize(960, 620);
  restoreGeometry(memory_.recall("Geometry"));
  memory_.restore("List-Split", *splitter_);
  view_->showTab(
      static_cast<FolderView::Tab>(std::clamp(toQt(memory_.recallText("Tab")).toInt(), 0, 2)));
  connect(list_, &FolderList::selectionChanged, this, &MainWindow::showSelected);
  connect(list_, &FolderList::activated, this, [this](const std::string& name) {
    if (context_.sheets != nullptr) context_.sheets->openFolder(name);
  });
  connect(&context.news, &FolderNews::changed, this, &MainWindow::changed);
  connect(&context.news, &FolderNews::warned, this,
          [this](const std::string& name, const std::string& sentence) {
            if (name.empty()) warning_->say(said(sentence), MessageBar::Weight::Warning);
            if (!name.empty() && name == selectedFolder()) view_->warn(said(sentence));
          });
  connect(&context.news, &FolderNews::serverChanged, this, &MainWindow::showServerTrouble);
  showServerTrouble();
  connect(view_, &FolderView::questionWanted, this, &MainWindow::answerQuestion);
  if (const auto folder = memory_.recallText("Folder"); !folder.empty()) list_->select(folder);
  showSelected();
  list_->setFocus();
}

MainWindow::~MainWindow() { remember(); }

void MainWindow::setSheets(Sheets* sheets) { context_.sheets = sheets; }

// What is shown.

std::string MainWindow::selectedFolder() const { return list_->selected(); }

void MainWindow::selectFolder(const std::string& poolName) { list_->select(poolName); }

void MainWindow::showConflict(const std::string& poolName, const std::string& path) {
  comeToFront();
  context_.news.flush();
  list_->select(poolName);
  showSelected();
  view_->showConflict(path);
}

void MainWindow::comeToFront() {
  if (isMinimized()) showNormal();
  show();
  raise();
  activateWindow();
}

void MainWindow::changed(const std::set<std::string>& names, bool isList) {
  if (isList) {
    model_->update();
  } else {
    model_->update(names);
  }
  if (isList || names.contains(selectedFolder())) showSelected();
}

void MainWindow::showSelected() {
  const auto* row = model_->row(selectedFolder());
  updateActions(row != nullptr ? &row->info : nullptr);
  stack_->setCurrentIndex(row == nullptr ? 0 : 1);
  setWindowTitle(row != nullptr ? toQt(row->info.displayName) : QString());
  if (row != nullptr) view_->show(row->info, row->progress);
}

void MainWindow::showServerTrouble() {
  const auto& trouble = context_.news.serverTrouble();
  if (trouble.empty()) return serverTrouble_->hide();
  serverTrouble_->say(Zolvar::tr("Nobody can fetch from this computer. %1").arg(said(trouble)),
                      MessageBar::Weight::Warning, {}, {}, true);
}

void MainWindow::updateActions(const PoolInfo* info) {
  using enum FolderStateKind;
  const bool isMine = info != nullptr && info->state.kind != NotSubscribed;
  const bool isReachable = isMine && info->state.kind != WaitingForDrive;
  const bool isPaused = isMine && info->pausedUntil.has_value();
  actions_->subscribe->setVisible(!isMine);
  actions_->subscribe->setEnabled(info != nullptr && !isMine);
  actions_->unsubscribe->setVisible(isMine);
  actions_->unsubscribe->setEnabled(isMine);
  actions_->open->setEnabled(info != nullptr && (isReachable || !info->folder.empty()));
  actions_->open->setVisible(info != nullptr && (isMine || !info->folder.empty()));
  actions_->sync->setVisible(isMine);
  actions_->sync->setEnabled(isReachable && !isPaused);
  actions_->settings->setEnabled(info != nullptr);
  actions_->remove->setEnabled(info != nullptr && !info->folder.empty());
  actions_->pauseHour->setEnabled(isMine);
  actions_->pause->setEnabled(isMine);
  actions_->resume->setEnabled(isPaused);
}

// What the person does.

void MainWindow::connectActions() {
  const auto withSheets = [this](const auto& act) {
    return [this, act] {
      if (context_.sheets != nullptr) act(*context_.sheets);
    };
  };
  const auto onFolder = [this](void (Sheets::*act)(const std::string&)) {
    return [this, act] {
      const std::string name = selectedFolder();
      if (context_.sheets != nullptr && !name.empty()) (context_.sheets->*act)(name);
    };
  };
  const auto on = [this](QAction* action, const auto& act) {
    connect(action, &QAction::triggered, this, act);
  };
  on(actions_->share, withSheets([](Sheets& sheets) { sheets.shareFolder({}); }));
  on(actions_->shareContacts, withSheets([](Sheets& sheets) { sheets.shareContacts(); }));
  actions_->shareContacts->setVisible(context_.application.addresses() != nullptr);
  on(actions_->preferences, withSheets([](Sheets& sheets) { sheets.preferences(); }));
  on(actions_->quickStart, withSheets([](Sheets& sheets) { sheets.quickStart(); }));
  on(actions_->releaseNotes, withSheets([](Sheets& sheets) { sheets.releaseNotes(); }));
  on(actions_->about, withSheets([](Sheets& sheets) { sheets.about(); }));
  on(actions_->subscribe, onFolder(&Sheets::subscribe));
  on(actions_->unsubscribe, onFolder(&Sheets::unsubscribe));
  on(actions_->open, onFolder(&Sheets::openFolder));
  on(actions_->settings, onFolder(&Sheets::settings));
  on(actions_->remove, onFolder(&Sheets::remove));
  on(actions_->sync, [this] { syncNow(); });
  on(actions_->pauseHour, [this] { pause(Hour); });
  on(actions_->pause, [this] { pause({}); });
  on(actions_->resume, [this] { resume(); });
  on(actions_->showUnsubscribed, [this] { toggleUnsubscribed(); });
  on(actions_->find, [this] { list_->focusFilter(); });
  on(actions_->close, [this] { close(); });
  on(actions_->quit, [this] { Q_EMIT quitWanted(); });
  on(actions_->users, [this] { view_->openTab(FolderView::Users); });
  on(actions_->missing, [this] { view_->openTab(FolderView::Missing); });
  on(actions_->conflicts, [this] { view_->openTab(FolderView::Conflicts); });
  connect(list_, &FolderList::menuWanted, this,
          [this](const QPoint& place) { actions_->folderMenu->popup(place); });
}

void MainWindow::makeMenus() {
  actions_->fill(*menuBar(), view_->conflicts().undoAction(), view_->conflicts().tabActions(),
                 view_->missing().tabActions(), view_->users().tabActions(),
                 view_->detailsAction());
}

void MainWindow::syncNow() {
  const auto started = context_.operations.sync(selectedFolder());
  if (!started && context_.sheets != nullptr) {
    context_.sheets->showProblem(Zolvar::tr("No sync was started."),
                                 said(refusalText(started.error())));
  }
}

void MainWindow::pause(std::optional<double> seconds) {
  const auto done = context_.operations.pause(selectedFolder(), seconds);
  if (!done && context_.sheets != nullptr) {
    context_.sheets->showProblem(Zolvar::tr("The folder cannot be paused."),
                                 said(refusalText(done.error())));
  }
}

void MainWindow::resume() {
  // Also where the pause is one of everything: the person wants this folder to go on.
  if (context_.operations.resume(selectedFolder())) return;
  static_cast<void>(context_.operations.resume({}));
}

void MainWindow::answerQuestion(const std::string& poolName) {
  const auto pool = context_.application.peer().poolNamed(poolName);
  const auto question = pool ? context_.outcomes.openQuestion(*pool) : nullptr;
  if (!question || context_.sheets == nullptr) return;
  context_.sheets->askAboutDeletion(
      poolName, deletionAlert(poolName, question->paths), [this, poolName](int code) {
        context_.operations.answer(poolName, code == SecondButton, [](const Result<>&) {});
      });
}

void MainWindow::toggleUnsubscribed() {
  context_.sheetsController.toggleHideUnsubscribed();
  const bool showsOnlyMine = context_.sheetsController.showsOnlyActivePools();
  list_->setShowsOnlyMine(showsOnlyMine);
  actions_->showUnsubscribed->setChecked(!showsOnlyMine);
}

// The window itself.

void MainWindow::remember() {
  memory_.keep("Geometry", saveGeometry());
  memory_.save("List-Split", *splitter_);
  memory_.keepText("Tab", std::to_string(view_->tab()));
  if (!selectedFolder().empty()) memory_.keepText("Folder", selectedFolder());
  view_->saveTo(memory_);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  remember();
  if (!hasTray_) {
    Q_EMIT quitWanted();
  } else if (event->spontaneous() || isVisible()) {
    sayItStays();
  }
  event->accept();
}

void MainWindow::sayItStays() {
  auto& defaults = context_.platform.defaults;
  if (defaults.boolean(ToldAboutTray)) return;
  defaults.setString(ToldAboutTray, "1");
  Notice notice;
  notice.key = "tray";
  notice.title = Zolvar::tr("Zolvar keeps running").toStdString();
  notice.text = Zolvar::tr(
                    "Your folders stay in step. The icon in the tray brings the window back "
                    "and ends the program.")
                    .toStdString();
  context_.platform.workspace.showNotice(notice, [self = QPointer(this)] {
    if (self) self->comeToFront();
  });
}

std::string MainWindow::droppedFolder(const QMimeData& data) const {
  const auto urls = data.urls();
  if (urls.size() != 1 || !urls.front().isLocalFile()) return {};
  const std::string path = urls.front().toLocalFile().toStdString();
  return context_.platform.fileSystem.isFolder(path) ? path : std::string();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!droppedFolder(*event->mimeData()).empty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  const std::string folder = droppedFolder(*event->mimeData());
  if (folder.empty() || context_.sheets == nullptr) return;
  event->acceptProposedAction();
  activateWindow();
  context_.sheets->shareFolder(folder);
}

}  // namespace zolvar
