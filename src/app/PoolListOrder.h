#pragma once

#include <vector>

#include "app/Operations.h"

namespace zolvar {

/// Active folders first, each group by name.
void sortPools(std::vector<PoolInfo>& pools);
/// The default "ShowOnlyActivePools" leaves out the inactive ones.
[[nodiscard]] bool isShown(const PoolInfo& pool, bool showsOnlyActive);
/// By user id; this machine's own is left out.
[[nodiscard]] std::vector<ParticipantInfo> listedParticipants(std::vector<ParticipantInfo> all);

}  // namespace zolvar
