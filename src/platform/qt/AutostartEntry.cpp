#include "platform/qt/AutostartEntry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace zolvar {

namespace {

/// The program as the Exec key wants it: quoted, with the quoting's own characters escaped, the
/// backslashes once more for the key's string type, and "%" doubled.
std::string quoted(const std::string& program) {
  std::string result = "\"";
  for (const char character : program) {
    if (character == '\\') {
      result += "\\\\\\\\";
    } else if (character == '"' || character == '`' || character == '$') {
      result += std::string("\\\\") + character;
    } else if (character == '%') {
      result += "%%";
    } else {
      result += character;
    }
  }
  return result + "\"";
}

}  // namespace

AutostartEntry::AutostartEntry(const std::string& configFolder)
    : path_(configFolder + "/autostart/zolvar.desktop") {}

Result<> AutostartEntry::enable(const std::string& program) const {
  const QByteArray wanted = QByteArray::fromStdString(
      "[Desktop Entry]\n"
      "Type=Application\n"
      "Name=Zolvar\n"
      "Comment=Keeps folders in step on the local network\n"
      "Exec=" +
      quoted(program) +
      " --hidden\n"
      "Icon=zolvar\n"
      "Terminal=false\n");
  const QString path = QString::fromStdString(path_);
  QFile present(path);
  if (present.open(QIODevice::ReadOnly) && present.readAll() == wanted) return {};
  QDir().mkpath(QFileInfo(path).path());
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(wanted) != wanted.size() || !file.commit()) {
    return fail(FailureKind::Refused, "write", path_, file.errorString().toStdString());
  }
  return {};
}

Result<> AutostartEntry::disable() const {
  QFile file(QString::fromStdString(path_));
  if (file.remove() || !file.exists()) return {};
  return fail(FailureKind::Refused, "remove", path_, file.errorString().toStdString());
}

bool AutostartEntry::isEnabled() const {
  QFile file(QString::fromStdString(path_));
  if (!file.open(QIODevice::ReadOnly)) return false;
  // How desktops' own settings switch an entry off.
  for (const QByteArray& line : file.readAll().split('\n')) {
    const QByteArray plain = line.simplified().replace(" ", "").toLower();
    if (plain == "hidden=true" || plain == "x-gnome-autostart-enabled=false") return false;
  }
  return true;
}

}  // namespace zolvar
