#pragma once

#include <string>
#include <string_view>

#include "platform/Log.h"

namespace zolvar {

/// Writes to the system's log, and to standard error when that is a terminal or when asked to. Any
/// thread. One per program: the system's log knows one name a program. Control characters, which
/// names from the network may hold, come out as blanks, so that a line stays one line and a
/// terminal obeys nobody.
class SystemLog : public Log {
 public:
  explicit SystemLog(std::string programName, bool writesToStandardError = false);
  ~SystemLog() override;

  void write(Level level, std::string_view line) override;

 private:
  const std::string programName_;  ///< the system's log keeps a pointer to it
  const bool writesToStandardError_;
};

/// `line` with each control character replaced by a blank.
std::string withoutControlCharacters(std::string_view line);

}  // namespace zolvar
