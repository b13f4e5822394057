#pragma once

#include <functional>
#include <utility>

#include "platform/Workspace.h"
#include "ui/Texts.h"

namespace zolvar {

/// The desktop, to which notices go in the language of the person. The real one outlives this. Main
/// thread.
class SpeakingWorkspace : public Workspace {
 public:
  explicit SpeakingWorkspace(Workspace& desktop) : desktop_(desktop) {}

  void showNotice(const Notice& notice, std::function<void()> onClick) override {
    Notice spoken = notice;
    spoken.title = said(notice.title).toStdString();
    spoken.text = said(notice.text).toStdString();
    desktop_.showNotice(spoken, std::move(onClick));
  }
  void open(const std::string& path) override { desktop_.open(path); }
  void openSettings(SettingsPage page) override { desktop_.openSettings(page); }
  void withdrawNotice(const std::string& key) override { desktop_.withdrawNotice(key); }
  Result<> setAutostart(bool enabled) override { return desktop_.setAutostart(enabled); }
  [[nodiscard]] bool isAutostarted() const override { return desktop_.isAutostarted(); }
  void beep() override { desktop_.beep(); }

 private:
  Workspace& desktop_;
};

}  // namespace zolvar
