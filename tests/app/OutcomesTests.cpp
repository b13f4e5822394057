#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/Outcomes.h"
#include "app/TwoHosts.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// A window that remembers what it was to show, and answers when the test says so.
struct RecordingFrontEnd : FrontEnd {
  std::vector<std::string> lines;
  std::function<void(PasswordAnswer)> password;
  std::function<void(int)> deletion;
  std::function<void(int)> alert;

  void showConflict(const std::string& poolName, const std::string& path) override {
    lines.push_back("conflict " + poolName + " " + path);
  }
  void showPoolSettings(const std::string& poolName) override {
    lines.push_back("settings " + poolName);
  }
  void askAboutPassword(const std::string& poolName, const PasswordFailureText&,
                        std::function<void(PasswordAnswer)> answered) override {
    lines.push_back("password " + poolName);
    password = std::move(answered);
  }
  void askAboutDeletion(const std::string&, const Alert& alert,
                        std::function<void(int)> answered) override {
    lines.push_back("deletion " + alert.text.substr(0, alert.text.find(' ')));
    deletion = std::move(answered);
  }
  void withdrawDeletionAlert(const std::string&) override { lines.emplace_back("withdrawn"); }
  void showAlert(const Alert& shown, std::function<void(int)> answered) override {
    lines.push_back(shown.title);
    alert = std::move(answered);
  }
};

class OutcomesTest : public TwoHosts {
 protected:
  OutcomesTest() {
    ann.platform.files.write("/home/user/Docs/other", "text");
    start();
    bob.app->outcomes().setFrontEnd(&window);
    EXPECT_EQ(ann.share("/home/user/Docs"), "");
    EXPECT_TRUE(sees(bob, "Docs"));
  }
  ~OutcomesTest() override { bob.app->outcomes().setFrontEnd(nullptr); }
  std::optional<std::string> at(AppHost& host, const std::string& path) {
    return host.platform.files.readAll("/home/user/Docs/" + path);
  }
  void pair() {
    ASSERT_EQ(bob.subscribe("Docs", "/home/user/Docs"), "");
    ASSERT_TRUE(until([&] { return at(bob, "other") == "text"; }));
    world.loop.advance(60);
  }
  SimulatedWorkspace& desktop() { return bob.platform.workspace; }

  RecordingFrontEnd window;
};

TEST_F(OutcomesTest, tellWhatCameAndWhatWent) {
  pair();
  EXPECT_EQ(desktop().count("Got 2 files in 'Docs':\n\nletter\nother"), 1U);
  ann.platform.files.write("/home/user/Docs/third", "x");
  ASSERT_TRUE(until([&] { return desktop().count("Got 1 file in 'Docs':") == 1; }));
  EXPECT_EQ(desktop().shown.size(), 1U) << "the newer takes the older one's place";
  EXPECT_TRUE(desktop().click("Got 1 file"));
  EXPECT_TRUE(window.lines.empty()) << "it leads nowhere";

  bob.app->outcomes().setUsesNotices("Docs", false);
  ann.platform.files.write("/home/user/Docs/fourth", "x");
  ASSERT_TRUE(until([&] { return at(bob, "fourth").has_value(); }));
  world.loop.advance(60);
  EXPECT_EQ(desktop().count("fourth"), 0U);
  bob.app->outcomes().setUsesNotices("Docs", true);

  ASSERT_TRUE(ann.operations->set("HeadlessDeleteAnswer", "delete"));
  ann.platform.files.remove("/home/user/Docs/other");
  ASSERT_TRUE(until([&] { return desktop().count("Trashed 1 file in 'Docs':\n\nother") == 1; }));
  EXPECT_TRUE(bob.platform.log.contains("Deletion: Trashed 1 file in 'Docs':"));

  // The same trouble again and again is one notice, gone when it works.
  for (int i = 0; i < 3; ++i) {
    bob.platform.processes.troubles.nextStatus = 12;
    ASSERT_TRUE(bob.operations->sync("Docs"));
    const auto ends = static_cast<std::size_t>(i) + 1;
    ASSERT_TRUE(until([&] { return bob.observer.count("end 12") == ends; }));
  }
  EXPECT_EQ(desktop().count("Synchronization Error"), 1U);
  ASSERT_TRUE(bob.operations->sync("Docs"));
  ASSERT_TRUE(until([&] { return !desktop().click("Synchronization Error"); }));
}

TEST_F(OutcomesTest, leadFromAConflictToItsChoice) {
  pair();
  bob.app->outcomes().setUsesNotices("Docs", false);  // conflicts are told all the same
  ann.platform.files.write("/home/user/Docs/letter", "ann's");
  bob.platform.files.write("/home/user/Docs/letter", "bob's letter");
  ASSERT_TRUE(until([&] { return bob.operations->conflicts("Docs")->size() == 1; }));
  world.loop.advance(1);
  ASSERT_EQ(desktop().count("Conflict in Folder 'Docs':\n'letter' has 2 different/conflicting"),
            1U);
  EXPECT_TRUE(desktop().shown.back().notice.isSticky);
  EXPECT_TRUE(desktop().click("Conflict"));
  EXPECT_THAT(window.lines, ElementsAre("conflict Docs letter"));
  EXPECT_THROW(bob.app->outcomes().noticeWasClicked({ConflictNotice, "Nope", "x"}),
               InconsistencyError);
  const auto conflict = bob.operations->conflicts("Docs").value().at(0);
  const auto other = conflict.versions.at(conflict.versions.at(0).isLocal ? 1 : 0).id.text();
  EXPECT_EQ(
      bob.outcome([&](auto done) { bob.operations->dropVersion("Docs", "letter", other, done); }),
      "");
  EXPECT_TRUE(until([&] { return !desktop().click("Conflict"); })) << "still on the screen";
}

TEST_F(OutcomesTest, settleADifferentPasswordInThreeWays) {
  const auto fails = [&](std::size_t times) {
    return until([&] { return bob.observer.count("password ann@alpha.local") == times; });
  };
  ASSERT_EQ(bob.subscribe("Docs", "/home/user/Docs", "mine alone"), "");
  ASSERT_TRUE(fails(1));
  EXPECT_EQ(bob.operations->list().front().state.text, "waiting for the password");
  window.password(PasswordAnswer::ChangePassword);
  EXPECT_THAT(window.lines, ElementsAre("password Docs", "settings Docs"));

  const auto again = [&] { bob.app->scheduler().retryPool("Docs"); };
  again();
  ASSERT_TRUE(fails(2));
  again();
  ASSERT_TRUE(fails(3));
  EXPECT_EQ(window.lines.size(), 3U) << "a second panel beside the first";
  window.password(PasswordAnswer::IgnoreSubscriber);
  EXPECT_TRUE(bob.participant("Docs", "alpha")->isIgnored());
  again();
  world.loop.advance(120);
  EXPECT_EQ(bob.observer.count("password ann@alpha.local"), 3U);
  ASSERT_TRUE(bob.operations->ignore("Docs", "ann@alpha.local", false));
  EXPECT_FALSE(bob.operations->ignore("Docs", "nobody@x.local", true));
  again();
  ASSERT_TRUE(fails(4));
  window.password(PasswordAnswer::DeactivateFolder);
  EXPECT_EQ(bob.operations->list().front().state.text, "not subscribed");
}

TEST_F(OutcomesTest, askOneQuestionAFolderAndReplaceIt) {
  pair();
  window.lines.clear();
  bob.platform.files.remove("/home/user/Docs/letter");
  ASSERT_TRUE(until([&] { return window.lines == std::vector<std::string>{"deletion 1"}; }));
  const auto first = window.deletion;
  bob.platform.files.remove("/home/user/Docs/other");
  ASSERT_TRUE(until([&] { return window.lines.back() == "deletion 2"; }));
  first(SecondButton);
  world.loop.advance(60);
  EXPECT_TRUE(at(ann, "letter")) << "an answer to a question that was replaced";
  EXPECT_EQ(bob.operations->list().front().state.text, "question open");

  RecordingFrontEnd later;
  bob.app->outcomes().setFrontEnd(&later);
  EXPECT_THAT(later.lines, ElementsAre("deletion 2"));
  later.deletion(FirstButton);
  ASSERT_TRUE(until([&] { return at(bob, "letter") && at(bob, "other"); }));
  EXPECT_THAT(later.lines, ElementsAre("deletion 2", "withdrawn"));

  // Files that nobody can give any more: asked for, and given up.
  ASSERT_TRUE(until([&] { return bob.operations->list().front().state.text == "in step"; }));
  EXPECT_FALSE(bob.operations->deleteQueuedFiles("Docs", {})) << "nothing is missing";
  ann.platform.files.write("/home/user/Docs/lost", "x");
  ASSERT_TRUE(until([&] { return ann.pool("Docs").snapshot()->fileCount == 3; }));
  ann.platform.files.remove("/home/user/Docs/lost");
  ASSERT_TRUE(until([&] { return bob.operations->missing("Docs")->size() == 1; }))
      << bob.platform.log.text();
  ASSERT_TRUE(bob.operations->deleteQueuedFiles("Docs", {"lost"}));
  EXPECT_EQ(bob.operations->questions().at(0).question.paths, std::vector<std::string>{"lost"});
  EXPECT_EQ(bob.outcome([&](auto done) { bob.operations->answer("Docs", true, done); }), "");
  EXPECT_TRUE(until([&] { return bob.operations->missing("Docs")->empty(); }));
  EXPECT_TRUE(bob.operations->questions().empty());
}

TEST_F(OutcomesTest, waitForNobodyAfterAFolderWasLeft) {
  pair();
  ann.platform.files.write("/home/user/Docs/letter", "ann's");
  bob.platform.files.write("/home/user/Docs/letter", "bob's letter");
  ASSERT_TRUE(until([&] { return bob.operations->conflicts("Docs")->size() == 1; }));
  bob.platform.files.remove("/home/user/Docs/other");
  ASSERT_TRUE(until([&] { return bob.operations->questions().size() == 1; }));
  ASSERT_TRUE(bob.operations->unsubscribe("Docs"));
  EXPECT_FALSE(desktop().click("Conflict")) << "still on the screen";
  EXPECT_EQ(window.lines.back(), "withdrawn");
  EXPECT_TRUE(bob.operations->questions().empty());
  EXPECT_EQ(bob.operations->list().front().conflicts, 0U);
}

}  // namespace
}  // namespace zolvar
