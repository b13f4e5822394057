#pragma once

#include <memory>
#include <string>

#include "addressbook/AddressBook.h"
#include "addressbook/CardSource.h"
#include "util/NotificationCenter.h"

namespace zolvar {

struct Platform;

/// The user's address book, as the setting "AddressBook" has it: "folder", "eds" (Evolution Data
/// Server), or "auto": the server when its module is installed and it answers, else the folder.
/// What auto has once chosen it keeps to, in the setting "AddressBookInUse", since another book
/// looks like one from which everyone has been deleted. `moduleFolder` is where the module lies
/// (<libexec>/zolvar). Nothing is read before somebody asks the book. Main thread.
std::unique_ptr<AddressBook> makeAddressBook(Platform& platform, NotificationCenter& center,
                                             const std::string& moduleFolder);

/// The server's cards, from the module in the folder. Fails: Absent when it or a library of it is
/// not installed, Refused when it is of another version. What it needs stays loaded.
Result<std::unique_ptr<CardSource>> loadServerCards(Platform& platform,
                                                    const std::string& moduleFolder);

}  // namespace zolvar
