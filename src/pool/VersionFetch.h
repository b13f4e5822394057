#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pool/KDPoolSync.h"
#include "pool/ParticipantAddress.h"
#include "util/Failure.h"

namespace zolvar {

class Folder;
struct SyncContext;

/// Brings one version of a file to a place outside the pool's folder, from the first participant
/// whose listing shows it. It arrives in a folder of its own in the support folder, and is moved
/// from there only when its time is the wanted one. Used once; the transfer lane; the context
/// outlives it.
class VersionFetch {
 public:
  VersionFetch(SyncContext& context, const KDPoolSync::Settings& settings, std::string path,
               double modTime, std::string to);

  /// Fails: Refused (a path that names nothing inside a pool, something is at the target already),
  /// Absent (nobody has that version), Transient (somebody who may have it cannot be reached),
  /// Cancelled.
  Result<> fetchFrom(const std::vector<ParticipantAddress>& participants);

 private:
  Result<> check() const;
  Result<> fetchFrom(const ParticipantAddress& participant);
  Result<> listedBy(const ParticipantAddress& participant);
  Result<> copyFrom(const ParticipantAddress& participant, Folder& support,
                    const std::string& supportPath);
  Result<> moveToTarget(const std::string& arrived);

  SyncContext& context_;
  KDPoolSync::Settings settings_;
  std::string path_;  ///< in the pool
  double modTime_;
  std::string to_;  ///< absolute
};

}  // namespace zolvar
