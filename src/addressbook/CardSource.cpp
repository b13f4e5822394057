#include "addressbook/CardSource.h"

#include <fmt/format.h>

#include "util/hexHash.h"

namespace zolvar {

std::string recordId(std::string_view uid) {
  constexpr std::size_t Longest =
      180;  // bytes: leaves room for what is added to make a file's name
  constexpr std::string_view Plain = "-_.@+=";
  std::string id;
  for (const char character : uid) {
    const bool isAlphanumeric = (character >= '0' && character <= '9') ||
                                (character >= 'A' && character <= 'Z') ||
                                (character >= 'a' && character <= 'z');
    const bool isHiding = character == '.' && id.empty();
    if (isAlphanumeric || (Plain.find(character) != Plain.npos && !isHiding)) {
      id += character;
    } else {
      id += fmt::format("%{:02X}", static_cast<unsigned char>(character));
    }
  }
  if (id.size() > Longest) id = id.substr(0, Longest) + "-" + hexHash(uid);
  return id;
}

}  // namespace zolvar
