#include <gtest/gtest.h>

#include "net/ScriptedProcesses.h"
#include "net/ServerControl.h"
#include "net/TransferDaemon.h"
#include "platform/Lanes.h"

namespace zolvar {
namespace {

/// A host whose processes are scripted.
class DaemonTest : public testing::Test {
 protected:
  DaemonTest() { host.log.setDebug(true); }

  DaemonStart wanted(unsigned port = 49999) {
    DaemonStart start;
    start.port = port;
    start.configuration = {daemon->pidFilePath(),  daemon->logFilePath(),
                           daemon->lockFilePath(), daemon->passwordFilePath(),
                           std::nullopt,           {{"Docs", "/home/user/Docs", "h", true}}};
    start.passwordFileContent = "h:secret\n";
    return start;
  }
  bool exists(const std::string& path) const { return host.files.exists(path); }

  ScriptedHost host;
  Platform& platform = host.platform;
  ScriptedProcesses& processes = host.processes;
  const std::string support = *host.files.supportFolder();
  std::shared_ptr<TransferDaemon> daemon =
      std::make_shared<TransferDaemon>(platform, support, "/home/user/Public/Zolvar");
};

TEST_F(DaemonTest, startsWithItsFilesAndRemovesThemAtStop) {
  host.files.write(daemon->logFilePath(), "old lines\n");
  processes.duringLaunch = [this] {
    ASSERT_TRUE(exists(daemon->passwordFilePath()));
    EXPECT_EQ(host.files.attributesOf(daemon->passwordFilePath())->mode & 0777, 0600U);
    EXPECT_EQ(host.files.readAll(daemon->passwordFilePath()), "h:secret\n");
  };
  EXPECT_EQ(daemon->start(wanted()).value_or(0), 49999U);
  EXPECT_EQ(processes.launches.back(),
            (std::vector<std::string>{"--daemon", "--port=49999",
                                      "--config=" + daemon->configFilePath()}));
  EXPECT_EQ(daemon->runningPid(), 4711);
  EXPECT_TRUE(daemon->stop());
  EXPECT_EQ(processes.signals, (std::vector<std::pair<int, int>>{{4711, SIGTERM}}));
  for (const auto& path : {daemon->pidFilePath(), daemon->lockFilePath(), daemon->configFilePath(),
                           daemon->passwordFilePath()}) {
    EXPECT_FALSE(exists(path)) << path;
  }
  EXPECT_TRUE(exists(daemon->logFilePath()));
}

TEST_F(DaemonTest, boundsItsLog) {
  const std::string line = "anybody fetched a file\n";
  std::string lines;
  while (lines.size() <= 8U << 20) lines += line;
  host.files.write(daemon->logFilePath(), lines);
  daemon->boundLog();
  EXPECT_EQ(host.files.readAll(daemon->logFilePath()), "");
  EXPECT_EQ(host.files.readAll(daemon->logFilePath() + ".old"),
            lines.substr(lines.size() - (1 << 20)));
  host.files.write(daemon->logFilePath(), line);
  daemon->boundLog();
  EXPECT_EQ(host.files.readAll(daemon->logFilePath()), line);
}

TEST_F(DaemonTest, takesTheNextFreePortAndPutsTheLimitFirst) {
  processes.takenPorts = {49999, 50000};
  DaemonStart limited = wanted();
  limited.bandwidthLimit = 10;
  EXPECT_EQ(daemon->start(limited).value_or(0), 50001U);
  EXPECT_EQ(processes.launches.back()[0], "--bwlimit=10");
  EXPECT_EQ(processes.launches.back()[2], "--port=50001");
}

TEST_F(DaemonTest, withoutPasswordsKeepsNoPasswordFile) {
  host.files.write(daemon->passwordFilePath(), "h:old\n");
  DaemonStart open = wanted();
  open.configuration.modules[0].hasPassword = false;
  open.passwordFileContent.clear();
  ASSERT_TRUE(daemon->start(open));
  EXPECT_FALSE(exists(daemon->passwordFilePath()));
}

TEST_F(DaemonTest, neverSignalsAStranger) {
  for (const char* content : {"77\n", "78", "-5", "rubbish", ""}) {
    SCOPED_TRACE(content);
    processes.running[77] = {"/usr/bin/editor", "thesis.tex"};
    host.files.write(daemon->pidFilePath(), content);
    host.files.write(daemon->configFilePath(), "stale");
    EXPECT_EQ(daemon->runningPid(), 0);
    EXPECT_TRUE(daemon->stop());
    EXPECT_TRUE(processes.signals.empty());
    EXPECT_FALSE(exists(daemon->pidFilePath()));
    EXPECT_FALSE(exists(daemon->configFilePath()));
  }
}

TEST_F(DaemonTest, endsTheDaemonOfAnEarlierRunFirst) {
  processes.running[99] = {"zolvar", "--daemon", "--config=" + daemon->configFilePath()};
  processes.stubborn = {99};
  host.files.write(daemon->pidFilePath(), "99\n");
  EXPECT_TRUE(daemon->start(wanted()));
  EXPECT_EQ(processes.signals, (std::vector<std::pair<int, int>>{{99, SIGTERM}, {99, SIGKILL}}));
  EXPECT_EQ(daemon->runningPid(), 4711);
}

TEST_F(DaemonTest, tellsWhyItDoesNotStart) {
  struct Row {
    const char* what;
    std::function<void()> arrange;
    const char* words;
  };
  const Row rows[] = {
      {"exit status", [this] { processes.exitStatus = 3; },
       "Error: Server did not start (exitcode 3)"},
      {"no pid file", [this] { processes.writesPidFile = false; }, "did not write its pid file"},
      {"no tool", [this] { processes.hasTool = false; }, "zolvar"},
      {"no disk", [this] { host.files.faults.failAlways("replace"); },
       "Unable to launch daemon - could not create config file."},
      {"no port",
       [this] {
         for (unsigned p = 49999; p < 65536; ++p) processes.takenPorts.insert(p);
       },
       "no port from 49999 on is free"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    host.files.faults.clear();
    processes.exitStatus = 0;
    processes.writesPidFile = processes.hasTool = true;
    row.arrange();
    const double before = host.clock.now();
    const auto started = daemon->start(wanted());
    ASSERT_FALSE(started);
    EXPECT_TRUE(host.log.contains(row.words) ||
                started.error().message().find(row.words) != std::string::npos)
        << started.error().message();
    EXPECT_LE(host.clock.now() - before, 10.2);
  }
  DaemonStart broken = wanted();
  broken.configuration.modules[0].folderPath = "/x\npost-xfer exec = id";
  processes.takenPorts.clear();
  processes.launches.clear();
  EXPECT_FALSE(daemon->start(broken));
  EXPECT_TRUE(processes.launches.empty());
  EXPECT_FALSE(exists(daemon->passwordFilePath()));
}

/// The decisions about starts and stops, over the same scripted processes.
class ServerControlTest : public DaemonTest {
 protected:
  ServerControl::Done note(const std::string& name) {
    return [this, name](const Result<>& result) {
      told.push_back(name + (result                                          ? ""
                             : result.error().kind == FailureKind::Cancelled ? " cancelled"
                                                                             : " failed"));
    };
  }
  void run() { host.loop.runUntilIdle(); }

  std::vector<std::string> told;
  std::vector<bool> changes;
  ServerControl control{platform,
                        daemon,
                        host.lanes.start("peer"),
                        49999,
                        {[this] { return wanted(); },
                         [this](bool running, const std::string&) { changes.push_back(running); }}};
};

TEST_F(ServerControlTest, joinsRequestsMadeMeanwhile) {
  control.start(note("start"));
  for (int i = 0; i < 5; ++i) control.restart(note("restart"));
  EXPECT_FALSE(control.isRunning());
  run();
  EXPECT_TRUE(control.isRunning());
  EXPECT_EQ(processes.launches.size(), 2U);  // the start, and one restart for all five
  EXPECT_EQ(told.size(), 6U);
  EXPECT_EQ(processes.running.size(), 1U);

  told.clear();
  control.restart(note("restart"));
  control.start(note("start"));
  control.stop(note("stop"));
  control.restart(note("late restart"));
  run();
  EXPECT_FALSE(control.isRunning());
  EXPECT_TRUE(processes.running.empty());
  EXPECT_EQ(told, (std::vector<std::string>{"restart", "start cancelled", "stop", "late restart"}));

  control.restart({});  // of a daemon that nobody wants
  run();
  EXPECT_TRUE(processes.running.empty());
}

TEST_F(ServerControlTest, restartsWhenStartedBehindAStop) {
  control.start({});
  run();
  control.stop(note("stop"));
  control.stop(note("stop"));
  control.start(note("start"));
  run();
  EXPECT_TRUE(control.isRunning());
  EXPECT_EQ(processes.running.size(), 1U);
  EXPECT_EQ(told, (std::vector<std::string>{"stop", "stop", "start"}));
}

TEST_F(ServerControlTest, keepsThePortItFound) {
  processes.takenPorts = {49999};
  control.start({});
  run();
  EXPECT_EQ(control.port(), 50000U);
  processes.takenPorts = {};
  control.restart({});
  run();
  EXPECT_EQ(control.port(), 50000U);
}

TEST_F(ServerControlTest, triesAgainAfterAFailureAndRevivesADeadDaemon) {
  processes.exitStatus = 1;
  control.start(note("start"));
  run();
  EXPECT_EQ(told, std::vector<std::string>{"start failed"});
  EXPECT_FALSE(control.isRunning());
  processes.exitStatus = 0;
  host.loop.advance(31);
  EXPECT_TRUE(control.isRunning());

  processes.running.clear();
  host.loop.advance(31);
  EXPECT_TRUE(control.isRunning());
  EXPECT_EQ(processes.running.size(), 1U);
  EXPECT_TRUE(host.log.contains("ended by itself"));
}

}  // namespace
}  // namespace zolvar
