#pragma once

#include <memory>
#include <string>

namespace zolvar {

/// Emblems that file managers draw on files: kept by path in the desktop's metadata, where a
/// session has a service for them; elsewhere nothing happens. That service may take its time or
/// never answer, so a thread asks it, which starts with the first emblem. Owned by the file system,
/// and outlives its folders; what is not told to the service when this goes is dropped. Any thread.
class FileEmblems {
 public:
  FileEmblems();
  ~FileEmblems();
  FileEmblems(const FileEmblems&) = delete;

  /// Marks the file as in conflict, or takes the mark away; other emblems of it stay. Returns at
  /// once.
  void mark(const std::string& absolutePath, bool isInConflict) const;

 private:
  class Worker;

  const std::shared_ptr<Worker> worker_;
};

}  // namespace zolvar
