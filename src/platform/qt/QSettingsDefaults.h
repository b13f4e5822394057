#pragma once

#include <QFileSystemWatcher>
#include <QSettings>
#include <memory>
#include <vector>

#include "platform/UserDefaults.h"

namespace zolvar {

class Log;

/// The user's settings in one text file that may be edited by hand, also while we run. Main thread;
/// every change is on disk when the call returns, a failure to write is a warning. "/", "\" and "%"
/// in keys stand as "%2F", "%5C" and "%25"; a dictionary is one JSON object.
class QSettingsDefaults : public UserDefaults {
 public:
  /// An empty path stands for defaultPath(). The folder is made when it is missing.
  explicit QSettingsDefaults(Log& log, const std::string& filePath = {});
  ~QSettingsDefaults() override;

  /// "Zolvar/Zolvar.conf" in $XDG_CONFIG_HOME, or in ~/.config.
  [[nodiscard]] static std::string defaultPath();

  [[nodiscard]] std::optional<std::string> string(const std::string& key) const override;
  void setString(const std::string& key, const std::string& value) override;
  [[nodiscard]] std::map<std::string, std::string> dictionary(
      const std::string& key) const override;
  void setDictionary(const std::string& key,
                     const std::map<std::string, std::string>& value) override;
  void remove(const std::string& key) override;
  [[nodiscard]] std::vector<std::string> keys(const std::string& prefix) const override;
  [[nodiscard]] std::unique_ptr<Observation> observe(const std::string& key,
                                                     std::function<void()> changed) override;

 private:
  class KeyObservation;
  /// What an observation and we know of each other; either may go first.
  struct Observer {
    std::string key;
    std::function<void()> changed;
    std::optional<std::string> lastValue;
    bool isAlive = true;
  };

  void save();
  void readAgain();
  void tellObservers();
  void watchFile();

  Log& log_;
  mutable QSettings settings_;
  QFileSystemWatcher watcher_;
  std::vector<std::shared_ptr<Observer>> observers_;
};

}  // namespace zolvar
