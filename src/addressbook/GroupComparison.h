#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "addressbook/ABPerson.h"
#include "addressbook/AddressMemory.h"
#include "pool/FileChange.h"

namespace zolvar {

class Log;

/// A card's file in the folder of a group, as it was read.
struct MirroredCard {
  std::string text;
  std::string digest;              ///< of the text
  std::optional<ABPerson> person;  ///< nothing when the text tells of none
  std::string problem;             ///< why there is no person
  bool isRead = true;              ///< false: there is a file, but it is not known what is in it
};
using MirroredCards = std::map<std::string, MirroredCard>;  ///< by file name

/// A group's members and all else that a comparison starts from.
struct ComparedGroup {
  std::string poolName;
  std::vector<ABPerson> members;
  std::set<std::string> unwritten;   ///< members that other programs may not find in the book yet
  std::vector<std::string> checked;  ///< properties that are kept in step
  std::shared_ptr<const std::vector<std::string>> missing;  ///< files still to come, sorted
};

/// What brings group and folder in step.
struct GroupDifference {
  struct Settled {
    std::optional<AddressMemory::Mark> before;
    AddressMemory::Mark now;
  };
  std::vector<FileChange> changes;
  std::map<std::string, AddressMemory::Mark> marks;  ///< once the changes are carried out
  std::map<std::string, Settled> settled;  ///< at once, where nobody has set another one meanwhile
  std::map<std::string, std::string> mappings;  ///< file name → record id
  std::set<std::string> toImport;
  std::set<std::string> orphans;    ///< to be imported when the record they are like is gone
  std::set<std::string> deletions;  ///< others deleted them while the book could not be read
};

bool isCardName(std::string_view name);
/// 32 hexadecimal digits.
std::string cardDigest(std::string_view text);

/// Compares the members with the cards by the properties that are kept in step; `memory` tells
/// whose change a difference is. Nothing is changed. A file that holds anything else than its
/// member is known to have had is never written over without being read in first. Any thread.
GroupDifference compareGroup(const ComparedGroup& group, const MirroredCards& cards,
                             const AddressMemory& memory, Log& log);

}  // namespace zolvar
