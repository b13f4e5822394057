#include <algorithm>

#include "app/Application.h"
#include "app/Contacts.h"
#include "app/FolderState.h"
#include "app/Outcomes.h"
#include "app/Pauses.h"
#include "app/PoolPlaces.h"
#include "net/KDParticipant.h"
#include "net/ServiceName.h"

// What the state of a folder is made of, collected from all who know a part of it.

namespace zolvar {
namespace {

/// Whether its last announcement tells of the same logs as ours.
bool agrees(const Application& application, const KDFilePool& pool,
            const std::shared_ptr<KDParticipant>& participant) {
  const auto* announced = application.announcement(
      makeServiceName(participant->userId(), participant->port(), pool.nameHash()));
  if (announced == nullptr) return false;
  const auto digest = announced->find(txt::LogDigest);
  return digest != announced->end() && digest->second == pool.snapshot()->logFilesHash;
}

bool holdsMissing(const PoolSnapshot& snapshot, const std::set<std::string>& userIds) {
  if (userIds.empty()) return false;
  return std::any_of(snapshot.seen->begin(), snapshot.seen->end(), [&](const auto& seen) {
    return std::any_of(seen.second.holders.begin(), seen.second.holders.end(),
                       [&](const auto& holder) { return userIds.contains(holder); });
  });
}

}  // namespace

FolderFacts folderFacts(const Application& application, const KDPoolPresence& presence) {
  const KDFilePool& pool = presence.pool();
  const auto snapshot = pool.snapshot();
  FolderFacts facts;
  facts.phase = pool.phase();
  const bool isLeft = facts.phase == PoolPhase::Inactive || facts.phase == PoolPhase::Leaving;
  facts.isSubscribed = !isLeft || application.isWaitingForDrive(pool.name());
  if (!facts.isSubscribed) return facts;
  facts.isPaused = application.pauses().isPaused(pool.name());
  facts.isAccessible = !isLeft && snapshot->isAccessible;
  facts.hasTrouble = !snapshot->trouble.empty();
  facts.isPasswordReadable =
      pool.passwordState() == PasswordState::None || pool.passwordState() == PasswordState::Set;
  facts.isClockOff = application.isClockOff();
  facts.hasQuestion = application.outcomes().openQuestion(pool) != nullptr;
  facts.isScanned = facts.phase == PoolPhase::Active && snapshot->lastScan > 0;
  facts.conflicts = snapshot->conflicts->size();
  facts.missing = snapshot->missing->size();
  std::set<std::string> reachable;
  for (const auto& participant : presence.participants()) {
    if (participant->isLocalParticipant()) continue;
    ++facts.present;
    const Contact contact = application.contacts().of(*participant);
    if (contact.differsInPassword) ++facts.differing;
    if (contact.standing == Contact::Standing::Unreachable) continue;
    const bool isSeenOnly = contact.standing == Contact::Standing::Seen;
    const bool isAgreeing = agrees(application, pool, participant);
    // After a contact logs differ when the other side lacks some of ours; what it has that we lack
    // made it wait in the queue.
    const bool hasNews =
        !isAgreeing && (isSeenOnly || application.scheduler().queue().contains(participant));
    if (hasNews) ++facts.unasked;
    if (isSeenOnly && isAgreeing) ++facts.agreeing;
    if (isSeenOnly) continue;
    ++facts.reachable;
    reachable.insert(participant->userId());
  }
  if (facts.missing > 0) facts.isObtainable = holdsMissing(*snapshot, reachable);
  const auto& syncing = application.scheduler().syncingParticipant();
  facts.isSyncing = syncing && syncing->poolName() == pool.name();
  if (const auto progress = pool.progress()) {
    facts.filesDone = progress->filesDone;
    facts.filesWanted = progress->filesWanted;
  }
  return facts;
}

}  // namespace zolvar
