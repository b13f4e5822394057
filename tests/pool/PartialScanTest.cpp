#include <fmt/format.h>
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <sstream>

#include "pool/FolderWatch.h"
#include "pool/KDPoolState.h"
#include "support/QuietListener.h"
#include "support/SimulatedPlatform.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

/// A member of a pool, whose folder is observed or not.
class Member {
 public:
  explicit Member(bool isObserved) : changed_(isObserved ? new ChangedFolders : nullptr) {
    host.files.write("/home/user/Docs/.Zolvar/me@alpha.local.fplog", "");
    state = std::make_unique<KDPoolState>(
        KDPoolState::Settings{"Docs", "/home/user/Docs", "me@alpha.local", Pace::normal(),
                              changed_},
        host.platform(), std::make_unique<QuietListener>(snapshot));
    if (changed_) {
      watch_ = std::make_unique<FolderWatch>(host.files, center_, host.log, "/home/user/Docs",
                                             changed_, [] {});
    }
    EXPECT_TRUE(state->activate());
  }
  void scan() {
    host.loop.runUntilIdle();
    if (watch_) watch_->refresh(host.clock.now());
    host.clock.advance(2);
    state->checkFileSystemChanges();
  }
  /// What was logged: path, time and whether it descends from something; the order and the moment
  /// of an entry within a scan are nobody's concern.
  [[nodiscard]] std::multiset<std::string> logged() const {
    std::multiset<std::string> entries;
    const auto log = host.files.readAll("/home/user/Docs/.Zolvar/me@alpha.local.fplog");
    std::istringstream lines(log.value_or(""));
    for (std::string line; std::getline(lines, line);) {
      std::vector<std::string> fields;
      std::istringstream split(line);
      for (std::string field; std::getline(split, field, ',');) fields.push_back(field);
      entries.insert(fields.at(2) + " " + fields.at(3) + " after " + fields.at(4) +
                     (fields.size() > 5 ? " " + fields.at(5) : ""));
    }
    return entries;
  }

  SimulatedPlatform host;
  std::unique_ptr<KDPoolState> state;
  std::shared_ptr<const PoolSnapshot> snapshot;

 private:
  NotificationCenter center_;
  std::shared_ptr<ChangedFolders> changed_;
  std::unique_ptr<FolderWatch> watch_;
};

/// Everything that a person, other programs and peers do to a folder, done to two of them: one
/// scanned as a whole each time, the other only where something was reported.
class PartialScanTest : public testing::TestWithParam<unsigned> {
 protected:
  std::string pathName() {
    static constexpr const char* Names[] = {"a", "b", "c", "d.txt", ".zolvarignore"};
    std::string path;
    for (unsigned depth = random_() % 3; depth > 0; --depth) {
      path += std::string(Names[random_() % 3]) + "/";
    }
    return path + Names[random_() % 5];
  }
  void onBoth(const std::function<void(Member&)>& action) {
    action(whole_);
    action(partial_);
  }
  /// Whether a file can be made there: nothing is in the way.
  [[nodiscard]] bool isFree(const std::string& path) const {
    const auto there = whole_.host.files.attributesOf(path);
    if (there && there->kind == FileKind::Directory) return false;
    for (std::string_view above = parentPath(path); above.size() > 1; above = parentPath(above)) {
      const auto step = whole_.host.files.attributesOf(std::string(above));
      if (step && step->kind != FileKind::Directory) return false;
    }
    return true;
  }
  void perform() {
    const std::string path = "/home/user/Docs/" + pathName();
    const std::string other = "/home/user/Docs/" + pathName();
    const unsigned kind = random_() % 9;
    const auto now = static_cast<std::int64_t>(whole_.host.clock.now());
    const std::int64_t time = random_() % 4 == 0 ? now : now - 1000 - random_() % 50;
    if (!isFree(kind == 5 ? other : path) && kind != 4 && kind != 7) return;
    history_ += fmt::format("{} {} {} {}\n", kind, path, other, time);
    onBoth([&](Member& member) {
      SimulatedFileSystem& files = member.host.files;
      try {
        if (kind <= 2) {
          files.save(path, path.ends_with("ignore") ? "c\n" : other, time);
        } else if (kind == 3) {
          files.write(path, other, time);
        } else if (kind == 4) {
          files.remove(path);
        } else if (kind == 5) {
          files.move(path, other);
        } else if (kind == 6) {
          (void)files.makeFolder(path);
        } else if (kind == 7) {
          files.setTime(path, time);
        } else {
          arrives(member, path.substr(std::string("/home/user/Docs/").size()), now);
        }
      } catch (const std::logic_error&) {
      }
    });
  }
  /// A peer has made the file; now and then it is fetched at once.
  void arrives(Member& member, const std::string& path, std::int64_t now) {
    ASSERT_TRUE(member.state->prepareLogLoad());
    const std::string log = "/home/user/Docs/.Zolvar/bob@beta.local.fplog";
    std::string text = member.host.files.readAll(log).value_or("");
    text += fmt::format("\"{}\",\"0\",\"{}\",\"{}\",\"\",\"\"\n", now - 5, path, now - 500);
    member.host.files.save(log, text);
    member.state->finishLogLoad();
    if (now % 2 == 0) return;
    const ParticipantAddress bob{"bob", "beta.local", 50000, "Docs"};
    const CopyPlan plan = member.state->decideListing({{'-', 1, {now - 500}, path}}, bob);
    for (const auto& ready : member.state->prepareCopy(plan.files)) {
      member.host.files.save("/home/user/Docs/" + ready, "x", now - 500);
    }
    member.state->checkTodoFiles();
  }

  std::string history_;
  std::mt19937 random_{GetParam()};
  Member whole_{false};
  Member partial_{true};
};

TEST_P(PartialScanTest, findsWhatAScanOfEverythingFinds) {
  for (int step = 0; step < 60; ++step) {
    for (unsigned count = random_() % 3; count > 0; --count) perform();
    if (random_() % 3 == 0) onBoth([](Member& member) { member.host.clock.advance(12); });
    history_ += fmt::format("scan {} at {}\n", step, whole_.host.clock.now());
    onBoth([](Member& member) { member.scan(); });
    ASSERT_EQ(whole_.logged(), partial_.logged()) << "step " << step << "\n" << history_;
    ASSERT_EQ(*whole_.snapshot->missing, *partial_.snapshot->missing) << "step " << step;
    ASSERT_EQ(whole_.host.files.contents("/home/user/Docs"),
              partial_.host.files.contents("/home/user/Docs"));
    const auto& asked = whole_.snapshot->question;
    const auto& alsoAsked = partial_.snapshot->question;
    ASSERT_EQ(asked ? asked->paths : decltype(asked->paths){},
              alsoAsked ? alsoAsked->paths : decltype(asked->paths){})
        << "step " << step;
    if (asked && random_() % 2 == 0) {
      const int code = random_() % 2 == 0 ? 1000 : 1001;
      onBoth([&](Member& member) {
        (void)member.state->answerQuestion(member.snapshot->question->id, code);
      });
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, PartialScanTest, testing::Range(1U, 41U));

}  // namespace
}  // namespace zolvar
