#include "app/FolderState.h"

#include <fmt/format.h>

namespace zolvar {
namespace {

FolderStateKind kindOf(const FolderFacts& facts) {
  using enum FolderStateKind;
  if (!facts.isSubscribed) return NotSubscribed;
  if (facts.isPaused) return Paused;
  if (!facts.isAccessible) return WaitingForDrive;
  const bool nobodyHasOurs = facts.present > 0 && facts.differing == facts.present;
  if (!facts.isPasswordReadable || nobodyHasOurs) return WaitingForPassword;
  if (facts.isClockOff) return WaitingForClock;
  if (facts.hasQuestion) return QuestionOpen;
  if (facts.conflicts > 0) return Conflict;
  if (facts.filesWanted > 0) return Fetching;
  // Whoever was not asked yet may have what is missing.
  const bool mayCome = facts.isObtainable || facts.unasked > 0 || facts.isSyncing;
  if (facts.missing > 0) return mayCome ? Fetching : Missing;
  if (facts.phase == PoolPhase::Recovering) return facts.present == 0 ? Alone : Checking;
  if (facts.phase != PoolPhase::Active || !facts.isScanned) return Checking;
  if (facts.present == 0) return Alone;
  return mayCome || facts.hasTrouble || facts.reachable + facts.agreeing == 0 ? Checking : InStep;
}

std::string textOf(FolderStateKind kind, const FolderFacts& facts) {
  using enum FolderStateKind;
  switch (kind) {
    case NotSubscribed:
      return "not subscribed";
    case Paused:
      return "paused";
    case WaitingForDrive:
      return "waiting for the drive";
    case WaitingForPassword:
      return "waiting for the password";
    case WaitingForClock:
      return "waiting for the clock";
    case QuestionOpen:
      return "question open";
    case Conflict:
      return fmt::format("conflict in {} {}", facts.conflicts,
                         facts.conflicts == 1 ? "file" : "files");
    case Fetching:
      if (facts.filesWanted == 0) return fmt::format("fetching 0 of {}", facts.missing);
      return fmt::format("fetching {} of {}", facts.filesDone, facts.filesWanted);
    case Missing:
      return fmt::format("missing {}, nobody here has {}", facts.missing,
                         facts.missing == 1 ? "it" : "them");
    case Alone:
      return "alone";
    case Checking:
      return "checking";
    case InStep:
      return "in step";
  }
  return {};
}

}  // namespace

bool FolderState::needsPerson() const {
  using enum FolderStateKind;
  return kind == WaitingForDrive || kind == WaitingForPassword || kind == WaitingForClock ||
         kind == QuestionOpen || kind == Conflict;
}

FolderState folderState(const FolderFacts& facts) {
  const FolderStateKind kind = kindOf(facts);
  return {kind, textOf(kind, facts)};
}

const char* stateWord(FolderStateKind kind) {
  using enum FolderStateKind;
  switch (kind) {
    case NotSubscribed:
      return "notSubscribed";
    case Paused:
      return "paused";
    case WaitingForDrive:
      return "waitingForDrive";
    case WaitingForPassword:
      return "waitingForPassword";
    case WaitingForClock:
      return "waitingForClock";
    case QuestionOpen:
      return "questionOpen";
    case Conflict:
      return "conflict";
    case Fetching:
      return "fetching";
    case Missing:
      return "missing";
    case Alone:
      return "alone";
    case Checking:
      return "checking";
    case InStep:
      return "inStep";
  }
  return "";
}

}  // namespace zolvar
