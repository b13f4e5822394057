#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "addressbook/ABPerson.h"
#include "util/Failure.h"

namespace zolvar {

/// A group of people in an address book.
struct ABGroup {
  std::string uniqueId;
  std::string name;
  bool operator==(const ABGroup&) const = default;
};

/// Posted to the notification centre when somebody else changed the book (never for what was done
/// through the AddressBook itself), and when a book that failed with Transient can be read at last.
struct AddressBookDidChange {
  std::vector<std::string> updated;  ///< record ids, of people and of groups
  std::vector<std::string> inserted;
  std::vector<std::string> deleted;
};

/// The user's address book: groups of people, read and changed. One object, the shared book, serves
/// all pools; the program owns it. Main thread; nothing here waits for another process: reading
/// works on what was read in the background, writing is taken over at once and done by `save`.
///
/// Fails: Transient while the book has not been read yet or cannot be reached. It is then unknown
/// what is in it, which is not the same as nothing; AddressBookDidChange follows when it is.
/// Absent where an id or a group is not in the book, but for the finders, which find nothing.
class AddressBook {
 public:
  virtual ~AddressBook() = default;

  /// Which book this is, the same over runs and another for each book: record ids mean nothing in
  /// another book. For example "folder /home/ann/.contacts".
  [[nodiscard]] virtual std::string identity() const = 0;
  /// Every property that a person of this book can have, the unique id included.
  [[nodiscard]] virtual std::vector<std::string> allPersonProperties() const = 0;

  [[nodiscard]] virtual Result<std::vector<ABGroup>> groups() = 0;
  /// Adds an empty group; one of that name that exists already is returned as it is.
  virtual Result<ABGroup> addGroup(const std::string& name) = 0;
  /// The people of the group, in the order of their ids.
  [[nodiscard]] virtual Result<std::vector<ABPerson>> members(const std::string& groupId) = 0;
  /// Nothing happens when the person is a member already.
  virtual Result<> addMember(const std::string& groupId, const std::string& personId) = 0;
  /// Nothing happens when the person is no member.
  virtual Result<> removeMember(const std::string& groupId, const std::string& personId) = 0;
  /// The groups of which the person is a member.
  [[nodiscard]] virtual Result<std::vector<ABGroup>> parentGroups(const std::string& personId) = 0;

  /// Everyone in the book, in the order of their ids.
  [[nodiscard]] virtual Result<std::vector<ABPerson>> people() = 0;
  [[nodiscard]] virtual Result<std::optional<ABPerson>> recordForUniqueId(
      const std::string& personId) = 0;
  /// A person from one card of text; not in the book. Fails: Damaged (no card).
  [[nodiscard]] Result<ABPerson> personWithVCardData(const std::string& vCardData) const {
    return cardReader()(vCardData);
  }
  /// What reads cards for this book, on any thread, even after its end.
  using CardReader = std::function<Result<ABPerson>(const std::string& vCardData)>;
  [[nodiscard]] virtual CardReader cardReader() const = 0;
  /// Adds the person with all that the card says, but in no group, whatever the card says of
  /// groups. Returns the new record's id; a card's own UID is taken over where it is free.
  virtual Result<std::string> addPerson(const ABPerson& person) = 0;
  virtual Result<> removePerson(const std::string& personId) = 0;
  /// Changes these properties and leaves all else of the person's card as it is.
  virtual Result<> setValues(const std::string& personId, const ABChanges& changes) = 0;
  /// Writes all that was added, changed and removed. May go on after the return where the book is
  /// another process'; what fails then is a warning in the log.
  virtual Result<> save() = 0;

  /// Whether the record is in the book as other programs find it, and nothing of it waits for
  /// `save`'s end or was lost with it.
  [[nodiscard]] virtual bool isWritten(const std::string& /*personId*/) const { return true; }

  /// The user's own card, with its picture; nothing when none is marked as such.
  [[nodiscard]] virtual Result<std::optional<ABPerson>> me() = 0;
  /// What to open so that a person sees these records; a card's file, or an address that the
  /// address-book program understands. Empty where there is nothing to open.
  [[nodiscard]] virtual std::string addressToOpen(const std::string& recordId) = 0;
};

}  // namespace zolvar
