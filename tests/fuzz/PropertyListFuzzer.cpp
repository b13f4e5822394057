// A list of paths that a peer left in the metadata folder, in either form of a property list.

#include <algorithm>

#include "fuzz/Fuzz.h"
#include "util/PathRules.h"
#include "util/PropertyList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zolvar;
  using namespace zolvar::fuzz;
  const std::string_view bytes = textOf(data, size);
  const auto strings = stringsFromPropertyList(bytes);
  expect(!stringsFromPropertyList(bytes, {size - std::min<std::size_t>(size, 1), 16}) || size == 0,
         "a list above the size limit is refused");
  if (!strings) return 0;

  std::vector<std::string> paths;
  std::copy_if(strings->begin(), strings->end(), std::back_inserter(paths), isSafeRelativePath);
  const auto again = stringsFromPropertyList(propertyListFromStrings(paths));
  expect(again && *again == paths, "paths survive being written");
  return 0;
}
