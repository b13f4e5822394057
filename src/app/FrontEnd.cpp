#include "app/FrontEnd.h"

#include "platform/Log.h"

namespace zolvar {
namespace {

/// A log line has no line feeds.
std::string inOneLine(const std::string& text) {
  std::string line;
  for (const char character : text) {
    if (character != '\n') {
      line += character;
    } else if (!line.ends_with(' ')) {
      line += ' ';
    }
  }
  return line;
}

}  // namespace

void LoggingFrontEnd::showConflict(const std::string& poolName, const std::string& path) {
  log_.warning("'{}' in '{}' waits for a choice. See: zolvar conflicts '{}'", path, poolName,
               poolName);
}

void LoggingFrontEnd::showPoolSettings(const std::string& poolName) {
  log_.warning("Set the password of '{0}' with: zolvar password '{0}'", poolName);
}

void LoggingFrontEnd::askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                                       std::function<void(PasswordAnswer)> answered) {
  log_.warning(
      "{} {} Answer with: zolvar password '{}', zolvar unsubscribe '{}' or zolvar ignore '{}' USER",
      inOneLine(text.message), inOneLine(text.informative), poolName, poolName, poolName);
  answered(PasswordAnswer::Cancelled);  // the commands are the answer
}

void LoggingFrontEnd::askAboutDeletion(const std::string& poolName, const Alert& alert,
                                       std::function<void(int)> /*answered*/) {
  log_.warning("{} {} Answer with: zolvar answer '{}' reget|delete", alert.title,
               inOneLine(alert.text), poolName);
}

void LoggingFrontEnd::withdrawDeletionAlert(const std::string& poolName) {
  log_.debug("The question about '{}' is settled.", poolName);
}

void LoggingFrontEnd::showAlert(const Alert& alert, std::function<void(int)> /*answered*/) {
  log_.warning("{}: {}", alert.title, inOneLine(alert.text));
}

}  // namespace zolvar
