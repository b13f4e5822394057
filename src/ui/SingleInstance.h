#pragma once

#include <QLocalServer>
#include <functional>
#include <string>

namespace zolvar {

/// Lets a second start of the program show the window of the first: the first listens on a socket,
/// the second asks there. Whoever hangs does not answer and is treated as any other instance. Main
/// thread.
class SingleInstance {
 public:
  explicit SingleInstance(std::string socketPath) : socketPath_(std::move(socketPath)) {}

  /// Asks the running program to show its window and waits, two seconds at most, until it says that
  /// it does. False when nobody does. Before the event loop runs.
  [[nodiscard]] bool showOther() const;
  /// From now on `show` is called when another start asks. Quietly nothing when it cannot listen.
  void listen(std::function<void()> show);

 private:
  std::string socketPath_;
  QLocalServer server_;
  std::function<void()> show_;
};

}  // namespace zolvar
