#pragma once

#include <functional>
#include <memory>
#include <string>

namespace zolvar {

class AddressBook;
class KDFilePool;
class Lane;
struct Platform;

/// The user's picture, which travels with the logs of every folder: the own card's of the address
/// book, else the account's (~/.face, or the accounts service's). Written beside the logs when a
/// folder becomes active, and when it is another one than lies there. At most 1 MB; without one
/// nothing is written. What is handed in outlives it. Main thread; files wait on the lane.
class UserPicture {
 public:
  /// `book` may be null.
  UserPicture(Platform& platform, std::shared_ptr<Lane> lane, AddressBook* book);

  void writeUserPicture(const KDFilePool& pool);

 private:
  Platform& platform_;
  std::shared_ptr<Lane> lane_;
  AddressBook* book_;
};

}  // namespace zolvar
