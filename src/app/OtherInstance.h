#pragma once

#include <string>

namespace zolvar {

struct Platform;

/// Ends the Zolvar that holds the lock file at `lockPath`: the process whose id stands in it, when
/// that process's command line names zolvar-desktop or zolvard, and never ourselves. It is told to
/// end cleanly and waited for, up to 45 s, the time that a clean end may take. True when it is gone
/// and the lock may be tried again. Blocks: for the start of a program, before its run loop runs.
bool killOtherInstances(Platform& platform, const std::string& lockPath);

}  // namespace zolvar
