#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "util/Failure.h"

namespace zolvar {

/// Bounds on a property list that may come from a stranger, checked before the library sees it
/// (200,000 nested arrays overflow its stack).
struct PropertyListBounds {
  std::size_t bytes = 64U << 20;
  int depth = 16;
};

/// The strings of a property-list array, XML or binary form. Other members are left out.
/// Fails: Damaged (not a property list, not an array, out of bounds).
Result<std::vector<std::string>> stringsFromPropertyList(std::string_view bytes,
                                                         PropertyListBounds bounds = {});

/// What a property-list dictionary holds under its keys, as far as it is of these kinds.
struct PropertyDictionary {
  std::map<std::string, bool> flags;  ///< truth values, and numbers as whether they are not 0
  std::map<std::string, std::vector<std::string>> lists;  ///< the strings of arrays
  std::map<std::string, std::string> strings;
};

/// Fails: Damaged (not a property list, not a dictionary, out of bounds).
Result<PropertyDictionary> dictionaryFromPropertyList(std::string_view bytes,
                                                      PropertyListBounds bounds = {});

/// A property-list array of the strings, XML form.
std::string propertyListFromStrings(const std::vector<std::string>& strings);
/// A property-list dictionary of the strings, XML form.
std::string propertyListFromDictionary(const std::map<std::string, std::string>& strings);

}  // namespace zolvar
