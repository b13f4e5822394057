#include "platform/qt/QSettingsDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "platform/Log.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

QString preparedPath(const std::string& filePath) {
  const QString path = QFile::decodeName(
      QByteArray::fromStdString(filePath.empty() ? QSettingsDefaults::defaultPath() : filePath));
  QDir().mkpath(QFileInfo(path).path());
  return path;
}

/// QSettings takes "/" for a group and changes "\" into it.
QString encodedKey(const std::string& key) {
  require(!key.empty(), "!key.empty()");
  QString encoded = QString::fromStdString(key);
  encoded.replace("%", "%25").replace("/", "%2F").replace("\\", "%5C");
  return encoded;
}

std::string decodedKey(QString key) {
  key.replace("%2F", "/").replace("%5C", "\\").replace("%25", "%");
  return key.toStdString();
}

/// Bytes that are no UTF-8 survive as a byte array.
QVariant variantOf(const std::string& value) {
  if (isValidUtf8(value)) return QString::fromStdString(value);
  return QByteArray::fromStdString(value);
}

std::string textOf(const QVariant& value) {
  if (value.typeId() == QMetaType::QByteArray) return value.toByteArray().toStdString();
  // A hand-written comma without quotes makes a list.
  if (value.typeId() == QMetaType::QStringList)
    return value.toStringList().join(", ").toStdString();
  return value.toString().toStdString();
}

}  // namespace

/// Ends the observer when destroyed.
class QSettingsDefaults::KeyObservation : public UserDefaults::Observation {
 public:
  explicit KeyObservation(std::shared_ptr<Observer> observer) : observer_(std::move(observer)) {}
  ~KeyObservation() override { observer_->isAlive = false; }

 private:
  const std::shared_ptr<Observer> observer_;
};

QSettingsDefaults::QSettingsDefaults(Log& log, const std::string& filePath)
    : log_(log), settings_(preparedPath(filePath), QSettings::IniFormat) {
  // The folder too: the file may not exist yet, and editors put a new one in its place.
  watcher_.addPath(QFileInfo(settings_.fileName()).path());
  watchFile();
  QObject::connect(&watcher_, &QFileSystemWatcher::fileChanged, &watcher_, [this] { readAgain(); });
  QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &watcher_,
                   [this] { readAgain(); });
}

QSettingsDefaults::~QSettingsDefaults() = default;

std::string QSettingsDefaults::defaultPath() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const bool isSet = config != nullptr && config[0] == '/';
  const std::string above = isSet ? config : QDir::homePath().toStdString() + "/.config";
  return above + "/Zolvar/Zolvar.conf";
}

std::optional<std::string> QSettingsDefaults::string(const std::string& key) const {
  if (key.empty()) return std::nullopt;
  const QVariant value = settings_.value(encodedKey(key));
  if (!value.isValid()) return std::nullopt;
  return textOf(value);
}

void QSettingsDefaults::setString(const std::string& key, const std::string& value) {
  if (string(key) == value) return;
  settings_.setValue(encodedKey(key), variantOf(value));
  save();
}

std::map<std::string, std::string> QSettingsDefaults::dictionary(const std::string& key) const {
  std::map<std::string, std::string> dictionary;
  const auto object = nlohmann::json::parse(string(key).value_or(""), nullptr, false);
  if (!object.is_object()) return dictionary;
  for (const auto& [name, value] : object.items()) {
    dictionary[name] = value.is_string() ? value.get<std::string>() : value.dump();
  }
  return dictionary;
}

void QSettingsDefaults::setDictionary(const std::string& key,
                                      const std::map<std::string, std::string>& value) {
  setString(key,
            nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void QSettingsDefaults::remove(const std::string& key) {
  if (!string(key)) return;
  settings_.remove(encodedKey(key));
  save();
}

std::vector<std::string> QSettingsDefaults::keys(const std::string& prefix) const {
  std::vector<std::string> found;
  for (const auto& encoded : settings_.allKeys()) {
    std::string key = decodedKey(encoded);
    if (key.starts_with(prefix)) found.push_back(std::move(key));
  }
  std::sort(found.begin(), found.end());
  return found;
}

std::unique_ptr<UserDefaults::Observation> QSettingsDefaults::observe(
    const std::string& key, std::function<void()> changed) {
  auto observer = std::make_shared<Observer>(Observer{key, std::move(changed), string(key), true});
  std::erase_if(observers_, [](const auto& known) { return !known->isAlive; });
  observers_.push_back(observer);
  return std::make_unique<KeyObservation>(std::move(observer));
}

void QSettingsDefaults::save() {
  settings_.sync();
  if (settings_.status() != QSettings::NoError) {
    log_.warning("The settings could not be written to '{}'.", settings_.fileName().toStdString());
  }
  watchFile();
  tellObservers();
}

/// Takes over what another process has written.
void QSettingsDefaults::readAgain() {
  settings_.sync();
  watchFile();
  tellObservers();
}

void QSettingsDefaults::tellObservers() {
  const auto observers = observers_;  // a callback may add some
  for (const auto& observer : observers) {
    if (!observer->isAlive) continue;
    auto value = string(observer->key);
    if (value == observer->lastValue) continue;
    observer->lastValue = std::move(value);
    observer->changed();
  }
}

/// A file that was replaced is no longer watched.
void QSettingsDefaults::watchFile() {
  const QString path = settings_.fileName();
  if (!watcher_.files().contains(path) && QFileInfo::exists(path)) watcher_.addPath(path);
}

}  // namespace zolvar
