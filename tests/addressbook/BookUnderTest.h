#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "addressbook/AddressBook.h"
#include "platform/Platform.h"
#include "util/NotificationCenter.h"

namespace zolvar {

/// One place where contacts are kept, and the world around it. Each book opened on it is as good as
/// another program's.
class BookUnderTest {
 public:
  virtual ~BookUnderTest() = default;
  virtual Platform& platform() = 0;
  virtual std::unique_ptr<AddressBook> open(NotificationCenter& center) = 0;
  /// Lets time pass until the condition holds; false when it does not.
  virtual bool runUntil(const std::function<bool()>& condition) = 0;
};

/// Makes one, empty; null with the reason when this machine cannot.
struct BookKind {
  std::string name;
  std::function<std::unique_ptr<BookUnderTest>(std::string& whyNot)> make;
};
std::vector<BookKind> bookKinds();

/// Where the build leaves the server's module.
std::string serverModuleFolder();

}  // namespace zolvar
