#pragma once

#include <set>
#include <string>

#include "pool/ParticipantAddress.h"

namespace zolvar {

class KDFilePool;

// Posted on the main thread. The pool outlives the delivery.

/// The end of every sync.
struct KDSyncDidEndNotification {
  KDFilePool* pool = nullptr;
  int KDTerminationStatus = 0;
  std::string KDTaskActivity;
  std::string KDFilePoolName;
  ParticipantAddress KDParticipant;
  std::set<std::string> KDLoadedFiles;
  std::string KDErrorMessage;  ///< empty when the status is 0
};

/// Files are about to be deleted here because a peer deleted them.
struct KDSyncDidDeleteFilesNotification {
  KDFilePool* pool = nullptr;
  std::set<std::string> KDDeletedFiles;
};

struct KDConflictDidOccurNotification {
  KDFilePool* pool = nullptr;
  std::string ConflictingFile;
};

/// The pool wants a sync with all its participants.
struct KDCompleteSyncNeeded {
  KDFilePool* pool = nullptr;
};

/// Folder path, activity or password changed; without a pool: settings of the daemon did.
struct KDPoolDidChangeCriticalData {
  KDFilePool* pool = nullptr;
};

/// The pool's logs changed and the debounce is over: its TXT record wants a refresh.
struct KDPoolAnnouncementDue {
  KDFilePool* pool = nullptr;
};

/// A new snapshot can be read, or the progress changed.
struct KDPoolDidChangeNotification {
  KDFilePool* pool = nullptr;
};

/// Something a person should know about one pool: one sentence.
struct KDPoolWarning {
  KDFilePool* pool = nullptr;
  std::string text;
};

}  // namespace zolvar
