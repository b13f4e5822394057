#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QHeaderView>
#include <QStyleFactory>
#include <QTableView>
#include <QTreeView>
#include <iostream>

#include "app/EnvironmentChecks.h"
#include "app/Outcomes.h"
#include "ui/ConflictsTab.h"
#include "ui/DetailsPane.h"
#include "ui/DifferenceDialog.h"
#include "ui/FolderListModel.h"
#include "ui/FolderView.h"
#include "ui/Languages.h"
#include "ui/MissingTab.h"
#include "ui/TextDifference.h"
#include "ui/Texts.h"
#include "ui/UsersTab.h"
#include "ui/WindowStage.h"
#include "ui/sheets/WindowSheets.h"

// Draws the window and its sheets in every state that a person can meet, with made-up folders and
// people, over the simulated network. usage: window-pictures FOLDER [LANGUAGE [dark]]

namespace zolvar {
namespace {

QPalette darkPalette() {
  QPalette palette;
  const QColor window(0x2b, 0x2d, 0x30);
  const QColor text(0xe8, 0xe8, 0xe8);
  const QColor faint(0x8a, 0x8d, 0x91);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                          QPalette::BrightText, QPalette::ToolTipText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, faint);
  }
  palette.setColor(QPalette::Window, window);
  palette.setColor(QPalette::Button, QColor(0x3a, 0x3d, 0x41));
  palette.setColor(QPalette::Base, QColor(0x1e, 0x1f, 0x22));
  palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x28, 0x2b));
  palette.setColor(QPalette::ToolTipBase, window);
  palette.setColor(QPalette::PlaceholderText, faint);
  palette.setColor(QPalette::Highlight, QColor(0x2f, 0x65, 0xca));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0x6e, 0xa8, 0xfe));
  palette.setColor(QPalette::Light, QColor(0x4a, 0x4d, 0x52));
  palette.setColor(QPalette::Midlight, QColor(0x40, 0x43, 0x47));
  palette.setColor(QPalette::Mid, QColor(0x24, 0x26, 0x29));
  palette.setColor(QPalette::Dark, QColor(0x1a, 0x1b, 0x1e));
  palette.setColor(QPalette::Shadow, Qt::black);
  return palette;
}

class Studio : public WindowStage {
 public:
  explicit Studio(QString folder)
      : WindowStage({"studio", "ada"}, {"atelier", "grace"}, {"loft", "joan"}),
        folder_(std::move(folder)) {}

  void drawAll() {
    drawBeginning();
    drawFolders();
    drawFetching();
    drawConflicts();
    drawSheets();
    drawTrouble();
  }

 private:
  void TestBody() override {}

  void open() {
    openWindow();
    sheets_ = std::make_unique<WindowSheets>(*window, *context);
    window->setSheets(sheets_.get());
    ann.app->outcomes().setFrontEnd(nullptr);
    closeDialogs();
  }
  void close() {
    window->setSheets(nullptr);
    sheets_.reset();
    closeWindow();
  }
  void closeDialogs() {
    settle(1);
    for (QDialog* dialog : window->findChildren<QDialog*>()) {
      if (dialog->isVisible()) dialog->reject();
    }
    settle(1);
  }
  void draw(const QString& name) {
    settle(0.5);
    save(window->grab(), name);
  }
  /// The view's own selectRow finds no column in layouts from right to left.
  static void selectRow(QTableView& view, int row) {
    view.setCurrentIndex(view.model()->index(row, 0));
  }
  /// Each open dialog, then closes them.
  void drawDialog(const QString& name) {
    settle(0.5);
    bool isFound = false;
    for (QDialog* dialog : window->findChildren<QDialog*>()) {
      if (!dialog->isVisible()) continue;
      save(dialog->grab(), name);
      isFound = true;
    }
    if (!isFound) std::cerr << "nothing is open for " << name.toStdString() << '\n';
    closeDialogs();
  }
  void save(const QPixmap& pixmap, const QString& name) {
    pixmap.toImage().convertToFormat(QImage::Format_RGB32).save(folder_ + "/" + name + ".png");
  }

  void drawBeginning() {
    open();
    draw("empty");
    sheets_->quickStart();
    drawDialog("sheet-first-steps");
    sheets_->shareFolder("/home/user/Recipes");
    drawDialog("sheet-share");
    sheets_->shareFolder("");
    drawDialog("sheet-share-empty");
    close();
  }

  void drawFolders() {
    shareAmongAll("Recipes", {"Bread/Rye.txt", "Bread/Spelt.txt", "Soups/Leek.txt", "Shopping.txt",
                              "Soups/Lentil.txt", "Cake.txt"});
    shareAmongAll("Travel Notes", {"Lisbon.txt", "Oslo.txt"});
    shareAmongAll("Photos 2026", {"Sea.jpg", "Hills.jpg"});
    bob.platform.files.write("/home/user/Music/Song.flac", "la");
    bob.share("/home/user/Music");
    carol.platform.files.write("/home/user/Budget/2026.ods", "42");
    carol.share("/home/user/Budget", "secret");
    open();
    window->selectFolder("Recipes");
    settle(10);
    window->folderView().showTab(FolderView::Users);
    selectRow(window->folderView().users().view(), 0);
    draw("users");
    window->selectFolder("Music");
    draw("unsubscribed");
    window->folderView().showTab(FolderView::Missing);
    window->selectFolder("Recipes");
    draw("nothing-missing");
    window->folderView().showTab(FolderView::Conflicts);
    draw("no-conflicts");
  }

  void drawFetching() {
    window->selectFolder("Photos 2026");
    window->folderView().showTab(FolderView::Missing);
    const std::string picture(300'000, 'p');
    for (int each = 101; each < 161; ++each) {
      bob.platform.files.write("/home/user/Photos 2026/Coast/IMG_0" + std::to_string(each) + ".jpg",
                               picture);
    }
    int files = 0;
    auto& troubles = ann.platform.processes.troubles;
    troubles.secondsPerFile = 3;
    troubles.cutAfterFiles = 32;
    troubles.duringFile = [&](const std::string&) {
      if (++files != 24) return;
      news->flush();
      window->folderView().showTab(FolderView::Users);
      save(window->grab(), "syncing");
      window->folderView().showTab(FolderView::Missing);
      world.network.setUp(bob.platform.hostName, false);  // what is not here yet stays missing
    };
    until([&] { return files >= 32; }, 600);
    settle(60);
    selectRow(window->folderView().missing().view(), 2);
    draw("missing");
    troubles = {};
    world.network.setUp(bob.platform.hostName, true);
    until([&] { return ann.operations->missing("Photos 2026")->empty(); }, 2000);
  }

  void drawConflicts() {
    const std::string folder = "/home/user/Recipes/";
    window->selectFolder("Recipes");
    for (AppHost* host : {&bob, &ann, &bob}) {
      settle(300);
      const std::string start = "Rye Bread\n\n500 g rye flour\n";
      host->platform.files.write(folder + "Bread/Rye.txt", start + "1 spoon of salt\n");
      settle(120);
    }
    for (AppHost* other : {&bob, &carol}) world.network.setUp(other->platform.hostName, false);
    settle(30);
    write(bob, "Bread/Rye.txt", "Rye Bread\n\n500 g rye flour\n2 spoons of salt\n350 ml water\n");
    write(carol, "Bread/Rye.txt", "Rye Bread\n\n500 g rye flour\n1 spoon of salt\nCaraway\n");
    write(ann, "Bread/Rye.txt", "Rye Bread\n\n450 g rye flour\n1 spoon of salt\n350 ml water\n");
    write(carol, "Shopping.txt", "Flour\nSalt\nCaraway\n");
    write(ann, "Shopping.txt", "Flour\nSalt\nLeeks\n");
    settle(60);
    for (AppHost* other : {&bob, &carol}) world.network.setUp(other->platform.hostName, true);
    until(
        [&] {
          const auto conflicts = ann.operations->conflicts("Recipes");
          return conflicts->size() == 2 && conflicts->front().versions.size() == 3;
        },
        2000);
    settle(60);
    auto& tab = window->folderView().conflicts();
    window->folderView().showTab(FolderView::Conflicts);
    settle(2);
    const Conflict* conflict = tab.model().conflict(tab.model().indexOf("Bread/Rye.txt"));
    if (conflict == nullptr) {
      std::cerr << "no conflict\n" << ann.platform.log.text();
      return;
    }
    VersionId theirs;
    for (const auto& version : conflict->versions) {
      if (version.id.userId.starts_with("grace")) theirs = version.id;
    }
    tab.selectVersion("Bread/Rye.txt", theirs);
    draw("conflict");
    const std::string start = "Rye Bread\n\n";
    auto* difference = new DifferenceDialog(
        "Bread/Rye.txt", Zolvar::tr("%1 (this one is here)").arg(Zolvar::tr("You")),
        "grace@atelier",
        *textDifference(start + "450 g rye flour\n1 spoon of salt\n350 ml water\n",
                        start + "500 g rye flour\n2 spoons of salt\n350 ml water\n"),
        window.get());
    difference->show();
    drawDialog("sheet-compare");
    tab.tabActions()[0]->trigger();
    drawDialog("sheet-switch");
    tab.tabActions()[1]->trigger();
    drawDialog("sheet-delete-version");
    tab.view().selectAll();
    tab.tabActions()[3]->trigger();
    drawDialog("sheet-keep-mine");
  }

  void write(AppHost& host, const std::string& path, const std::string& content) {
    host.platform.files.write("/home/user/Recipes/" + path, content);
    settle(40);
  }

  void drawSheets() {
    sheets_->subscribe("Music");
    drawDialog("sheet-subscribe");
    sheets_->subscribe("Budget");
    drawDialog("sheet-subscribe-password");
    sheets_->unsubscribe("Recipes");
    drawDialog("sheet-unsubscribe");
    sheets_->remove("Recipes");
    drawDialog("sheet-remove");
    sheets_->settings("Recipes");
    drawDialog("sheet-settings");
    sheets_->preferences();
    drawDialog("sheet-preferences");
    sheets_->about();
    drawDialog("sheet-about");
    sheets_->releaseNotes();
    drawDialog("sheet-release-notes");
    sheets_->askAboutPassword("Recipes", passwordFailureText("Recipes", "grace@atelier"),
                              [](PasswordAnswer) {});
    drawDialog("sheet-password");
    sheets_->askAboutDeletion(
        "Recipes", deletionAlert("Recipes", {"Bread/Rye.txt", "Soups/Leek.txt"}), [](int) {});
    drawDialog("sheet-deletion");
    sheets_->showAlert(clockAlert(42.5), [](int) {});
    drawDialog("sheet-clock");
    sheets_->showAlert(firewallAlert(10528), [](int) {});
    drawDialog("sheet-firewall");
    sheets_->showProblem(Zolvar::tr("The folder cannot be shared."),
                         said("There is no folder at '/media/stick'."));
    drawDialog("sheet-problem");
  }

  void drawTrouble() {
    window->selectFolder("Travel Notes");
    window->folderView().showTab(FolderView::Users);
    ann.platform.files.remove("/home/user/Travel Notes/Oslo.txt");
    settle(60);
    draw("question");
    ann.platform.files.move("/home/user/Photos 2026", "/elsewhere");
    window->selectFolder("Photos 2026");
    settle(120);
    draw("problem");
    ann.platform.files.move("/elsewhere", "/home/user/Photos 2026");
    drawFullDisk();
    drawWrongPassword();
    close();
  }

  void drawWrongPassword() {
    ann.operations->subscribe("Budget", "/home/user/Budget", "wrong", [](const Result<>&) {});
    window->selectFolder("Budget");
    until([&] { return window->folders().row("Budget")->info.state.needsPerson(); }, 300);
    closeDialogs();
    draw("problem-password");
  }

  void drawFullDisk() {
    constexpr int FileTrouble = 11;  // of the transfer tool
    window->selectFolder("Music");
    ann.operations->subscribe("Music", "/home/user/Music", {}, [](const Result<>&) {});
    until([&] { return ann.isActive("Music"); }, 300);
    settle(60);
    bob.platform.files.write("/home/user/Music/Encore.flac", "lala");
    until(
        [&] {
          ann.platform.processes.troubles.nextStatus = FileTrouble;
          return !window->folders().row("Music")->info.trouble.empty();
        },
        600);
    news->flush();
    draw("problem-disk");
    ann.platform.processes.troubles = {};
  }

  QString folder_;
  std::unique_ptr<WindowSheets> sheets_;
};

}  // namespace
}  // namespace zolvar

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  const QApplication application(argumentCount, arguments);
  const QStringList words = QApplication::arguments();
  if (words.size() < 2) return 2;
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  if (words.value(3) == "dark") QApplication::setPalette(zolvar::darkPalette());
  const zolvar::SpokenLanguage language(words.value(2, "en").toStdString());
  QDir().mkpath(words[1]);
  zolvar::Studio(words[1]).drawAll();
  return 0;
}
