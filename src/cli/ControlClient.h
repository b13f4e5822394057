#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "util/Failure.h"

namespace zolvar {

/// The command line's end of the control socket: whole lines out and in. Blocks; single-threaded.
class ControlClient {
 public:
  ControlClient() = default;
  ~ControlClient();
  ControlClient(const ControlClient&) = delete;
  ControlClient& operator=(const ControlClient&) = delete;

  /// Fails: Absent when nobody listens there, Refused when the path cannot be a socket's.
  Result<> connect(const std::string& path);
  /// Sends `line` and a line feed. Fails: Transient when the other side is gone.
  Result<> send(std::string_view line);
  /// The next line without its line feed; none when the other side has closed.
  std::optional<std::string> receive();
  /// Drops what still comes until the other side has closed; false when `limit` was over first.
  bool waitForClose(std::chrono::milliseconds limit);

 private:
  int descriptor_ = -1;
  std::string received_;
};

}  // namespace zolvar
