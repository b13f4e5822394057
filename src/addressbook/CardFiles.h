#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "addressbook/CardSource.h"
#include "platform/FileSystem.h"

namespace zolvar {

/// The cards in a folder of .vcf files, as khard and vdirsyncer keep them: one card a file,
/// directly in the folder, the file's name meaning nothing. Files that are none of ours are left
/// alone; several cards in one file are read, never written. A card's id is its UID; a card without
/// one has its file's name, and of several cards with one UID all but the first are told apart by
/// their files' names. Owned by the lane that runs it.
class CardFiles {
 public:
  struct Changes {
    KeptCards changed;
    std::vector<std::string> removed;
    void add(Changes later);
  };

  CardFiles(std::unique_ptr<Folder> folder, std::string path);

  /// Reads what is new or looks changed, and the `suspects` (file names) in any case. A file that
  /// cannot be read, or has no whole card any more, counts as what was last read: somebody may be
  /// writing it. Fails when the folder cannot be listed.
  Result<Changes> scan(const std::set<std::string>& suspects);
  /// Fails: Transient may work later; anything else is given up. What is written is what the next
  /// scan would find. A card that is gone is not changed, and not missed when it is to be removed.
  /// Adds to `changes`, also where it fails, what has become known by it.
  Result<> write(const CardWrite& write, Changes& changes);

  [[nodiscard]] FileIdentity identity() const { return folder_->identity(); }
  [[nodiscard]] const KeptCards& cards() const { return cards_; }
  /// The first card's id of each file.
  [[nodiscard]] std::map<std::string, std::string> idsByFile() const;

 private:
  struct File {
    FileAttributes attributes;
    std::vector<std::string> texts;  ///< of its cards, until they are taken over
    std::vector<std::string> ids;    ///< of its cards, from then on
  };

  [[nodiscard]] std::vector<std::string> cardsOf(const std::string& name);
  Changes takeOver(const std::vector<std::string>& gone, std::map<std::string, File> fresh);
  Changes look(const std::string& name);
  Result<> add(const CardWrite& write, Changes& changes);
  Result<> change(const CardWrite& write, const std::string& name);
  Result<> remove(const std::string& name);

  const std::unique_ptr<Folder> folder_;
  const std::string path_;
  std::map<std::string, File> files_;          ///< by name
  std::map<std::string, std::string> owners_;  ///< record id → file name
  KeptCards cards_;
};

}  // namespace zolvar
