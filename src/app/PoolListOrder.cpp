#include "app/PoolListOrder.h"

#include <algorithm>
#include <tuple>

namespace zolvar {

void sortPools(std::vector<PoolInfo>& pools) {
  std::sort(pools.begin(), pools.end(), [](const PoolInfo& left, const PoolInfo& right) {
    const bool leftIsInactive = left.phase != PoolPhase::Active;
    const bool rightIsInactive = right.phase != PoolPhase::Active;
    return std::tie(leftIsInactive, left.name) < std::tie(rightIsInactive, right.name);
  });
}

bool isShown(const PoolInfo& pool, bool showsOnlyActive) {
  return !showsOnlyActive || pool.phase == PoolPhase::Active;
}

std::vector<ParticipantInfo> listedParticipants(std::vector<ParticipantInfo> all) {
  std::erase_if(all, [](const ParticipantInfo& each) { return each.isLocal; });
  std::sort(all.begin(), all.end(), [](const ParticipantInfo& left, const ParticipantInfo& right) {
    return left.address.userId() < right.address.userId();
  });
  return all;
}

}  // namespace zolvar
