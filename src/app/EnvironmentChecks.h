#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/OutcomeTexts.h"
#include "platform/RunLoop.h"
#include "platform/Workspace.h"
#include "util/NotificationCenter.h"

namespace zolvar {

class Application;
class ClockCheck;
class Lane;
struct Platform;

/// Above this many seconds a clock is off: logs are ordered by time stamps.
inline constexpr double MostBadSeconds = 9.9;

// What a window shows; the first button opens the system's settings.
/// `badSeconds`: network time minus local time.
Alert clockAlert(double badSeconds);
Alert firewallAlert(unsigned tcpPort);

/// The time servers to ask, by the settings "TimeServer1" and "TimeServer2" as they stand; "none"
/// leaves one out.
std::vector<std::string> timeServers(const Platform& platform);

/// Looks at the machine around the program: whether its clock agrees with a time server's, whether
/// its firewall lets others reach the transfer daemon, and whether the desktop starts us at login.
/// Owned by the application, tells through it. Main thread; what takes time runs on a lane. A check
/// that cannot be made says nothing.
class EnvironmentChecks {
 public:
  explicit EnvironmentChecks(Application& application);
  ~EnvironmentChecks();
  EnvironmentChecks(const EnvironmentChecks&) = delete;
  EnvironmentChecks& operator=(const EnvironmentChecks&) = delete;

  /// Checks the clock; the firewall is checked when the daemon runs, and again for another port.
  void start();
  /// Checks the clock at once: other time servers are to be asked.
  void checkClockAnew();
  /// Ends what is under way. Nothing starts any more.
  void stop();

 private:
  void registerAtLogin();
  void checkClock();
  void checkClockAfter(double seconds);
  void clockWasChecked(std::optional<double> badSeconds);
  void checkFirewall();
  void firewallWasChecked(unsigned tcpPort, bool isBlocking);
  /// Puts the alert to the front end, and on the desktop where no window shows it.
  void tell(const char* noticeKey, const Alert& alert, SettingsPage page);

  Application& application_;
  Platform& platform_;
  std::shared_ptr<Lane> lane_;
  std::shared_ptr<ClockCheck> clock_;
  NotificationCenter::Observation serverObservation_;
  RunLoop::Id clockTimer_ = 0;
  std::size_t unansweredChecks_ = 0;
  bool isClockOff_ = false;
  unsigned checkedPort_ = 0;                                    ///< 0: none yet
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< tasks hold it weakly
};

}  // namespace zolvar
