#pragma once

#include <memory>

#include "platform/Log.h"
#include "platform/Workspace.h"

class QString;

namespace zolvar {

class DesktopNotices;

/// The user's desktop: its file manager, its notices and what it starts at login. Main thread.
/// Where there is no desktop, opening is a warning in the log and notices are quietly nothing.
class DesktopWorkspace final : public Workspace {
 public:
  explicit DesktopWorkspace(Log& log);
  ~DesktopWorkspace() override;

  void open(const std::string& path) override;
  void openSettings(SettingsPage page) override;
  void showNotice(const Notice& notice, std::function<void()> onClick) override;
  void withdrawNotice(const std::string& key) override;
  /// Of the running program. Fails: as the file system does.
  Result<> setAutostart(bool enabled) override;
  [[nodiscard]] bool isAutostarted() const override;
  /// Rings the terminal's bell when we were started from one.
  void beep() override;

 private:
  void openContact(const QString& address);

  Log& log_;
  std::unique_ptr<DesktopNotices> notices_;
};

}  // namespace zolvar
