#pragma once

#include <map>
#include <vector>

#include "platform/Firewall.h"
#include "platform/NetworkWatch.h"
#include "platform/SecretStore.h"
#include "platform/Workspace.h"
#include "support/Faults.h"
#include "support/SimulatedRunLoop.h"

namespace zolvar {

/// Passwords in memory; locked, it refuses instead of asking its user.
class SimulatedSecretStore : public SecretStore {
 public:
  Result<std::optional<std::string>> find(const std::string& service,
                                          const std::string& account) override {
    if (const auto allowed = check("find", account); !allowed)
      return tl::unexpected(allowed.error());
    const auto found = items.find({service, account});
    return found == items.end() ? std::nullopt : std::optional(found->second);
  }
  Result<> set(const std::string& service, const std::string& account,
               const std::string& password) override {
    if (const auto allowed = check("set", account); !allowed) return allowed;
    items[{service, account}] = password;
    return {};
  }
  Result<> remove(const std::string& service, const std::string& account) override {
    if (const auto allowed = check("remove", account); !allowed) return allowed;
    items.erase({service, account});
    return {};
  }

  std::map<std::pair<std::string, std::string>, std::string> items;  ///< by service and account
  bool isLocked = false;
  Faults faults;

 private:
  Result<> check(const char* operation, const std::string& account) {
    if (auto failure = faults.next(operation, account)) return tl::unexpected(*failure);
    if (isLocked) return fail(FailureKind::Refused, "read the password", account, "locked");
    return {};
  }
};

/// Remembers what a person would have seen; click() is the person's answer.
class SimulatedWorkspace : public Workspace {
 public:
  struct Shown {
    Notice notice;
    std::function<void()> onClick;
  };
  void open(const std::string& path) override { opened.push_back(path); }
  void openSettings(SettingsPage page) override { openedSettings.push_back(page); }
  void showNotice(const Notice& notice, std::function<void()> onClick) override {
    withdrawNotice(notice.key);
    history.push_back(notice);
    shown.push_back({notice, std::move(onClick)});
  }
  void withdrawNotice(const std::string& key) override {
    if (key.empty()) return;
    std::erase_if(shown, [&](const Shown& one) { return one.notice.key == key; });
  }
  Result<> setAutostart(bool enabled) override {
    if (auto failure = faults.next("setAutostart", "")) return tl::unexpected(*failure);
    startsAtLogin = enabled;
    return {};
  }
  [[nodiscard]] bool isAutostarted() const override { return startsAtLogin; }
  void beep() override { ++beeps; }

  /// Clicks the notice on the screen whose title or text contains the words; false when there is
  /// none.
  bool click(std::string_view words) {
    for (const Shown& one : shown) {
      if (!contains(one.notice, words)) continue;
      const auto onClick = one.onClick;
      if (onClick) onClick();
      return true;
    }
    return false;
  }
  /// How often a notice with these words was shown, replaced and withdrawn ones included.
  [[nodiscard]] std::size_t count(std::string_view words) const {
    std::size_t found = 0;
    for (const Notice& notice : history) found += contains(notice, words) ? 1 : 0;
    return found;
  }

  std::vector<std::string> opened;
  std::vector<SettingsPage> openedSettings;
  std::vector<Shown> shown;     ///< on the screen now
  std::vector<Notice> history;  ///< all, in order
  bool startsAtLogin = false;
  int beeps = 0;
  Faults faults;

 private:
  static bool contains(const Notice& notice, std::string_view words) {
    return (notice.title + "\n" + notice.text).find(words) != std::string::npos;
  }
};

/// Answers as the test says, on a later turn.
class SimulatedFirewall : public Firewall {
 public:
  explicit SimulatedFirewall(SimulatedRunLoop& loop) : loop_(loop) {}
  void ask(unsigned tcpPort, std::function<void(FirewallAnswer)> answer) override {
    asked.push_back(tcpPort);
    loop_.after(0, [answer = std::move(answer), says = says] { answer(says); });
  }

  FirewallAnswer says = FirewallAnswer::CannotTell;
  std::vector<unsigned> asked;

 private:
  SimulatedRunLoop& loop_;
};

/// Tells a change of addresses when the test says so.
class SimulatedNetworkWatch : public NetworkWatch {
 public:
  void observe(std::function<void()> changed) override { changed_ = std::move(changed); }
  void change() {
    if (const auto changed = changed_) changed();
  }

 private:
  std::function<void()> changed_;
};

}  // namespace zolvar
