#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/FileSystem.h"

namespace zolvar {

/// One walk through what lies beneath a root descriptor, depth first and without recursion. Holds
/// one directory open at a time, so that depth costs no descriptors; the names of directories still
/// to be entered wait in one growing text. One stat a file and no allocation a file. Caller
/// synchronises; the root descriptor outlives the walk.
class FolderWalk {
 public:
  FolderWalk(int root, const Folder::Visitor& visit, const Folder::WalkErrors& errors);

  /// Visits everything beneath the directory `start` ("" is the root).
  void run(std::string_view start);

 private:
  /// A directory to be entered: the last name in names_, under the first parentLength bytes of
  /// path_ (which siblings share, and which stand there again when its turn comes).
  struct Pending {
    std::size_t parentLength = 0;
    std::size_t nameLength = 0;
  };

  bool readDirectory();
  bool visitEntry(int directory, const char* name, std::size_t parentLength);
  void report(std::string_view directory, int error);

  const int root_;
  const Folder::Visitor& visit_;
  const Folder::WalkErrors& errors_;
  std::string path_;
  std::string names_;
  std::vector<Pending> pending_;
  std::vector<char> entries_;  ///< what getdents64 fills
};

}  // namespace zolvar
