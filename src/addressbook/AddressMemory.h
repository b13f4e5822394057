#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "platform/FileSystem.h"

namespace zolvar {

class Log;

/// What all address pools of this user remember from one run to the next: which record of the
/// address book each card's file stands for, and how both looked when they were last the same.
/// Kept in two property lists of the support folder; one that is missing or damaged is empty, and
/// without the mapping all that was in step counts as new, so that no file is deleted for having no
/// record. One object, owned by the application, serves all pools. Any thread; changes are on disk
/// after save, which waits for the disk and holds nobody else up.
class AddressMemory : public std::enable_shared_from_this<AddressMemory> {
 public:
  /// How a record and its file looked when they were last in step.
  struct Mark {
    std::string record;  ///< digestOfProperties
    std::string file;    ///< digest of the content
    /// Found by its name only: still two people, until the user has made one of them.
    bool isMatched = false;
    /// Read in, but not known to be written in the book: lost, it is read in once more.
    bool isNew = false;
    /// Others deleted the file while the book could not be read.
    bool isDeleted = false;
    bool operator==(const Mark&) const = default;
  };

  AddressMemory(FileSystem& fileSystem, Log& log) : fileSystem_(fileSystem), log_(log) {}

  /// The file of the mapping: file name → record id.
  static Result<std::string> uidMappingsPath(FileSystem& fileSystem);

  /// Reads both files, the first time.
  void load();
  /// The mapped record, else the file name without its extension.
  [[nodiscard]] std::string uniqueIdForFilename(const std::string& fileName) const;
  /// The last file name that is mapped to the record, one of the pool's before others, else the
  /// record id with the extension "vcf". Of several files that were in step, the first.
  [[nodiscard]] std::string filenameForUniqueId(const std::string& recordId,
                                                const std::string& poolName) const;
  /// All files that are mapped to the record, and the one of its own name if the pool knows it.
  [[nodiscard]] std::set<std::string> filesOf(const std::string& recordId,
                                              const std::string& poolName) const;
  [[nodiscard]] bool isMapped(const std::string& fileName) const;
  void setUniqueIdForFileName(const std::string& recordId, const std::string& fileName);
  /// The mapping stays while another pool has a file of that name.
  void forgetFile(const std::string& poolName, const std::string& fileName);

  [[nodiscard]] std::optional<Mark> mark(const std::string& poolName,
                                         const std::string& fileName) const;
  void setMark(const std::string& poolName, const std::string& fileName, const Mark& mark);
  void removeMark(const std::string& poolName, const std::string& fileName);
  /// The pool is mirrored from this book (AddressBook::identity). Marks that were made with another
  /// book, or with a group that is gone, say nothing about this one: they are forgotten.
  void useBook(const std::string& poolName, const std::string& identity, bool isGroupNew);

  /// Writes what changed.
  void save();

 private:
  struct File {
    std::map<std::string, std::string> strings;
    bool isDirty = false;
  };
  bool read(Folder& folder, const char* name, File& file);
  void write(Folder& folder, const char* name, File& file);
  void erase(File& file, const std::string& key);
  void put(File& file, const std::string& key, const std::string& value);
  [[nodiscard]] std::optional<Mark> markUnlocked(const std::string& key) const;
  [[nodiscard]] std::set<std::string> filesUnlocked(const std::string& recordId,
                                                    const std::string& poolName) const;
  void indexMapping();

  FileSystem& fileSystem_;
  Log& log_;
  std::mutex writing_;        ///< one save after the other
  mutable std::mutex mutex_;  ///< guards all below
  bool isLoaded_ = false;
  File uids_;                                                   ///< file name → record id
  std::map<std::string, std::set<std::string>> filesByRecord_;  ///< the opposite
  File marks_;  ///< "POOL/FILE" → mark; "POOL" → the book's identity
};

}  // namespace zolvar
