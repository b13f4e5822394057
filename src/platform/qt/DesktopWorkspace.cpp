#include "platform/qt/DesktopWorkspace.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>

#include "platform/qt/AutostartEntry.h"
#include "platform/qt/DesktopNotices.h"

namespace zolvar {
namespace {

AutostartEntry usersEntry() {
  return AutostartEntry(
      QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toStdString());
}

}  // namespace

DesktopWorkspace::DesktopWorkspace(Log& log) : log_(log) {}

DesktopWorkspace::~DesktopWorkspace() = default;

void DesktopWorkspace::open(const std::string& path) {
  QProcess opener;
  opener.setProgram(QStringLiteral("xdg-open"));
  opener.setArguments({QString::fromStdString(path)});
  opener.setStandardOutputFile(QProcess::nullDevice());
  opener.setStandardErrorFile(QProcess::nullDevice());
  if (!opener.startDetached()) {
    log_.warning("Could not open '{}': {}.", path, opener.errorString().toStdString());
  }
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
