#include <gtest/gtest.h>

#include "app/FolderState.h"
#include "app/Pauses.h"
#include "app/TwoHosts.h"

namespace zolvar {
namespace {

TEST(FolderState, tellsTheFirstThatHolds) {
  FolderFacts calm;
  calm.phase = PoolPhase::Active;
  calm.isSubscribed = calm.isScanned = true;
  calm.present = calm.reachable = 1;
  struct Row {
    const char* text;
    std::function<void(FolderFacts&)> spoil;
    bool needsPerson = false;
  };
  const Row rows[] = {
      {"not subscribed", [](auto& facts) { facts.isSubscribed = false; }},
      {"paused", [](auto& facts) { facts.isPaused = true; }},
      {"waiting for the drive", [](auto& facts) { facts.isAccessible = false; }, true},
      {"waiting for the password", [](auto& facts) { facts.isPasswordReadable = false; }, true},
      {"waiting for the password", [](auto& facts) { facts.differing = 1; }, true},
      {"waiting for the clock", [](auto& facts) { facts.isClockOff = true; }, true},
      {"question open", [](auto& facts) { facts.hasQuestion = true; }, true},
      {"conflict in 1 file", [](auto& facts) { facts.conflicts = 1; }, true},
      {"conflict in 2 files", [](auto& facts) { facts.conflicts = 2; }, true},
      {"fetching 3 of 7", [](auto& facts) { facts.filesDone = 3, facts.filesWanted = 7; }},
      {"fetching 0 of 4", [](auto& facts) { facts.missing = 4, facts.isObtainable = true; }},
      {"fetching 0 of 4", [](auto& facts) { facts.missing = 4, facts.unasked = 1; }},
      {"missing 4, nobody here has them", [](auto& facts) { facts.missing = 4; }},
      {"missing 1, nobody here has it",
       [](auto& facts) { facts.missing = 1, facts.present = facts.reachable = 0; }},
      {"alone", [](auto& facts) { facts.present = facts.reachable = 0; }},
      {"checking", [](auto& facts) { facts.isScanned = false; }},
      {"checking", [](auto& facts) { facts.phase = PoolPhase::Activating; }},
      {"checking", [](auto& facts) { facts.phase = PoolPhase::Recovering; }},
      {"alone", [](auto& facts) { facts.phase = PoolPhase::Recovering, facts.present = 0; }},
      {"checking", [](auto& facts) { facts.reachable = 0; }},
      {"checking", [](auto& facts) { facts.unasked = 1; }},
      {"checking", [](auto& facts) { facts.isSyncing = true; }},
      {"checking", [](auto& facts) { facts.hasTrouble = true; }},
      {"in step", [](auto&) {}},
  };
  FolderFacts worse = calm;  // with this and all later troubles at once
  for (auto row = std::rbegin(rows); row != std::rend(rows); ++row) {
    FolderFacts facts = calm;
    row->spoil(facts);
    EXPECT_EQ(folderState(facts).text, row->text);
    EXPECT_EQ(folderState(facts).needsPerson(), row->needsPerson) << row->text;
    row->spoil(worse);
    const bool isInStep = folderState(worse).kind == FolderStateKind::InStep;
    EXPECT_EQ(isInStep, row == std::rbegin(rows)) << row->text;
  }
}

TEST(Pauses, readHowLong) {
  const std::pair<const char*, double> rows[] = {
      {"90", 90}, {"90s", 90}, {"15m", 900}, {"1h30m", 5400}, {"2d", 172800}};
  for (const auto& [text, seconds] : rows) EXPECT_EQ(Pauses::parseDuration(text), seconds) << text;
  for (const char* text : {"", "h", "0", "-1m", "1x", "1.5h", "1h 30m", "99999999999h"}) {
    EXPECT_FALSE(Pauses::parseDuration(text)) << text;
  }
}

class StateTest : public TwoHosts {
 protected:
  StateTest() {
    start();
    EXPECT_EQ(ann.share("/home/user/Docs"), "");
    EXPECT_TRUE(sees(bob, "Docs"));
  }
  static std::string state(AppHost& host) {
    const auto pools = host.operations->list();
    return pools.empty() ? "(none)" : pools.front().state.text;
  }
  static Contact contact(AppHost& host) {
    const auto participants = host.operations->participants("Docs").value();
    for (const auto& each : participants) {
      if (!each.isLocal) return each.contact;
    }
    return {};
  }
  void pair() {
    ASSERT_EQ(bob.subscribe("Docs", "/home/user/Docs"), "");
    ASSERT_TRUE(until([&] { return state(ann) == "in step" && state(bob) == "in step"; }))
        << state(ann) << "; " << state(bob);
  }
};

TEST_F(StateTest, isHonestFromTheFirstToTheLast) {
  EXPECT_EQ(state(ann), "alone");
  EXPECT_EQ(state(bob), "not subscribed");
  ASSERT_EQ(bob.subscribe("Docs", "/home/user/Docs"), "");
  std::set<std::string> seen;
  ASSERT_TRUE(until([&] {
    seen.insert(state(bob));
    EXPECT_TRUE(state(bob) != "in step" || arrived("letter")) << "too early";
    return state(bob) == "in step";
  }));
  EXPECT_TRUE(seen.contains("checking"));
  EXPECT_EQ(contact(bob).standing, Contact::Standing::Reachable);

  // News that was announced and not fetched yet is no step.
  ann.platform.files.write("/home/user/Docs/more", "of it");
  ASSERT_TRUE(until([&] {
    const bool waits =
        bob.app->scheduler().queue().contains(bob.participant("Docs", "alpha")) && !arrived("more");
    EXPECT_FALSE(waits && state(bob) == "in step");
    return arrived("more") == "of it" && state(bob) == "in step";
  }));

  const auto trouble = [&] {
    return bob.operations->info(*bob.app->peer().presence("Docs")).trouble;
  };
  for (const bool isAgain : {false, true}) {
    bob.platform.processes.troubles.nextStatus = 12;
    ASSERT_TRUE(bob.operations->sync("Docs"));
    ASSERT_TRUE(until([&] { return contact(bob).failures == (isAgain ? 2 : 1); }));
    EXPECT_EQ(trouble(), isAgain ? contact(bob).reason : "") << "one failure alone tells little";
  }
  EXPECT_NE(contact(bob).reason.find("Error syncing folder 'Docs'"), std::string::npos);
  EXPECT_EQ(state(bob), "checking");
  EXPECT_EQ(bob.platform.workspace.count("Synchronization Error"), 1U);
  ASSERT_TRUE(until([&] { return state(bob) == "in step"; })) << state(bob);
  EXPECT_EQ(trouble(), "");

  world.network.setUp("alpha", false);
  ASSERT_TRUE(until([&] { return state(bob) == "alone"; }, 600));
  world.network.setUp("alpha", true);
  ASSERT_TRUE(until([&] { return state(bob) == "in step"; }, 600)) << state(bob);

  bob.app->noteClock(-12);
  EXPECT_EQ(state(bob), "waiting for the clock");
  bob.app->noteClock(1);
  bob.platform.files.remove("/home/user/Docs");
  ASSERT_TRUE(until([&] { return state(bob) == "waiting for the drive"; }));
  bob.restart();
  ASSERT_TRUE(until([&] { return state(bob) == "waiting for the drive"; })) << state(bob);
  ASSERT_TRUE(bob.operations->pause("Docs", {}));
  EXPECT_EQ(state(bob), "paused");
  ASSERT_TRUE(bob.operations->resume("Docs"));
  ASSERT_TRUE(bob.operations->set("activePools", R"(["Docs"])"));
  EXPECT_FALSE(bob.platform.files.exists("/home/user/Docs")) << "made where a drive belongs";
  ASSERT_TRUE(bob.operations->unsubscribe("Docs"));
  EXPECT_EQ(state(bob), "not subscribed");
}

TEST_F(StateTest, forgetsWhatNobodySharesAndWaitsForNobodyStrange) {
  pair();
  bob.participant("Docs", "alpha")->setSpeaksOurProtocol(false);
  std::optional<SyncOutcome> outcome;
  ASSERT_TRUE(
      bob.operations->syncAndWait("Docs", {}, [&](const auto& ended) { outcome = ended.value(); }));
  ASSERT_TRUE(until([&] { return outcome.has_value(); }, 5));
  EXPECT_EQ(outcome->failed.size(), 1U);

  ASSERT_TRUE(bob.operations->unsubscribe("Docs"));
  ASSERT_TRUE(ann.operations->unsubscribe("Docs"));
  ASSERT_TRUE(bob.operations->set("QMPool-Docs", ""));
  world.loop.advance(3600);
  EXPECT_EQ(state(bob), "not subscribed");
  world.loop.advance(25 * 3600);
  EXPECT_EQ(state(bob), "(none)");
  EXPECT_EQ(state(ann), "not subscribed") << "its folder is still here";
}

TEST_F(StateTest, carriesNothingWhilePausedAndSurvivesARestart) {
  pair();
  ASSERT_TRUE(bob.operations->pause("Docs", 3600));
  EXPECT_EQ(state(bob), "paused");
  world.loop.advance(10);
  EXPECT_EQ(state(ann), "alone") << "a paused folder is not served";
  EXPECT_FALSE(bob.operations->sync("Docs"));
  ann.platform.files.write("/home/user/Docs/new", "from ann");
  bob.platform.files.write("/home/user/Docs/own", "from bob");
  bob.restart();
  world.loop.advance(600);
  EXPECT_EQ(state(bob), "paused");
  EXPECT_FALSE(arrived("new"));
  EXPECT_FALSE(ann.platform.files.exists("/home/user/Docs/own"));
  world.loop.advance(3000);
  EXPECT_TRUE(until([&] {
    return arrived("new") && ann.platform.files.readAll("/home/user/Docs/own") == "from bob";
  })) << state(bob);
  EXPECT_FALSE(bob.operations->list().front().pausedUntil);

  ASSERT_TRUE(bob.operations->pause({}, {}));
  EXPECT_EQ(state(bob), "paused");
  EXPECT_EQ(bob.operations->status().pausedUntil, 0);
  EXPECT_FALSE(bob.operations->resume("Docs")) << "everything is paused";
  ASSERT_TRUE(bob.operations->resume({}));
  EXPECT_TRUE(until([&] { return state(bob) == "in step"; })) << state(bob);
}

TEST_F(StateTest, givesBackWhatAFetchReplaced) {
  pair();
  const auto change = [&](const std::string& text) {
    ann.platform.files.write("/home/user/Docs/letter", text);
    ASSERT_TRUE(until([&] { return arrived("letter") == text; }));
    world.loop.advance(60);
  };
  change("second");
  std::vector<StoredVersion> kept;
  const auto list = [&] {
    bob.operations->versions("Docs", "letter", [&](const auto& found) { kept = found.value(); });
    world.loop.advance(1);
  };
  list();
  ASSERT_EQ(kept.size(), 1U);
  const auto restore = [&](const std::string& when) {
    return bob.outcome([&](auto done) { bob.operations->restore("Docs", "letter", when, done); });
  };
  EXPECT_NE(restore("1999-01-01"), "");
  ASSERT_EQ(restore(whenText(kept[0].keptAt)), "");
  EXPECT_EQ(arrived("letter"), "dear bob");
  EXPECT_TRUE(until([&] {
    return ann.platform.files.readAll("/home/user/Docs/letter") == "dear bob";
  })) << "it did not travel";
  world.loop.advance(60);
  EXPECT_EQ(state(bob), "in step");
  list();
  ASSERT_EQ(kept.size(), 1U) << "what was replaced is kept in turn";
  ASSERT_EQ(restore(kept[0].id), "");
  EXPECT_EQ(arrived("letter"), "second");
  bob.platform.files.remove("/home/user/Docs/letter");
  list();
  ASSERT_EQ(restore(kept.at(0).id), "") << "also where nothing lies";
  EXPECT_EQ(arrived("letter"), "dear bob");
}

}  // namespace
}  // namespace zolvar
