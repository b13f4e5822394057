#pragma once

#include <nlohmann/json.hpp>

#include "app/Operations.h"

namespace zolvar::views {

// The data of replies and events of the control protocol. docs/control-protocol.md has their
// members.

nlohmann::json view(const PoolInfo& info);
nlohmann::json view(const ParticipantInfo& info);
nlohmann::json view(const Conflict& conflict);
nlohmann::json view(const OpenQuestion& question);
nlohmann::json view(const StoredVersion& version);
nlohmann::json view(const OutcomeNotice& notice);
nlohmann::json view(const TransferProgress& progress);
nlohmann::json view(const ProgramStatus& status);
nlohmann::json view(const SyncOutcome& outcome);

/// The views of all members, as an array.
template <class Members>
nlohmann::json viewAll(const Members& members) {
  nlohmann::json array = nlohmann::json::array();
  for (const auto& member : members) array.push_back(view(member));
  return array;
}

}  // namespace zolvar::views
