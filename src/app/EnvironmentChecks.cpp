#include "app/EnvironmentChecks.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <utility>

#include "app/Application.h"
#include "app/FrontEnd.h"
#include "app/Outcomes.h"
#include "app/Preferences.h"
#include "net/ClockCheck.h"
#include "net/FirewallPreference.h"
#include "net/NetNotifications.h"
#include "platform/Firewall.h"
#include "platform/Lanes.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"

namespace zolvar {
namespace {

struct TimeServer {
  const char* key;
  const char* unset;  ///< the public server asked when the key is unset
};
constexpr TimeServer TimeServers[] = {{"TimeServer1", "time.nist.gov"},
                                      {"TimeServer2", "time-a-g.nist.gov"}};
constexpr const char* NoServer = "none";

/// Seconds after a check that nobody answered: a program that is started at login is often there
/// before the network is.
constexpr double ChecksAgain[] = {600, 3600};
constexpr double CheckBadClock = 600;  // seconds until it is seen whether the clock was set

constexpr const char* ClockNotice = "clock";
constexpr const char* FirewallNotice = "firewall";

}  // namespace

Alert clockAlert(double badSeconds) {
  return {"The computer's clock is off!",
          fmt::format("Please set the computer's clock to the current time. Otherwise this could "
                      "lead to unwanted effects.\n\nThe clock is currently off by {:.1f} "
                      "seconds.\n\nTip: Switch on 'network time' in the 'Date and Time' system "
                      "preferences.",
                      std::abs(static_cast<float>(badSeconds))),
          {"Open Date and Time Preference Pane...", "Continue"}};
}

Alert firewallAlert(unsigned tcpPort) {
  return {"The Computer's Firewall Blocks Zolvar",
          fmt::format("The computer's firewall is currently blocking the local TCP port {}. Please "
                      "unblock this port in the System Preferences/Sharing preference pane.\n",
                      tcpPort),
          {"Open Sharing Preference Pane...", "Continue"}};
}

std::vector<std::string> timeServers(const Platform& platform) {
  std::vector<std::string> servers;
  for (const TimeServer& server : TimeServers) {
    std::string name = platform.defaults.string(server.key).value_or("");
    if (name.empty()) name = server.unset;
    if (name != NoServer) servers.push_back(std::move(name));
  }
  return servers;
}

EnvironmentChecks::EnvironmentChecks(Application& application)
    : application_(application),
      platform_(application.platform()),
      lane_(platform_.lanes.start("environment")) {
  serverObservation_ =
      application.center().observe<KDServerDidChangeNotification>([this](const auto& changed) {
        if (changed.running) checkFirewall();
      });
}

EnvironmentChecks::~EnvironmentChecks() { stop(); }

void EnvironmentChecks::start() {
  registerAtLogin();
  checkClock();
}

void EnvironmentChecks::checkClockAnew() {
  if (!alive_) return;
  if (clock_) clock_->cancel();
  checkClock();
}

void EnvironmentChecks::stop() {
  alive_.reset();
  platform_.runLoop.cancel(std::exchange(clockTimer_, 0));
  if (clock_) clock_->cancel();
}

void EnvironmentChecks::registerAtLogin() {
  if (!application_.settings().startsAtLogin || !startsAtLogin(platform_.defaults)) return;
  if (const auto entered = platform_.workspace.setAutostart(true); !entered) {
    platform_.log.warning("Zolvar is not started at login. {}", entered.error().message());
  }
}

// The clock.

void EnvironmentChecks::checkClock() {
  const std::string& ownProgram = application_.settings().ownProgram;
  const auto servers = timeServers(platform_);
  platform_.runLoop.cancel(std::exchange(clockTimer_, 0));
  // Whoever wants no check is not held up by what an earlier one has found.
  if (servers.empty() && isClockOff_) return clockWasChecked(0.0);
  if (ownProgram.empty() || servers.empty()) return;
  clock_ = std::make_shared<ClockCheck>(platform_, ownProgram);
  lane_->post(
      [this, clock = clock_, servers, &runLoop = platform_.runLoop, weak = std::weak_ptr(alive_)] {
        const auto badSeconds = clock->badSeconds(servers);
        runLoop.post([this, weak, badSeconds] {
          if (!weak.expired()) clockWasChecked(badSeconds);
        });
      });
}

void EnvironmentChecks::checkClockAfter(double seconds) {
  platform_.runLoop.cancel(clockTimer_);
  clockTimer_ = platform_.runLoop.after(seconds, [this] {
    clockTimer_ = 0;
    checkClock();
  });
}

void EnvironmentChecks::clockWasChecked(std::optional<double> badSeconds) {
  if (!badSeconds) {
    if (isClockOff_) return checkClockAfter(CheckBadClock);
    if (unansweredChecks_ < std::size(ChecksAgain))
      checkClockAfter(ChecksAgain[unansweredChecks_++]);
    return;
  }
  platform_.log.debug("badSeconds = {:f}", std::abs(*badSeconds));
  const bool wasOff = std::exchange(isClockOff_, std::abs(*badSeconds) > MostBadSeconds);
  application_.noteClock(*badSeconds);
  if (!isClockOff_) {
    if (wasOff) platform_.workspace.withdrawNotice(ClockNotice);
    return;
  }
  checkClockAfter(CheckBadClock);
  if (wasOff) return;
  platform_.log.warning("System clock is bad! {:f}", *badSeconds);
  tell(ClockNotice, clockAlert(*badSeconds), SettingsPage::DateAndTime);
}

// The firewall.

void EnvironmentChecks::checkFirewall() {
  if (!alive_) return;
  const unsigned port = application_.peer().serverPort();
  if (std::exchange(checkedPort_, port) == port) return;
  lane_->post([this, port, &platform = platform_, weak = std::weak_ptr(alive_)] {
    const bool isBlocking = isFirewallBlockingTCPPort(platform.fileSystem, port);
    platform.runLoop.post([this, weak, port, isBlocking] {
      if (weak.expired()) return;
      if (isBlocking) return firewallWasChecked(port, true);
      platform_.firewall.ask(port, [this, weak, port](FirewallAnswer answer) {
        if (weak.expired()) return;
        if (answer == FirewallAnswer::CannotTell) {
          platform_.log.debug("Nothing tells whether a firewall blocks port {}.", port);
        }
        firewallWasChecked(port, answer == FirewallAnswer::Blocked);
      });
    });
  });
}

void EnvironmentChecks::firewallWasChecked(unsigned tcpPort, bool isBlocking) {
  if (!isBlocking) return platform_.workspace.withdrawNotice(FirewallNotice);
  platform_.log.warning("Port {} is blocked.", tcpPort);
  tell(FirewallNotice, firewallAlert(tcpPort), SettingsPage::Firewall);
}

void EnvironmentChecks::tell(const char* noticeKey, const Alert& alert, SettingsPage page) {
  Workspace& workspace = platform_.workspace;
  application_.outcomes().frontEnd().showAlert(alert, [&workspace, page](int code) {
    if (code == FirstButton) workspace.openSettings(page);
  });
  application_.tell([&](auto& observer) { observer.warning("", alert.title + " " + alert.text); });
  if (application_.settings().asksPeople) return;
  workspace.showNotice({noticeKey, alert.title, alert.text, Notice::Urgency::Critical, true},
                       [&workspace, page] { workspace.openSettings(page); });
}

}  // namespace zolvar
