#include "ui/FolderView.h"

#include <QAction>
#include <QLocale>
#include <QMenu>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include "app/Application.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "ui/ConflictsTab.h"
#include "ui/DetailsPane.h"
#include "ui/FolderHeader.h"
#include "ui/Icons.h"
#include "ui/MessageBar.h"
#include "ui/MissingTab.h"
#include "ui/Texts.h"
#include "ui/UsersTab.h"
#include "ui/VersionTreeView.h"
#include "ui/WindowMemory.h"

namespace zolvar {

FolderView::FolderView(WindowContext& context, WindowMemory& memory, const QList<QAction*>& actions,
                       QWidget* parent)
    : QWidget(parent), context_(context) {
  header_ = new FolderHeader(actions, context.platform.fileSystem.homeFolder(), this);
  question_ = new MessageBar(this);
  trouble_ = new MessageBar(this);
  warning_ = new MessageBar(this);
  users_ = new UsersTab(context, memory, this);
  missing_ = new MissingTab(context, memory, this);
  conflicts_ = new ConflictsTab(context, memory, this);
  tabs_ = new QTabWidget(this);
  tabs_->setDocumentMode(true);
  tabs_->addTab(users_, {});
  tabs_->addTab(missing_, {});
  tabs_->addTab(conflicts_, {});
  details_ = new DetailsPane(context, this);
  splitter_ = new QSplitter(Qt::Vertical, this);
  splitter_->addWidget(tabs_);
  splitter_->addWidget(details_);
  splitter_->setStretchFactor(0, 1);
  splitter_->setCollapsible(0, false);
  splitter_->setCollapsible(1, false);
  splitter_->setSizes({320, 190});
  showDetails_ = new QAction(ownIcon("details"), Zolvar::tr("Show &Details"), this);
  showDetails_->setCheckable(true);
  showDetails_->setChecked(memory.recallText("Details") != "hidden");
  showDetails_->setShortcut(QKeySequence("Ctrl+D"));
  memory.restore("Details-Split", *splitter_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(header_);
  layout->addWidget(question_);
  layout->addWidget(trouble_);
  layout->addWidget(warning_);
  layout->addWidget(splitter_, 1);
  titleTabs();
  showFileOfTab();

  connect(showDetails_, &QAction::toggled, this, &FolderView::showFileOfTab);
  connect(tabs_, &QTabWidget::currentChanged, this, [this] {
    refreshTab();
    showFileOfTab();
    Q_EMIT tabChanged();
  });
  connect(missing_, &MissingTab::fileSelected, this, [this](const std::string& path) {
    if (tab() == Missing) details_->showFile(info_.name, path);
  });
  connect(conflicts_, &ConflictsTab::fileSelected, this,
          [this](const std::string& path, const std::optional<VersionId>& version) {
            if (tab() == Conflicts) details_->showFile(info_.name, path, version);
          });
  connect(details_, &DetailsPane::historyKnown, conflicts_, &ConflictsTab::noteHistory);
  connect(&details_->tree(), &VersionTreeView::currentChanged, this,
          [this](const VersionId& version) {
            if (tab() == Conflicts) conflicts_->selectVersion(details_->path(), version);
          });
  connect(&details_->tree(), &VersionTreeView::menuWanted, this, [this](const QPoint& place) {
    if (tab() != Conflicts) return;
    QMenu menu;
    menu.addActions(conflicts_->tabActions().mid(0, 3));
    menu.exec(place);
  });
}

FolderView::Tab FolderView::tab() const { return static_cast<Tab>(tabs_->currentIndex()); }

void FolderView::showTab(Tab tab) { tabs_->setCurrentIndex(tab); }

void FolderView::openTab(Tab tab) {
  showTab(tab);
  tabs_->currentWidget()->setFocus(Qt::ShortcutFocusReason);
}

void FolderView::titleTabs() {
  const auto title = [](const QString& words, std::size_t count) {
    if (count == 0) return words;
    return Zolvar::tr("%1 (%2)").arg(words, QLocale().toString(static_cast<qulonglong>(count)));
  };
  tabs_->setTabText(Users, title(Zolvar::tr("Users"), info_.participants));
  tabs_->setTabText(Missing, title(Zolvar::tr("Missing"), info_.missing));
  tabs_->setTabText(Conflicts, title(Zolvar::tr("Conflicts"), info_.conflicts));
  tabs_->setTabIcon(Conflicts, info_.conflicts > 0 ? ownIcon("state-conflict") : QIcon());
}

void FolderView::show(const PoolInfo& info, const std::optional<TransferProgress>& progress) {
  const bool isOther = info.name != info_.name;
  info_ = info;
  header_->show(info, progress);
  titleTabs();
  showDetails();
  showQuestion();
  if (info.trouble.empty()) {
    trouble_->hide();
  } else {
    trouble_->say(said(info.trouble), MessageBar::Weight::Warning, {}, {}, true);
  }
  if (isOther) {
    warning_->hide();
    details_->showFile(info.name, {});
    users_->setFolder(info.name);
  }
  refreshTab();
  if (!isOther) details_->update();
}

void FolderView::refreshTab() {
  if (info_.name.empty()) return;
  const auto pool = context_.application.peer().poolNamed(info_.name);
  const auto snapshot = pool ? pool->snapshot() : nullptr;
  switch (tab()) {
    case Users:
      return users_->refresh();
    case Missing:
      return missing_->show(info_.name, snapshot);
    case Conflicts:
      return conflicts_->show(info_.name, info_.folder, snapshot);
  }
}

void FolderView::showFileOfTab() {
  showDetails();
  if (tab() == Users) details_->showFile(info_.name, {});
  if (tab() == Missing) missing_->tellFile();
  if (tab() == Conflicts) conflicts_->tellFile();
}

void FolderView::showDetails() {
  // Only files have versions.
  const bool hasFiles =
      (tab() == Missing && info_.missing > 0) || (tab() == Conflicts && info_.conflicts > 0);
  details_->setVisible(hasFiles && showDetails_->isChecked());
}

void FolderView::showQuestion() {
  if (info_.state.kind != FolderStateKind::QuestionOpen) return question_->hide();
  const QString words = Zolvar::tr(
      "Files vanished from this folder. Shall they come back, or be deleted for "
      "everybody?");
  if (question_->isVisible()) return;
  question_->say(
      words, MessageBar::Weight::Question, Zolvar::tr("&Answer…"),
      [this] { Q_EMIT questionWanted(info_.name); }, true);
}

void FolderView::showConflict(const std::string& path) {
  showTab(Conflicts);
  refreshTab();
  conflicts_->selectFile(path);
  conflicts_->setFocus();
}

void FolderView::warn(const QString& sentence) {
  warning_->say(sentence, MessageBar::Weight::Warning);
}

void FolderView::saveTo(WindowMemory& memory) const {
  users_->saveColumns(memory);
  missing_->saveColumns(memory);
  conflicts_->saveColumns(memory);
  memory.save("Details-Split", *splitter_);
  memory.keepText("Details", showDetails_->isChecked() ? "shown" : "hidden");
}

}  // namespace zolvar
