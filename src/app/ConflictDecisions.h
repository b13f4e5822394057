#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pool/PoolSnapshot.h"
#include "util/Failure.h"

namespace zolvar {

class Operations;

/// How to settle conflicts of several files alike.
struct ConflictChoice {
  enum class Kind {
    KeepMine,    ///< the version that is here
    UseTheirs,   ///< the newest one that is not
    FromPerson,  ///< the newest one that `userId` wrote or chose
  };
  Kind kind = Kind::KeepMine;
  std::string userId;
};

/// The version that a choice means; none when the file has none such. Pure.
std::optional<VersionId> chosenVersion(const Conflict& conflict, const ConflictChoice& choice);

/// The people who wrote or chose a version of one of the conflicts, sorted. Pure.
std::vector<std::string> peopleIn(const std::vector<Conflict>& conflicts);

/// What a decision took away here, and how to bring it back: as a change of ours upon what came
/// after it.
struct Undo {
  struct File {
    std::string path;
    std::string keptId;  ///< of the kept content, see Operations::restore
  };
  std::string poolName;
  std::vector<File> files;
};

/// Carries out what a person decides about the versions of files in conflict, one file after the
/// other. Content that lies here is kept before another version takes its place, so that the
/// decision can be undone. Owned by the front end; the operations outlive it; destroying it gives
/// up what is not begun. Main thread.
class ConflictDecisions {
 public:
  struct Report {
    std::size_t settled = 0;  ///< files
    std::optional<Failure> firstProblem;
    std::size_t problems = 0;  ///< files
    Undo undo;                 ///< without files: nothing was taken away here
  };
  using Done = std::function<void(const Report&)>;

  explicit ConflictDecisions(Operations& operations) : operations_(operations) {}

  /// The chosen version of each file stays, for everybody; the others are deleted. Files to which
  /// the choice does not apply are left as they are.
  void settle(const std::string& poolName, const std::vector<Conflict>& conflicts,
              const ConflictChoice& choice, Done done);
  /// This version takes the file's place here; the others stay to be chosen by others.
  void use(const std::string& poolName, const Conflict& conflict, const VersionId& version,
           Done done);
  /// This version is deleted for everybody.
  void drop(const std::string& poolName, const Conflict& conflict, const VersionId& version,
            Done done);
  /// Brings back what a decision took away.
  void undo(const Undo& undo, Done done);

 private:
  struct Step;
  struct Run;
  void next(const std::shared_ptr<Run>& run);
  void take(const std::shared_ptr<Run>& run);
  void ended(const std::shared_ptr<Run>& run, const Result<>& outcome);
  void start(const std::string& poolName, std::vector<Step> steps, Done done);

  Operations& operations_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< outcomes hold it weakly
};

}  // namespace zolvar
