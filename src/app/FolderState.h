#pragma once

#include <cstddef>
#include <string>

#include "pool/PoolSnapshot.h"

namespace zolvar {

class Application;
class KDPoolPresence;

/// The one state of a folder, in the order in which the first that holds is told. InStep is told
/// only when no other holds.
enum class FolderStateKind {
  NotSubscribed,
  Paused,
  WaitingForDrive,     ///< its folder cannot be reached
  WaitingForPassword,  ///< ours cannot be read, or nobody present has the same
  WaitingForClock,     ///< this computer's clock is off
  QuestionOpen,
  Conflict,
  Fetching,
  Missing,   ///< and nobody present has them
  Alone,     ///< nobody else is present
  Checking,  ///< before the first whole scan, before logs were compared with somebody present, and
             ///< while there is trouble
  InStep,
};

/// What the state is made of.
struct FolderFacts {
  PoolPhase phase = PoolPhase::Inactive;
  bool isSubscribed = false;  ///< also while its drive is away
  bool isPaused = false;
  bool isAccessible = true;
  bool hasTrouble = false;  ///< something that was decided cannot be done; a sentence tells
  bool isPasswordReadable = true;
  bool isClockOff = false;
  bool hasQuestion = false;
  bool isScanned = false;     ///< a whole scan has ended since the folder became active
  std::size_t conflicts = 0;  ///< files
  std::size_t missing = 0;    ///< files
  bool isObtainable = false;  ///< somebody reachable has one of the missing
  std::size_t present = 0;    ///< others that are seen
  std::size_t unasked = 0;    ///< of these: their logs differ from ours, and were not fetched since
  std::size_t reachable = 0;  ///< of these: the last contact worked
  std::size_t agreeing = 0;   ///< of these: not contacted yet, but they announce the logs we have
  std::size_t differing = 0;  ///< of these: refused for a different password
  bool isSyncing = false;
  std::size_t filesDone = 0;    ///< of the copy run in progress
  std::size_t filesWanted = 0;  ///< 0: no copy run
};

struct FolderState {
  FolderStateKind kind = FolderStateKind::NotSubscribed;
  std::string text;  ///< "in step", "fetching 3 of 7", ...

  /// A person has to do something.
  [[nodiscard]] bool needsPerson() const;
  bool operator==(const FolderState&) const = default;
};

/// Pure.
FolderState folderState(const FolderFacts& facts);
/// A word for programs: "inStep", "fetching", ...
const char* stateWord(FolderStateKind kind);

/// What is known of a pool now. Main thread.
FolderFacts folderFacts(const Application& application, const KDPoolPresence& presence);

}  // namespace zolvar
