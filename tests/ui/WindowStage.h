#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/AppHost.h"
#include "app/SheetsController.h"
#include "ui/FolderNews.h"
#include "ui/MainWindow.h"
#include "ui/Sheets.h"

namespace zolvar {

/// Remembers what the window opened, and answers confirmations at once as the test says.
struct RecordingSheets : Sheets {
  std::vector<std::string> opened;
  bool agrees = true;

  [[nodiscard]] bool has(const std::string& line) const {
    return std::find(opened.begin(), opened.end(), line) != opened.end();
  }
  void note(const std::string& what, const std::string& about = {}) {
    opened.push_back(about.empty() ? what : what + " " + about);
  }
  void shareFolder(const std::string& path) override { note("share", path); }
  void shareContacts() override { note("shareContacts"); }
  void subscribe(const std::string& name) override { note("subscribe", name); }
  void unsubscribe(const std::string& name) override { note("unsubscribe", name); }
  void remove(const std::string& name) override { note("remove", name); }
  void settings(const std::string& name) override { note("settings", name); }
  void openFolder(const std::string& name) override { note("open", name); }
  void confirmSwitch(const std::string& path, const std::string& userId, const std::string&,
                     std::function<void()> proceed) override {
    note("switch", path + " " + userId);
    if (agrees) proceed();
  }
  void confirm(const QString& title, const QString&, const QString&,
               std::function<void()> proceed) override {
    note("confirm", title.toStdString());
    if (agrees) proceed();
  }
  void showProblem(const QString& title, const QString& sentence) override {
    note("problem", (title + " " + sentence).toStdString());
  }
  void preferences() override { note("preferences"); }
  void about() override { note("about"); }
  void quickStart() override { note("quickStart"); }
  void releaseNotes() override { note("releaseNotes"); }
  void askAboutPassword(const std::string& name, const PasswordFailureText&,
                        std::function<void(PasswordAnswer)>) override {
    note("password", name);
  }
  void askAboutDeletion(const std::string& name, const Alert&,
                        std::function<void(int)> answered) override {
    note("deletion", name);
    answerDeletion = std::move(answered);
  }
  void withdrawDeletionAlert(const std::string& name) override { note("withdraw", name); }
  void showAlert(const Alert& alert, std::function<void(int)>) override {
    note("alert", alert.title);
  }
  std::function<void(int)> answerDeletion;
};

/// Ann's window in a simulated network with Bob and Carol, on virtual time.
class WindowStage : public testing::Test {
 protected:
  struct Machine {
    const char* host;
    const char* user;
  };
  WindowStage() : WindowStage({"alpha", "ann"}, {"beta", "bob"}, {"gamma", "carol"}) {}
  WindowStage(Machine first, Machine second, Machine third)
      : ann(world, first.host, first.user),
        bob(world, second.host, second.user),
        carol(world, third.host, third.user) {
    ann.start();
    bob.start();
    carol.start();
    settle(2);
  }
  ~WindowStage() override { closeWindow(); }

  void openWindow() {
    news = std::make_unique<FolderNews>(*ann.app);
    controller = std::make_unique<SheetsController>(*ann.app, *ann.operations);
    context = std::make_unique<WindowContext>(WindowContext{
        *ann.app, *ann.operations, ann.app->outcomes(), *controller, ann.platform, *news});
    window = std::make_unique<MainWindow>(*context);
    window->setSheets(&sheets);
    window->show();
    settle(1);
  }
  void closeWindow() {
    window.reset();
    context.reset();
    controller.reset();
    news.reset();
  }
  void settle(double seconds) {
    world.loop.advance(seconds);
    QApplication::processEvents();
  }
  bool until(const std::function<bool()>& done, double limit = 120) {
    const bool isDone = world.loop.runUntil(done, limit);
    settle(0.5);
    return isDone;
  }
  /// Ann shares a folder with files; Bob and Carol subscribe and have them.
  void shareAmongAll(const std::string& name, const std::vector<std::string>& paths) {
    const std::string folder = "/home/user/" + name;
    for (const auto& path : paths) ann.platform.files.write(folder + "/" + path, "from ann");
    settle(20);
    ASSERT_EQ(ann.share(folder), "");
    for (AppHost* host : {&bob, &carol}) {
      ASSERT_TRUE(until([&] { return host->app->peer().presence(name) != nullptr; }));
      ASSERT_EQ(host->subscribe(name, folder), "");
      ASSERT_TRUE(until([&] { return host->platform.files.exists(folder + "/" + paths.back()); }));
    }
    settle(40);
  }
  /// Ann and the other write a file while they do not see each other, then meet.
  void makeConflicts(const std::string& name, const std::vector<std::string>& paths,
                     AppHost& other) {
    world.network.setUp(other.platform.hostName, false);
    settle(30);
    for (const auto& path : paths) {
      const std::string file = "/home/user/" + name + "/" + path;
      other.platform.files.write(file, "line one\nfrom " + other.platform.hostName + "\nend\n");
      settle(2);
      ann.platform.files.write(file, "line one\nfrom alpha here\nend\n");
    }
    settle(60);
    world.network.setUp(other.platform.hostName, true);
    ASSERT_TRUE(until([&] { return ann.operations->conflicts(name)->size() >= paths.size(); }, 600))
        << ann.platform.log.text();
  }

  SimulatedWorld world;
  AppHost ann;
  AppHost bob;
  AppHost carol;
  RecordingSheets sheets;
  std::unique_ptr<FolderNews> news;
  std::unique_ptr<SheetsController> controller;
  std::unique_ptr<WindowContext> context;
  std::unique_ptr<MainWindow> window;
};

}  // namespace zolvar
