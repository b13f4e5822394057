#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "pool/KDPoolState.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {

/// What a pool's state told its listener.
struct Heard {
  std::shared_ptr<const PoolSnapshot> snapshot;
  std::vector<std::string> conflicts;
  std::set<std::string> deleted;
  std::shared_ptr<const DeleteQuestion> question;
  int questions = 0, announcements = 0, fullSyncs = 0, inaccessible = 0, scansWanted = 0;
  std::string movedTo;
};

class HearingListener final : public PoolStateListener {
 public:
  explicit HearingListener(Heard& heard) : heard_(heard) {}
  void stateDidChange(std::shared_ptr<const PoolSnapshot> snapshot) override {
    heard_.snapshot = std::move(snapshot);
  }
  void conflictDidOccur(const std::string& path) override { heard_.conflicts.push_back(path); }
  void willDeleteFiles(const std::set<std::string>& paths) override { heard_.deleted = paths; }
  void announcementNeeded() override { ++heard_.announcements; }
  void fullSyncNeeded() override { ++heard_.fullSyncs; }
  void questionRaised(std::shared_ptr<const DeleteQuestion> question) override {
    heard_.question = std::move(question);
    ++heard_.questions;
  }
  void pathsNotAccessible() override { ++heard_.inaccessible; }
  void folderMoved(const std::string& newPath) override { heard_.movedTo = newPath; }
  void scanWanted() override { ++heard_.scansWanted; }
  void warn(const std::string&) override {}

 private:
  Heard& heard_;
};

/// One pool "Docs" of me@alpha.local; what peers write is put into their logs by hand.
class KDPoolStateTest : public testing::Test {
 protected:
  static constexpr const char* Root = "/home/user/Docs/";

  void SetUp() override {
    host.files.write(path(".Zolvar/me@alpha.local.fplog"), "");
    start();
  }
  void start() {
    state = std::make_unique<KDPoolState>(
        KDPoolState::Settings{"Docs", "/home/user/Docs", "me@alpha.local", Pace::normal()},
        host.platform(), std::make_unique<HearingListener>(heard));
    const auto activated = state->activate();
    ASSERT_TRUE(activated) << activated.error().message();
  }
  void restart() {
    state->leave();
    start();
  }
  static std::string path(const std::string& relative) { return Root + relative; }
  /// A save by the user, long enough ago to be logged.
  void put(const std::string& relative, const std::string& content) {
    host.files.save(path(relative), content);
    host.clock.advance(20);
  }
  void scan() {
    host.clock.advance(10);
    state->checkFileSystemChanges();
  }
  /// What `author` logged arrives with a log load.
  void arrives(const std::string& author, const std::vector<std::string>& lines) {
    ASSERT_TRUE(state->prepareLogLoad());
    const std::string log = path(".Zolvar/" + author + ".fplog");
    std::string text = host.files.readAll(log).value_or("");
    for (const auto& line : lines) text += line + "\n";
    host.files.save(log, text);
    state->finishLogLoad();
  }
  static std::string line(double time, double parent, const std::string& file, double modTime,
                          const std::string& parentUser = "") {
    return fmt::format("\"{}\",\"{}\",\"{}\",\"{}\",\"{}\",\"\"", time, parent, file, modTime,
                       parentUser);
  }
  /// The listing shows the file with this time, and the copy run brings it.
  void fetch(const std::string& relative, const std::string& content, std::int64_t modTime) {
    const ParticipantAddress bob{"bob", "beta.local", 50000, "Docs"};
    const CopyPlan plan = state->decideListing({{'-', content.size(), {modTime}, relative}}, bob);
    for (const auto& ready : state->prepareCopy(plan.files)) {
      host.files.save(path(ready), content, modTime);
    }
    state->checkTodoFiles();
  }
  std::int64_t now() { return static_cast<std::int64_t>(host.clock.now()); }
  std::string ownLog() {
    return host.files.readAll(path(".Zolvar/me@alpha.local.fplog")).value_or("");
  }
  std::size_t ownLines() {
    const std::string log = ownLog();
    return static_cast<std::size_t>(std::count(log.begin(), log.end(), '\n'));
  }
  /// When our last entry of a path was logged.
  double leafTimeOf(const std::string& relative) {
    std::istringstream lines(ownLog());
    double time = 0;
    for (std::string line; std::getline(lines, line);) {
      if (line.find(",\"" + relative + "\",") != std::string::npos)
        time = std::stod(line.substr(1));
    }
    return time;
  }
  const std::vector<std::string>& missing() { return *heard.snapshot->missing; }
  VersionId leafOf(const std::string& user) {
    for (const auto& conflict : *heard.snapshot->conflicts) {
      for (const auto& version : conflict.versions) {
        if (version.id.userId == user) return version.id;
      }
    }
    return {};
  }

  Heard heard;
  SimulatedPlatform host{"alpha", "me"};
  std::unique_ptr<KDPoolState> state;
};

}  // namespace zolvar
