#pragma once

#include <memory>
#include <string>

#include "platform/Platform.h"
#include "util/Failure.h"

namespace zolvar {

/// The real world: one of each service, and the struct of references that the engine gets. Made on
/// the main thread after the QCoreApplication; destroyed there before it, after everything that was
/// given platform(). Running processes end with it.
class SystemPlatform {
 public:
  struct Options {
    std::string programName = "zolvar";  ///< in the system's log
    bool isDebug = false;                ///< writes debug lines, and all lines to standard error
    bool isTestModeActive = false;       ///< lanes run inline
  };

  /// Fails when the support folder cannot be made.
  static Result<std::unique_ptr<SystemPlatform>> make(const Options& options);
  SystemPlatform(const SystemPlatform&) = delete;
  ~SystemPlatform();

  [[nodiscard]] Platform& platform();

  /// Wakes every sleeper and waits until the lanes have done what is queued; false when `seconds`
  /// passed first. Then the program should leave without destroying what the lanes still use.
  bool finish(double seconds);

 private:
  struct Services;

  explicit SystemPlatform(std::unique_ptr<Services> services);

  const std::unique_ptr<Services> services_;
};

}  // namespace zolvar
