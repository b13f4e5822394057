#include "app/Preferences.h"

#include <algorithm>

#include "app/Application.h"
#include "app/Operations.h"
#include "app/Outcomes.h"
#include "app/Pauses.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "pool/VersionStore.h"

namespace zolvar {
namespace {

constexpr const char* StartAtLogin = "StartAtLogin";
constexpr const char* Warnings[] = {"SuppressPoolDeletionWarning",
                                    "SuppressPoolDeactivationWarning",
                                    "SuppressSwitchBranchWarning"};

}  // namespace

bool startsAtLogin(const UserDefaults& defaults) {
  return !defaults.string(StartAtLogin) || defaults.boolean(StartAtLogin);
}

Preferences Preferences::read(Application& application, const Operations& operations) {
  const UserDefaults& defaults = application.platform().defaults;
  const VersionLimits versions = VersionLimits::fromDefaults(defaults);
  Preferences now;
  now.language = defaults.string("Language").value_or("");
  now.startsAtLogin = zolvar::startsAtLogin(defaults);
  now.syncsByItself = !application.pauses().isEverythingPaused();
  now.isQuick = defaults.string("Pace").value_or("") == "quick";
  now.limitOut = defaults.number("BWLimitOut");
  now.limitIn = defaults.number("BWLimitIn");
  now.versionsDays = versions.days;
  now.versionsMegabytes = versions.megabytes;
  for (const auto& info : operations.list()) {
    if (info.state.kind == FolderStateKind::NotSubscribed) continue;
    now.notices[info.name] = application.outcomes().usesNotices(info.name);
  }
  now.warnsAlways = std::none_of(std::begin(Warnings), std::end(Warnings),
                                 [&](const char* key) { return defaults.boolean(key); });
  return now;
}

Result<> Preferences::save(const Preferences& before, Application& application,
                           Operations& operations) const {
  Result<> outcome;
  const auto note = [&outcome](Result<> done) {
    if (outcome && !done) outcome = std::move(done);
  };
  const auto set = [&](const char* key, const std::string& value) {
    note(operations.set(key, value));
  };
  const auto setNumber = [&](const char* key, unsigned long value, unsigned long was) {
    if (value != was) set(key, std::to_string(value));
  };
  if (language != before.language) set("Language", language);
  if (startsAtLogin != before.startsAtLogin) {
    set(StartAtLogin, startsAtLogin ? "" : "no");
    note(application.platform().workspace.setAutostart(startsAtLogin));
  }
  if (syncsByItself != before.syncsByItself) {
    set("AutosyncingEnabled", syncsByItself ? "1" : "0");
    note(syncsByItself ? operations.resume({}) : operations.pause({}, {}));
  }
  if (isQuick != before.isQuick) set("Pace", isQuick ? "quick" : "");
  setNumber("BWLimitOut", limitOut, before.limitOut);
  setNumber("BWLimitIn", limitIn, before.limitIn);
  setNumber("VersionsDays", versionsDays, before.versionsDays);
  setNumber("VersionsMegabytes", versionsMegabytes, before.versionsMegabytes);
  for (const auto& [name, uses] : notices) {
    const auto was = before.notices.find(name);
    if (was == before.notices.end() || was->second != uses) {
      application.outcomes().setUsesNotices(name, uses);
    }
  }
  if (warnsAlways && !before.warnsAlways) {
    for (const char* key : Warnings) set(key, "");
  }
  return outcome;
}

}  // namespace zolvar
