#include "platform/qt/SystemLog.h"

#include <fmt/format.h>
#include <syslog.h>
#include <unistd.h>

namespace zolvar {

namespace {

struct LevelNames {
  int priority;
  const char* prefix;
};

LevelNames namesOf(Log::Level level) {
  switch (level) {
    case Log::Level::Error:
      return {LOG_ERR, "error: "};
    case Log::Level::Warning:
      return {LOG_WARNING, "warning: "};
    case Log::Level::Debug:
      break;
  }
  return {LOG_DEBUG, ""};
}

}  // namespace

SystemLog::SystemLog(std::string programName, bool writesToStandardError)
    : programName_(std::move(programName)),
      writesToStandardError_(writesToStandardError || isatty(STDERR_FILENO) == 1) {
  openlog(programName_.c_str(), LOG_PID, LOG_USER);
}

SystemLog::~SystemLog() { closelog(); }

void SystemLog::write(Level level, std::string_view line) {
  const std::string clean = withoutControlCharacters(line);
  const LevelNames names = namesOf(level);
  syslog(names.priority, "%s", clean.c_str());
  if (!writesToStandardError_) return;
  const std::string text = fmt::format("{}: {}{}\n", programName_, names.prefix, clean);
  (void)!::write(STDERR_FILENO, text.data(), text.size());  // one write: lines do not mix
}

std::string withoutControlCharacters(std::string_view line) {
  std::string clean(line);
  for (std::size_t index = 0; index < clean.size(); ++index) {
    const auto byte = static_cast<unsigned char>(clean[index]);
    if (byte < 0x20 || byte == 0x7f) clean[index] = ' ';
    // U+0080 to U+009F, which some terminals obey too, are 0xc2 and a byte below 0xa0 in UTF-8.
    if (byte == 0xc2 && index + 1 < clean.size() &&
        static_cast<unsigned char>(clean[index + 1]) < 0xa0) {
      clean[index] = ' ';
      clean[++index] = ' ';
    }
  }
  return clean;
}

}  // namespace zolvar
