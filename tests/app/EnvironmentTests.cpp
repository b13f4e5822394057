#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "app/AppHost.h"
#include "app/EnvironmentChecks.h"
#include "app/OtherInstance.h"
#include "app/SettingRules.h"

namespace zolvar {
namespace {

TEST(OtherInstance, endsOnlyWhatHoldsTheLockAndIsOurs) {
  const std::string path = "/home/user/.local/share/Zolvar/zolvar.lock";
  struct Row {
    std::vector<std::string> commandLine;
    std::string content;  ///< "PID" is that process's id
    bool isEnded;
  };
  const Row rows[] = {
      {{"/usr/bin/zolvard", "--debug"}, "PID\n", true},
      {{"/opt/zolvar-desktop"}, "PID", true},
      {{"zolvard"}, "PID\n", true},
      {{"/usr/bin/python3", "zolvard"}, "PID\n", false},
      {{"/usr/bin/zolvard-like"}, "PID\n", false},
      {{"/usr/libexec/zolvar/zolvar", "--daemon"}, "PID\n", false},
      {{"/usr/bin/zolvard"}, "", false},
      {{"/usr/bin/zolvard"}, "PIDx\n", false},
      {{"/usr/bin/zolvard"}, "1\n", false},
      {{"/usr/bin/zolvard"}, "-PID\n", false},
      {{"/usr/bin/zolvard"}, std::to_string(::getpid()) + "\n", false},
  };
  for (const Row& row : rows) {
    SimulatedPlatform host;
    EXPECT_FALSE(killOtherInstances(host, path));  // no such file
    const int pid = host.processes.startStranger(row.commandLine);
    std::string content = row.content;
    if (const auto at = content.find("PID"); at != std::string::npos) {
      content.replace(at, 3, std::to_string(pid));
    }
    host.files.write(path, content);
    EXPECT_EQ(killOtherInstances(host, path), row.isEnded) << row.commandLine[0] << row.content;
    EXPECT_EQ(host.processes.commandLine(pid).empty(), row.isEnded) << row.content;
  }
}

TEST(EnvironmentChecks, wordTheirAlerts) {
  for (const double badSeconds : {12.34, -12.34}) {
    EXPECT_EQ(clockAlert(badSeconds).text,
              "Please set the computer's clock to the current time. Otherwise this could lead to "
              "unwanted effects.\n\nThe clock is currently off by 12.3 seconds.\n\nTip: Switch on "
              "'network time' in the 'Date and Time' system preferences.");
  }
  EXPECT_EQ(
      firewallAlert(49999).text,
      "The computer's firewall is currently blocking the local TCP port 49999. Please unblock "
      "this port in the System Preferences/Sharing preference pane.\n");
}

TEST(EnvironmentChecks, askTheServersOfTheSettings) {
  SimulatedPlatform host;
  EXPECT_EQ(timeServers(host).size(), 2U);
  host.defaults.setString("TimeServer1", "clock.lan");
  host.defaults.setString("TimeServer2", "none");
  EXPECT_EQ(timeServers(host), std::vector<std::string>{"clock.lan"});
  for (const char* fine : {"clock.lan", "10.0.0.1", "fd00::1", "none", ""}) {
    EXPECT_FALSE(settingProblem("TimeServer1", fine)) << fine;
  }
  for (const char* refused : {"-x", "a b", "a/b", "a;b"}) {
    EXPECT_TRUE(settingProblem("TimeServer2", refused)) << refused;
  }
}

TEST(EnvironmentChecks, tellOfABlockedPortOnce) {
  SimulatedWorld world;
  AppHost ann(world, "alpha", "ann");
  auto& desktop = ann.platform.workspace;
  ann.platform.firewall.says = FirewallAnswer::Blocked;
  ann.platform.files.write("/home/user/Docs/letter", "dear bob");
  ann.start();
  ann.advance(5);
  ASSERT_EQ(ann.share("/home/user/Docs"), "");  // restarts the daemon
  ann.advance(60);
  EXPECT_EQ(ann.platform.firewall.asked, std::vector<unsigned>{49999});
  EXPECT_EQ(desktop.count("The Computer's Firewall Blocks Zolvar"), 1U);
  EXPECT_TRUE(ann.platform.log.contains("Port 49999 is blocked."));
  ASSERT_TRUE(desktop.click("Firewall"));
  EXPECT_EQ(desktop.openedSettings, std::vector<SettingsPage>{SettingsPage::Firewall});
  ann.platform.firewall.says = FirewallAnswer::CannotTell;
  ann.restart();
  ann.advance(60);
  EXPECT_EQ(desktop.count("The Computer's Firewall Blocks Zolvar"), 1U);
  EXPECT_TRUE(desktop.shown.empty());
}

}  // namespace
}  // namespace zolvar
