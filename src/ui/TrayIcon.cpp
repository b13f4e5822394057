#include "ui/TrayIcon.h"

#include <QAction>
#include <QMenu>
#include <algorithm>

#include "app/Application.h"
#include "app/Operations.h"
#include "app/Pauses.h"
#include "ui/FolderListModel.h"
#include "ui/FolderNews.h"
#include "ui/Icons.h"
#include "ui/MainWindow.h"
#include "ui/Sheets.h"
#include "ui/StateTexts.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr std::size_t MostFolders = 8;  // in the menu
constexpr double Hour = 3600;           // seconds

/// The smaller, the sooner it is told.
int rank(FolderStateKind kind) {
  using enum FolderStateKind;
  constexpr FolderStateKind Order[] = {
      WaitingForDrive, WaitingForPassword, WaitingForClock, QuestionOpen, Conflict,
      Fetching,        Checking,           Missing,         Paused,       InStep,
      Alone,           NotSubscribed};
  return static_cast<int>(std::find(std::begin(Order), std::end(Order), kind) - std::begin(Order));
}

}  // namespace

FolderStateKind overallState(const std::vector<FolderState>& states) {
  FolderStateKind first = FolderStateKind::NotSubscribed;
  for (const auto& state : states) {
    if (rank(state.kind) < rank(first)) first = state.kind;
  }
  return first;
}

TrayIcon::TrayIcon(WindowContext& context, MainWindow& window)
    : context_(context), window_(window), menu_(std::make_unique<QMenu>()) {
  icon_.setContextMenu(menu_.get());
  connect(menu_.get(), &QMenu::aboutToShow, this, &TrayIcon::fillMenu);
  connect(&icon_, &QSystemTrayIcon::activated, this, [this](auto reason) {
    if (reason != QSystemTrayIcon::Trigger && reason != QSystemTrayIcon::DoubleClick) return;
    if (window_.isActiveWindow()) {
      window_.close();
    } else {
      window_.comeToFront();
    }
  });
  connect(&context.news, &FolderNews::changed, this, &TrayIcon::update);
  fillMenu();
  update();
  icon_.show();
}

TrayIcon::~TrayIcon() { icon_.setContextMenu(nullptr); }

void TrayIcon::update() {
  std::vector<FolderState> states;
  const auto& rows = window_.folders().rows(FolderListModel::Mine);
  for (const auto& row : rows) states.push_back({shownKind(row.info), {}});
  const FolderStateKind state = overallState(states);
  QString words = Zolvar::tr("Zolvar: no folder yet");
  const auto first = std::find_if(rows.begin(), rows.end(),
                                  [&](const auto& row) { return shownKind(row.info) == state; });
  if (first != rows.end()) {
    words = state == FolderStateKind::InStep
                ? Zolvar::tr("Zolvar: everything is in step")
                : Zolvar::tr("%1: %2").arg(toQt(first->info.name),
                                           stateText(first->info, first->progress));
  }
  if (icon_.toolTip() != words) icon_.setToolTip(words);
  if (shown_ == state) return;
  shown_ = state;
  icon_.setIcon(badgedIcon(state));
}

void TrayIcon::fillMenu() {
  menu_->clear();
  QAction* open = menu_->addAction(Zolvar::tr("&Open Zolvar"));
  connect(open, &QAction::triggered, this, [this] { window_.comeToFront(); });
  menu_->setDefaultAction(open);
  menu_->addSeparator();
  addFolders();
  addPauses();
  menu_->addSeparator();
  QAction* quit = menu_->addAction(icon("application-exit", "close"), Zolvar::tr("&Quit Zolvar"));
  connect(quit, &QAction::triggered, &window_, &MainWindow::quitWanted);
}

void TrayIcon::addFolders() {
  const auto& rows = window_.folders().rows(FolderListModel::Mine);
  for (std::size_t each = 0; each < std::min(rows.size(), MostFolders); ++each) {
    const auto& row = rows[each];
    QString words = toQt(row.info.name) + " — " + stateText(row.info, row.progress);
    QAction* action = menu_->addAction(stateIcon(shownKind(row.info)), words.replace('&', "&&"));
    connect(action, &QAction::triggered, this, [this, name = row.info.name] {
      window_.selectFolder(name);
      window_.comeToFront();
    });
  }
  if (!rows.empty()) menu_->addSeparator();
}

void TrayIcon::addPauses() {
  auto& operations = context_.operations;
  const auto pausedUntil = context_.application.pauses().pausedUntil("");
  if (pausedUntil) {
    const QString words = *pausedUntil == 0
                              ? Zolvar::tr("&Resume")
                              : Zolvar::tr("&Resume (paused until %1)").arg(dateText(*pausedUntil));
    QAction* resume = menu_->addAction(icon("media-playback-start", "resume"), words);
    connect(resume, &QAction::triggered, this,
            [&operations] { static_cast<void>(operations.resume({})); });
    return;
  }
  QMenu* pause = menu_->addMenu(icon("media-playback-pause", "pause"), Zolvar::tr("&Pause"));
  connect(pause->addAction(Zolvar::tr("For an &Hour")), &QAction::triggered, this,
          [&operations] { static_cast<void>(operations.pause({}, Hour)); });
  connect(pause->addAction(Zolvar::tr("Until &Resumed")), &QAction::triggered, this,
          [&operations] { static_cast<void>(operations.pause({}, {})); });
}

}  // namespace zolvar
