#include "platform/qt/DesktopWorkspace.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QUrlQuery>
#include <string_view>

#include "platform/qt/AutostartEntry.h"
#include "platform/qt/DesktopNotices.h"

namespace zolvar {
namespace {

struct SettingsProgram {
  SettingsPage page;
  const char* program;
  const char* argument;  ///< empty for none
};

/// The first one installed is taken.
constexpr SettingsProgram SettingsPrograms[] = {
    {SettingsPage::DateAndTime, "gnome-control-center", "datetime"},
    {SettingsPage::DateAndTime, "systemsettings", "kcm_clock"},
    {SettingsPage::DateAndTime, "systemsettings5", "kcm_clock"},
    {SettingsPage::DateAndTime, "cinnamon-settings", "calendar"},
    {SettingsPage::DateAndTime, "lxqt-admin-time", ""},
    {SettingsPage::DateAndTime, "time-admin", ""},
    {SettingsPage::Firewall, "firewall-config", ""},
    {SettingsPage::Firewall, "gufw", ""},
    {SettingsPage::Firewall, "systemsettings", "kcm_firewall"},
    {SettingsPage::Firewall, "systemsettings5", "kcm_firewall"},
};

/// What the desktop's address book calls its contacts by.
constexpr std::string_view ContactScheme = "contacts:";

bool startDetached(const QString& program, const QStringList& arguments) {
  QProcess process;
  process.setProgram(program);
  process.setArguments(arguments);
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setStandardErrorFile(QProcess::nullDevice());
  return process.startDetached();
}

AutostartEntry usersEntry() {
  return AutostartEntry(
      QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toStdString());
}

}  // namespace

DesktopWorkspace::DesktopWorkspace(Log& log) : log_(log) {}

DesktopWorkspace::~DesktopWorkspace() = default;

void DesktopWorkspace::open(const std::string& path) {
  if (path.starts_with(ContactScheme)) return openContact(QString::fromStdString(path));
  if (!startDetached(QStringLiteral("xdg-open"), {QString::fromStdString(path)})) {
    log_.warning("Could not open '{}': xdg-open is not installed.", path);
  }
}

/// No desktop has a handler for these; without a program that we know, nothing is shown.
void DesktopWorkspace::openContact(const QString& address) {
  const auto isInstalled = [](const QString& program) {
    return !QStandardPaths::findExecutable(program).isEmpty();
  };
  const QString search = QStringLiteral("gnome-contacts");
  const QString show = QStringLiteral("evolution");
  const QString name =
      QUrlQuery(QUrl(address)).queryItemValue(QStringLiteral("name"), QUrl::FullyDecoded);
  if (!name.isEmpty() && isInstalled(search)) {
    startDetached(search, {QStringLiteral("--search"), name});
  } else if (isInstalled(show)) {
    startDetached(show, {address});
  } else {
    log_.debug("No program that shows a contact of the desktop's address book is installed.");
  }
}

void DesktopWorkspace::openSettings(SettingsPage page) {
  for (const SettingsProgram& candidate : SettingsPrograms) {
    if (candidate.page != page) continue;
    const QString program = QStandardPaths::findExecutable(QLatin1String(candidate.program));
    if (program.isEmpty()) continue;
    const QString argument = QLatin1String(candidate.argument);
    if (startDetached(program, argument.isEmpty() ? QStringList() : QStringList{argument})) return;
  }
  log_.warning("This desktop has no settings of the {} that Zolvar knows.",
               page == SettingsPage::Firewall ? "firewall" : "date and time");
}

void DesktopWorkspace::showNotice(const Notice& notice, std::function<void()> onClick) {
  // The connection to the desktop is made when there is something to show.
  if (!notices_) notices_ = std::make_unique<DesktopNotices>(log_);
  notices_->show(notice, std::move(onClick));
}

void DesktopWorkspace::withdrawNotice(const std::string& key) {
  if (notices_) notices_->withdraw(key);
}

Result<> DesktopWorkspace::setAutostart(bool enabled) {
  const AutostartEntry entry = usersEntry();
  return enabled ? entry.enable(QCoreApplication::applicationFilePath().toStdString())
                 : entry.disable();
}

bool DesktopWorkspace::isAutostarted() const { return usersEntry().isEnabled(); }

void DesktopWorkspace::beep() {
  if (::isatty(STDERR_FILENO) == 1) (void)!::write(STDERR_FILENO, "\a", 1);
}

}  // namespace zolvar
