#pragma once

#include "platform/Lanes.h"

namespace zolvar {

/// Lanes without threads: a job runs at once on its caller, and what it throws reaches the caller.
/// A job posted by a job of the same lane runs after it, as on a real lane. For tests and tools
/// that want one thread.
class InlineLanes : public Lanes {
 public:
  std::shared_ptr<Lane> start(const std::string& name) override;
};

}  // namespace zolvar
