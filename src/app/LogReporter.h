#pragma once

#include "app/ApplicationObserver.h"

namespace zolvar {

class Log;

/// Writes into the log what becomes of the transfer daemon. Outcomes of syncs and what people are
/// asked are logged by Outcomes, warnings by whoever warns. The log outlives it. Main thread.
class LogReporter : public ApplicationObserver {
 public:
  explicit LogReporter(Log& log) : log_(log) {}

  void serverDidChange(bool running, const std::string& trouble) override;

 private:
  Log& log_;
  std::string serverTrouble_;  ///< told last
};

}  // namespace zolvar
