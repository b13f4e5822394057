#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "addressbook/AddressBook.h"
#include "addressbook/AddressMemory.h"
#include "net/KDPeer.h"
#include "util/NotificationCenter.h"

namespace zolvar {

class Application;
struct KDAddressMergeNeeded;

/// Makes the address book that the program was given.
using AddressBookMaker =
    std::function<std::unique_ptr<AddressBook>(Platform& platform, NotificationCenter& center)>;

/// The folders that mirror groups of the user's address book: owns the book and what its pools
/// remember, and tells a person when contacts are to be merged. Owned by the application, outlives
/// the peer and its pools. Main thread.
class AddressFolders {
 public:
  AddressFolders(Application& application, const AddressBookMaker& maker);
  ~AddressFolders();

  [[nodiscard]] AddressBook& book() { return *book_; }
  /// Makes the pools of such folders; the delegate outlives them.
  [[nodiscard]] KDPeer::PoolClass poolClass(KDFilePoolDelegate* delegate);
  /// Names of the groups, sorted. Fails as the book does.
  [[nodiscard]] Result<std::vector<std::string>> groups();
  /// Where a group is mirrored: in the base path, under its name and the extension.
  [[nodiscard]] std::string folderOf(const std::string& group) const;

 private:
  void mergeNeeded(const KDAddressMergeNeeded& needed);

  Application& application_;
  std::unique_ptr<AddressBook> book_;
  const std::shared_ptr<AddressMemory> memory_;
  NotificationCenter::Observation observation_;
};

}  // namespace zolvar
