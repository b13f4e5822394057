#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/Application.h"
#include "app/ApplicationObserver.h"
#include "app/Operations.h"
#include "net/KDParticipant.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {

/// Remembers what an observer was told, one line each.
struct RecordingObserver : ApplicationObserver {
  std::vector<std::string> lines;

  void syncDidEnd(const SyncReport& report) override {
    lines.push_back("end " + std::to_string(report.status));
  }
  void questionDidArise(KDFilePool&, const DeleteQuestion& question) override {
    lines.push_back("question " + std::to_string(question.paths.size()));
  }
  void conflictDidOccur(KDFilePool&, const std::string& path) override {
    lines.push_back("conflict " + path);
  }
  void passwordDidFail(KDFilePool&, KDParticipant& participant) override {
    lines.push_back("password " + participant.userId());
  }
  void poolPathsNotAccessible(KDFilePool& pool) override {
    lines.push_back("inaccessible " + pool.name());
  }
  void warning(const std::string& poolName, const std::string& sentence) override {
    lines.push_back("warning " + poolName + ": " + sentence);
  }
  [[nodiscard]] std::size_t count(const std::string& line) const {
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
  }
};

/// One machine of a simulated network with the whole application on it.
struct AppHost {
  AppHost(SimulatedWorld& world, const std::string& host, const std::string& user)
      : platform(world, host, user) {}
  ~AppHost() { stop(); }

  void start() {
    Application::Settings settings;
    settings.version = "1.2";
    settings.resourceFolder = resourceFolder;
    settings.addressBook = addressBook;
    auto made = Application::make(std::move(settings), platform);
    if (!made) throw std::runtime_error(refusalText(made.error()));
    app = std::move(*made);
    app->addObserver(observer);
    operations = std::make_unique<Operations>(*app);
    app->start();
  }
  void stop() {
    if (!app) return;
    app->shutDown([] {});
    platform.loop.runUntilIdle();
    operations.reset();
    app.reset();
    platform.loop.runUntilIdle();
  }
  void restart() {
    stop();
    platform.clock.restart();
    start();
    advance(1);
  }
  void advance(double seconds) { platform.loop.advance(seconds); }

  /// Runs an operation that ends later; "" when it was done, else the refusal.
  template <class Act>
  std::string outcome(const Act& act) {
    std::string text = "(no answer)";
    act([&text](const Result<>& result) { text = result ? "" : refusalText(result.error()); });
    platform.loop.runUntil([&] { return text != "(no answer)"; }, 30);
    return text;
  }
  std::string share(const std::string& folder, std::optional<std::string> password = {}) {
    return outcome([&](auto done) { operations->share(folder, password, done); });
  }
  std::string subscribe(const std::string& name, const std::string& folder = {},
                        std::optional<std::string> password = {}) {
    return outcome([&](auto done) { operations->subscribe(name, folder, password, done); });
  }
  KDFilePool& pool(const std::string& name) { return *app->peer().poolNamed(name); }
  bool isActive(const std::string& name) {
    const auto found = app->peer().poolNamed(name);
    return found && found->isActive();
  }
  /// The participant that stands for another host; null while it is not seen.
  std::shared_ptr<KDParticipant> participant(const std::string& name, const std::string& host) {
    const auto* presence = app->peer().presence(name);
    if (presence == nullptr) return nullptr;
    for (const auto& each : presence->participants()) {
      if (each->hostName() == host + ".local") return each;
    }
    return nullptr;
  }

  SimulatedPlatform platform;
  RecordingObserver observer;
  std::string resourceFolder;
  AddressBookMaker addressBook;
  std::unique_ptr<Application> app;
  std::unique_ptr<Operations> operations;
};

}  // namespace zolvar
