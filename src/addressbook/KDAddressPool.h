#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "addressbook/AddressBook.h"
#include "addressbook/AddressBookSearch.h"
#include "addressbook/AddressMemory.h"
#include "addressbook/GroupComparison.h"
#include "pool/KDFilePool.h"

namespace zolvar {

/// A pool whose files are the cards of one group of the user's address book, the group of the
/// folder's name without its extension. Each member is written as a file, and travels like any
/// file; cards that come from peers are read into the book and the group. The folder is never
/// polled: what changes in it comes from the book, or with a sync.
///
/// What was read in is written out again only when the record changed since, and the other way
/// round: AddressMemory holds how record and file looked when they were last in step. A file that
/// was never in step is read in, never deleted for having no member. A card of somebody of the same
/// name takes the place of nobody's until a person has merged the two (GroupComparison.h).
///
/// Main thread; files are read, compared and written on the pool's lane, but for a last comparison
/// when the folder is given up, and many cards are read in a few at a time. Book and memory outlive
/// it. A book that cannot be read, or a card that is none, leaves everything as it is.
class KDAddressPool final : public KDFilePool {
 public:
  static constexpr std::string_view Extension = ".zolvaraddresses";

  static std::shared_ptr<KDAddressPool> make(const std::string& path, const Options& options,
                                             Platform& platform, NotificationCenter& center,
                                             KDFilePoolDelegate* delegate, AddressBook& book,
                                             AddressMemory& memory);

  /// The group of that name, made on first use.
  Result<ABGroup> syncGroup();
  [[nodiscard]] std::string displayName() const override;
  /// Opens the group in an address-book program.
  [[nodiscard]] std::string url();
  /// The person's name, or organisation, or both; "New Person" for nobody in the book.
  [[nodiscard]] std::string descriptionForFile(const std::string& path) const override;
  /// Brings the folder in step with the group.
  void copyVCardsFromAddressBook();
  /// Record id → file of a card that was matched to it by name, for the person to merge.
  [[nodiscard]] const std::map<std::string, std::string>& mergePaths() const { return mergePaths_; }

 private:
  struct Outcome {
    std::string listing;  ///< before the cards were read
    std::shared_ptr<const std::vector<std::string>> missing;
    MirroredCards cards;
    GroupDifference difference;
  };

  KDAddressPool(const std::string& path, const Options& options, Platform& platform,
                NotificationCenter& center, KDFilePoolDelegate* delegate, AddressBook& book,
                AddressMemory& memory);

  void didActivate() override;
  void willDeactivate() override;
  void noteTaskDidEnd(const std::set<std::string>& loadedFiles,
                      const std::function<void()>& tell) override;
  void didDeleteFiles(const std::set<std::string>& paths) override;
  bool didLoseFiles(const DeleteQuestion& question) override;
  [[nodiscard]] bool isPolled() const override { return false; }

  static MirroredCards readCards(FileSystem& fileSystem, const AddressBook::CardReader& reader,
                                 const std::string& folderPath);
  static std::string listing(FileSystem& fileSystem, const std::string& folderPath);
  void withCards(std::function<void(MirroredCards&)> job);
  [[nodiscard]] Result<ComparedGroup> groupToCompare();
  void exportEnded();
  void exportGroup(Outcome outcome);
  void holdMassDeletion(std::vector<FileChange>& changes, std::size_t cards,
                        const std::set<std::string>& allowed);
  void importCards(MirroredCards cards, std::function<void()> done);
  void importSome();
  void importEnded();
  void updateABFromVCard(const ABGroup& group, const std::string& fileName,
                         const MirroredCard& card);
  [[nodiscard]] bool isMerged(const std::string& recordId, const ABPerson& person);
  void noteProblems(const MirroredCards& cards);
  [[nodiscard]] std::optional<std::string> idOfSameName(const ABPerson& person);
  void mergeFilesWithAddressBook(const std::set<std::string>& fileNames);
  void addressBookChanged(const AddressBookDidChange& change);
  void deleteMerged(const std::string& fileName);
  void deleteRecord(const std::string& fileName, const std::set<std::string>& deleted);
  [[nodiscard]] std::optional<AddressMemory::Mark> mark(const std::string& fileName) const;
  [[nodiscard]] std::map<std::string, AddressMemory::Mark> marksInStep(
      const std::string& recordId) const;
  void saveBook();
  void saveMemory();
  void note(const Failure& failure);
  void noteOnce(const std::string& fileName, const std::string& digest, const std::string& text);
  [[nodiscard]] bool isChanged(const ABPerson& record, const AddressMemory::Mark& mark) const;

  AddressBook& book_;
  AddressMemory& memory_;
  std::vector<std::string> checked_;
  std::optional<ABGroup> group_;
  std::string groupsBook_;  ///< the identity of the book that has it
  std::map<std::string, std::string> mergePaths_;
  MirroredCards toImport_;  ///< not read in yet
  std::vector<std::function<void()>> afterImport_;
  std::map<std::string, ABPerson> mergePeople_;  ///< whom the files of mergePaths_ tell of
  std::optional<PeopleByName> names_;            ///< for the import that goes on
  /// What an import has brought in step, until the book is saved.
  std::map<std::string, AddressMemory::Mark> pendingMarks_;
  std::map<std::string, std::string> problems_;  ///< told: file name → digest of the card
  std::optional<std::uint64_t> lossQuestion_;    ///< answered when the export is through
  std::set<std::string> heldDeletions_;          ///< wait whether their people come back
  std::set<std::string> allowedDeletions_;  ///< have waited long enough, for the next comparison
  // When the folder was compared last:
  std::string listing_;
  std::shared_ptr<const std::vector<std::string>> missing_;
  bool isExporting_ = false;
  bool exportsAgain_ = false;
  bool isBehind_ = false;  ///< the last export could not do all
  bool isImporting_ = false;
  bool confirmsImport_ = false;
  bool isConfirming_ = false;  ///< sees whether what was read in is written
  NotificationCenter::Observation observation_;
};

/// Cards from peers were matched by name to people who were in the book before: a person is to
/// merge them. Posted on the main thread.
struct KDAddressMergeNeeded {
  KDAddressPool* pool = nullptr;
  std::set<std::string> files;  ///< names in the pool's folder
};

}  // namespace zolvar
