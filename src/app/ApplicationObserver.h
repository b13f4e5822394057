#pragma once

#include <set>
#include <string>

#include "app/OutcomeTexts.h"
#include "pool/ParticipantAddress.h"
#include "pool/PoolSnapshot.h"

namespace zolvar {

class KDFilePool;
class KDParticipant;

/// How a sync ended, for whoever tells people about it.
struct SyncReport {
  KDFilePool& pool;
  ParticipantAddress participant;
  int status = 0;
  std::string errorMessage;           ///< empty when the status is 0
  std::set<std::string> loadedFiles;  ///< paths that arrived

  /// All or part of what was wanted has come.
  [[nodiscard]] bool isSuccess() const { return status == 0 || status == 23; }
};

/// What happens in the running program, for a front end: notices, the window, the log, the command
/// line's watch stream. Every call does nothing unless overridden. Added to and removed from
/// Application, which calls all observers in order of their adding. Main thread.
class ApplicationObserver {
 public:
  virtual ~ApplicationObserver() = default;

  virtual void syncDidStart(KDFilePool& /*pool*/, const KDParticipant& /*participant*/) {}
  /// Every sync's end, before the queue goes on.
  virtual void syncDidEnd(const SyncReport& /*report*/) {}
  /// Files go to the Trash here because a peer deleted them.
  virtual void filesWereDeleted(KDFilePool& /*pool*/, const std::set<std::string>& /*paths*/) {}
  virtual void conflictDidOccur(KDFilePool& /*pool*/, const std::string& /*path*/) {}
  /// Vanished files wait for an answer; a later call for the same pool replaces the question.
  virtual void questionDidArise(KDFilePool& /*pool*/, const DeleteQuestion& /*question*/) {}
  /// A notice about an outcome, as the desktop gets it.
  virtual void noticeWasPosted(const OutcomeNotice& /*notice*/) {}
  /// The passwords of the two sides differ. Once a participant, until a sync with it works.
  virtual void passwordDidFail(KDFilePool& /*pool*/, KDParticipant& /*participant*/) {}
  /// A pool's folder cannot be reached; once until it is back.
  virtual void poolPathsNotAccessible(KDFilePool& /*pool*/) {}
  /// One sentence that a person should know. `poolName` is empty when it is about the program.
  virtual void warning(const std::string& /*poolName*/, const std::string& /*sentence*/) {}
  /// Something that a listing shows has changed: phase, counts, participants, folder, progress.
  virtual void poolDidChange(KDFilePool& /*pool*/) {}
  /// Pools came or went.
  virtual void poolListDidChange() {}
  /// The transfer daemon runs from now on, or does not; `trouble` says why not, if it should.
  virtual void serverDidChange(bool /*running*/, const std::string& /*trouble*/) {}
};

}  // namespace zolvar
