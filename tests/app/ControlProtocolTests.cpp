#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/AppHost.h"
#include "app/ControlProtocol.h"
#include "app/ControlRequest.h"

namespace zolvar {
namespace {

using nlohmann::json;
using testing::HasSubstr;

TEST(ControlRequest, refusesWhatItDoesNotUnderstandWithOneSentence) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "no JSON"},
      {"{", "no JSON"},
      {"{\"command\":\"list\"} x", "no JSON"},
      {"\xff", "no valid UTF-8"},
      {"[]", "must be a JSON object"},
      {"\"list\"", "must be a JSON object"},
      {"{}", "must have the field 'command'"},
      {R"({"command":1})", "must have the field 'command'"},
      {R"({"command":"bogus"})", "There is no command 'bogus'."},
      {R"({"command":"list","name":"x"})", "The command 'list' has no field 'name'."},
      {R"({"command":"missing"})", "The command 'missing' needs the field 'name'."},
      {R"({"command":"missing","name":1})", "The field 'name' must be a text."},
      {R"({"command":"missing","name":null})", "The field 'name' must be a text."},
      {R"({"command":"missing","name":["x"]})", "The field 'name' must be a text."},
      {R"({"command":"remove","name":"x","yes":"true"})", "The field 'yes' must be true or false."},
      {R"({"command":"use","name":"x","path":"y"})", "needs the field 'version'"},
      {std::string(200000, '['), "no JSON"},
      {"{\"command\":\"get\",\"key\":\"" + std::string(LongestControlLine, 'x') + "\"}",
       "too long"},
  };
  for (const auto& [line, sentence] : rows) {
    const auto request = ControlRequest::parse(line);
    ASSERT_FALSE(request) << line.substr(0, 60);
    EXPECT_THAT(refusalText(request.error()), HasSubstr(sentence)) << line.substr(0, 60);
  }
  const auto request = ControlRequest::parse(R"({"command":"sync","name":"Döcs","wait":true})");
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text("name"), "Döcs");
  EXPECT_TRUE(request->flag("wait"));
  EXPECT_FALSE(request->has("path"));
}

class ControlProtocolTest : public testing::Test {
 protected:
  ControlProtocolTest() {
    host.platform.files.write("/home/user/Docs/a", "text", 1'700'000'000);
    host.start();
    host.advance(1);
    open();
  }
  ~ControlProtocolTest() override { protocol.reset(); }
  void open() {
    ControlProtocol::Callbacks callbacks;
    callbacks.send = [this](const json& answer) { answers.push_back(answer); };
    callbacks.idle = [this] { ++idles; };
    callbacks.quit = [this] { ++quits; };
    protocol = std::make_unique<ControlProtocol>(*host.app, *host.operations, callbacks);
  }
  /// The answer to one request.
  json ask(const json& request) {
    answers.clear();
    protocol->handleLine(request.dump());
    host.platform.loop.runUntil([&] { return !protocol->isBusy(); }, 60);
    return answers.empty() ? json() : answers.back();
  }
  std::string refused(const json& request) { return ask(request).value("error", "(done)"); }

  SimulatedWorld world;
  AppHost host{world, "alpha", "ann"};
  std::unique_ptr<ControlProtocol> protocol;
  std::vector<json> answers;
  int idles = 0;
  int quits = 0;
};

TEST_F(ControlProtocolTest, answersEveryCommandInTheAgreedForm) {
  const json done = {{"ok", true}, {"data", nullptr}};
  EXPECT_EQ(ask({{"command", "list"}}), (json{{"ok", true}, {"data", json::array()}}));
  EXPECT_EQ(ask({{"command", "share"}, {"folder", "/home/user/Docs"}}), done);
  EXPECT_EQ(idles, 1) << "the answer came later";
  host.advance(20);
  const json list = ask({{"command", "list"}}).at("data");
  EXPECT_EQ(list, json::parse(R"([{"name":"Docs","displayName":"Docs","addresses":false,
      "folder":"/home/user/Docs","active":true,
      "phase":"active","announced":true,"participants":0,"missing":0,"conflicts":0,
      "passwordRequired":false,"syncing":false,"trouble":"","state":"alone","stateWord":"alone",
      "pausedUntil":null}])"));
  const json people = ask({{"command", "participants"}, {"name", "Docs"}}).at("data");
  ASSERT_EQ(people.size(), 1U);
  EXPECT_EQ(people[0].at("userId"), "ann@alpha.local");
  EXPECT_EQ(people[0].at("local"), true);
  for (const char* listing : {"missing", "conflicts"}) {
    EXPECT_EQ(ask({{"command", listing}, {"name", "Docs"}}).at("data"), json::array());
  }
  EXPECT_THAT(ask({{"command", "tree"}, {"name", "Docs"}, {"path", "a"}}).at("data").dump(),
              HasSubstr("ann@alpha.local"));
  const json status = ask({{"command", "status"}}).at("data");
  EXPECT_EQ(status.at("userId"), "ann@alpha.local");
  EXPECT_EQ(status.at("port"), 49999);
  EXPECT_EQ(status.at("daemonRunning"), true);
  EXPECT_EQ(status.at("syncing"), nullptr);
  EXPECT_EQ(ask({{"command", "set"}, {"key", "Pace"}, {"value", "quick"}}), done);
  EXPECT_EQ(ask({{"command", "get"}, {"key", "Pace"}}).at("data"), "quick");
  EXPECT_EQ(ask({{"command", "set"}, {"key", "Pace"}, {"value", ""}}), done);
  EXPECT_EQ(ask({{"command", "get"}, {"key", "Pace"}}).at("data"), nullptr);
  EXPECT_EQ(ask({{"command", "sync"}}), done);
  EXPECT_EQ(ask({{"command", "sync"}, {"name", "Docs"}, {"wait", true}}).at("data"),
            json::parse(R"({"synced":[],"failed":[],"missing":0})"));
  EXPECT_EQ(ask({{"command", "unsubscribe"}, {"name", "Docs"}}), done);
  EXPECT_EQ(ask({{"command", "quit"}}), done);
  EXPECT_EQ(quits, 1);
}

TEST_F(ControlProtocolTest, refusesWithOneSentence) {
  ASSERT_TRUE(ask({{"command", "share"}, {"folder", "/home/user/Docs"}}).at("ok"));
  const std::pair<json, const char*> rows[] = {
      {{{"command", "missing"}, {"name", "Nope"}}, "There is no folder named 'Nope'."},
      {{{"command", "unsubscribe"}, {"name", "Nope"}}, "There is no folder named 'Nope'."},
      {{{"command", "remove"}, {"name", "Docs"}}, "say yes"},
      {{{"command", "password"}, {"name", "Docs"}, {"password", std::string(501, 'x')}}, "assword"},
      {{{"command", "subscribe"}, {"name", "Docs"}, {"folder", "x"}}, "must be a full one"},
      {{{"command", "share"}, {"folder", "Docs"}}, "must be a full one"},
      {{{"command", "share"}}, "needs the field 'folder' or 'addresses'"},
      {{{"command", "share"}, {"addresses", "Friends"}}, "There is no address book."},
      {{{"command", "tree"}, {"name", "Docs"}, {"path", "../a"}}, "no path of a file"},
      {{{"command", "use"}, {"name", "Docs"}, {"path", "a"}, {"version", "x"}}, "no id"},
      {{{"command", "drop"}, {"name", "Docs"}, {"path", "a"}, {"version", "bob@b.local:1"}}, "."},
      {{{"command", "fetch"},
        {"name", "Docs"},
        {"path", "a"},
        {"version", "b@b.local:1"},
        {"to", "a"}},
       "must be a full one"},
      {{{"command", "answer"}, {"name", "Docs"}, {"answer", "maybe"}}, "'reget' or 'delete'"},
      {{{"command", "answer"}, {"name", "Docs"}, {"answer", "delete"}}, "no open question"},
      {{{"command", "sync"}, {"wait", true}}, "needs the name"},
      {{{"command", "set"}, {"key", "pausedFolders"}, {"value", "x"}}, "keeps the setting"},
  };
  for (const auto& [request, sentence] : rows) {
    EXPECT_THAT(refused(request), HasSubstr(sentence)) << request.dump().substr(0, 100);
    EXPECT_NE(refused(request), "(done)") << request.dump().substr(0, 100);
  }
  EXPECT_TRUE(host.isActive("Docs"));
}

TEST_F(ControlProtocolTest, tellsWatchersWhatChanged) {
  ask({{"command", "watch"}});
  answers.clear();
  host.share("/home/user/Docs");
  host.advance(60);
  std::vector<json> states;
  for (const json& event : answers) {
    if (event.at("event") == "pool") states.push_back(event.at("pool"));
  }
  ASSERT_FALSE(states.empty());
  EXPECT_EQ(std::adjacent_find(states.begin(), states.end()), states.end()) << "told twice";
  EXPECT_EQ(states.back(), ask({{"command", "list"}}).at("data").at(0));
  const std::size_t told = answers.size();
  protocol.reset();
  EXPECT_TRUE(host.operations->unsubscribe("Docs"));
  EXPECT_EQ(answers.size(), told);
}

TEST_F(ControlProtocolTest, dropsAnswersForWhoHasGone) {
  protocol->handleLine(R"({"command":"share","folder":"/home/user/Docs"})");
  EXPECT_TRUE(protocol->isBusy());
  protocol.reset();
  host.advance(5);
  EXPECT_TRUE(answers.empty());
  EXPECT_TRUE(host.isActive("Docs"));
}

}  // namespace
}  // namespace zolvar
