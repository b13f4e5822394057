#include "pool/PoolSnapshot.h"

namespace zolvar {

const char* phaseName(PoolPhase phase) {
  switch (phase) {
    case PoolPhase::Inactive:
      return "inactive";
    case PoolPhase::Recovering:
      return "recovering";
    case PoolPhase::Activating:
      return "activating";
    case PoolPhase::Active:
      return "active";
    case PoolPhase::Leaving:
      return "leaving";
  }
  return "";
}

}  // namespace zolvar
