#include "util/PropertyList.h"

#include <plist/plist.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>

namespace zolvar {

namespace {

tl::unexpected<Failure> damaged(const char* reason) {
  return fail(FailureKind::Damaged, "read a property list", {}, reason);
}

struct PlistFree {
  void operator()(void* node) const { plist_free(node); }
};
struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
// The C++ face of the library loses the members of arrays that it has parsed.
using Plist = std::unique_ptr<void, PlistFree>;

/// Null when the bytes are no property list.
Plist parsed(std::string_view bytes, bool isBinary) {
  plist_t root = nullptr;
  const auto size = static_cast<std::uint32_t>(bytes.size());
  if (isBinary) {
    plist_from_bin(bytes.data(), size, &root);
  } else {
    plist_from_xml(bytes.data(), size, &root);
  }
  return Plist(root);
}

constexpr std::string_view BinaryMagic = "bplist00";

/// Bounds the nesting of an XML property list without understanding more of it than its brackets.
/// Where comments or CDATA make it doubtful what a bracket means, containers count as never closed.
bool isShallowXml(std::string_view text, int depthLimit) {
  const bool closes =
      text.find("<!--") == std::string_view::npos && text.find("<![") == std::string_view::npos;
  int depth = 0;
  for (std::size_t open = text.find('<'); open != std::string_view::npos;
       open = text.find('<', open + 1)) {
    const std::string_view rest = text.substr(open + 1);
    if (closes && rest.find_first_of("<>") != rest.find('>')) return false;
    for (const std::string_view name : {"array", "dict"}) {
      if (rest.starts_with(name)) {
        const bool isEmpty = closes && rest.substr(0, rest.find('>')).ends_with('/');
        if (!isEmpty && ++depth > depthLimit) return false;
      } else if (closes && rest.starts_with('/') && rest.substr(1).starts_with(name)) {
        --depth;
      }
    }
  }
  return true;
}

/// Walks the objects of a binary property list as a parser would expand them: bounds the nesting,
/// and the number of objects, since one object may be referred to many times.
class BinaryBounds {
 public:
  BinaryBounds(std::string_view bytes, int depthLimit) : bytes_(bytes), depthLimit_(depthLimit) {}

  bool hold() {
    constexpr std::size_t TrailerSize = 32;
    if (bytes_.size() < BinaryMagic.size() + TrailerSize) return false;
    const std::size_t trailer = bytes_.size() - TrailerSize;
    offsetSize_ = static_cast<unsigned char>(bytes_[trailer + 6]);
    referenceSize_ = static_cast<unsigned char>(bytes_[trailer + 7]);
    objectCount_ = number(trailer + 8, 8).value_or(0);
    const std::uint64_t root = number(trailer + 16, 8).value_or(0);
    tableStart_ = number(trailer + 24, 8).value_or(0);
    if (!isNumberSize(offsetSize_) || !isNumberSize(referenceSize_)) return false;
    if (tableStart_ > trailer || objectCount_ > (trailer - tableStart_) / offsetSize_) return false;
    visitsLeft_ = 2 * objectCount_ + 1024;
    return visit(root, 1);
  }

 private:
  static bool isNumberSize(std::size_t size) { return size >= 1 && size <= 8; }

  [[nodiscard]] std::optional<std::uint64_t> number(std::uint64_t offset, std::size_t size) const {
    if (offset > bytes_.size() || size > bytes_.size() - offset) return std::nullopt;
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < size; ++index) {
      value = value << 8U | static_cast<unsigned char>(bytes_[offset + index]);
    }
    return value;
  }

  // Recursion ends at depthLimit_.
  bool visit(std::uint64_t object, int depth) {
    if (object >= objectCount_ || visitsLeft_-- == 0) return false;
    const auto start = number(tableStart_ + object * offsetSize_, offsetSize_);
    const auto marker = start ? number(*start, 1) : std::nullopt;
    if (!marker) return false;
    const std::uint64_t kind = *marker >> 4U;
    const bool isDictionary = kind == 0xD;
    if (!isDictionary && kind != 0xA && kind != 0xC) return true;
    if (depth > depthLimit_) return false;

    std::uint64_t count = *marker & 0xFU;
    std::uint64_t references = *start + 1;
    if (count == 0xF) {  // the count follows as an integer object
      const auto integer = number(references, 1);
      if (!integer || (*integer >> 4U) != 0x1 || (*integer & 0xFU) > 3) return false;
      const std::size_t size = std::size_t{1} << (*integer & 0xFU);
      const auto length = number(references + 1, size);
      if (!length) return false;
      count = *length;
      references += 1 + size;
    }
    if (count > bytes_.size()) return false;
    if (isDictionary) count *= 2;  // the keys, then the values
    for (std::uint64_t index = 0; index < count; ++index) {
      const auto child = number(references + index * referenceSize_, referenceSize_);
      if (!child || !visit(*child, depth + 1)) return false;
    }
    return true;
  }

  std::string_view bytes_;
  int depthLimit_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::uint64_t objectCount_ = 0;
  std::uint64_t tableStart_ = 0;
  std::uint64_t visitsLeft_ = 0;
};

/// The root of a property list within the bounds.
Result<Plist> boundedRoot(std::string_view bytes, PropertyListBounds bounds) {
  if (bytes.size() > std::min<std::size_t>(bounds.bytes, std::numeric_limits<int>::max())) {
    return damaged("it is too large");
  }
  const bool isBinary = bytes.starts_with(BinaryMagic);
  if (isBinary ? !BinaryBounds(bytes, bounds.depth).hold() : !isShallowXml(bytes, bounds.depth)) {
    return damaged("it is nested too deeply or cut off");
  }
  Plist root = parsed(bytes, isBinary);
  if (!root) return damaged("it is not a property list");
  return root;
}

std::string stringOf(plist_t node) {
  std::uint64_t length = 0;
  const char* const text = plist_get_string_ptr(node, &length);
  return text == nullptr ? std::string() : std::string(text, length);
}

std::vector<std::string> stringsOf(plist_t array) {
  std::vector<std::string> strings;
  strings.reserve(plist_array_get_size(array));
  plist_array_iter position = nullptr;
  plist_array_new_iter(array, &position);
  const std::unique_ptr<void, Free> positionFreed(position);
  plist_t member = nullptr;
  for (plist_array_next_item(array, position, &member); member != nullptr;
       plist_array_next_item(array, position, &member)) {
    if (plist_get_node_type(member) == PLIST_STRING) strings.push_back(stringOf(member));
  }
  return strings;
}

std::string xmlOf(plist_t root) {
  char* text = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root, &text, &length);
  const std::unique_ptr<void, Free> textFreed(text);
  return {text, length};
}

/// None for what is neither a truth value nor a number.
std::optional<bool> flagOf(plist_t node) {
  if (plist_get_node_type(node) == PLIST_BOOLEAN) {
    std::uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
  }
  if (plist_get_node_type(node) != PLIST_UINT) return std::nullopt;
  std::uint64_t value = 0;
  plist_get_uint_val(node, &value);
  return value != 0;
}

}  // namespace

Result<std::vector<std::string>> stringsFromPropertyList(std::string_view bytes,
                                                         PropertyListBounds bounds) {
  const auto root = boundedRoot(bytes, bounds);
  if (!root) return tl::unexpected(root.error());
  if (plist_get_node_type(root->get()) != PLIST_ARRAY) return damaged("it is not an array");
  return stringsOf(root->get());
}

Result<PropertyDictionary> dictionaryFromPropertyList(std::string_view bytes,
                                                      PropertyListBounds bounds) {
  const auto root = boundedRoot(bytes, bounds);
  if (!root) return tl::unexpected(root.error());
  if (plist_get_node_type(root->get()) != PLIST_DICT) return damaged("it is not a dictionary");
  PropertyDictionary dictionary;
  plist_dict_iter position = nullptr;
  plist_dict_new_iter(root->get(), &position);
  const std::unique_ptr<void, Free> positionFreed(position);
  while (true) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(root->get(), position, &key, &value);
    const std::unique_ptr<void, Free> keyFreed(key);
    if (value == nullptr || key == nullptr) return dictionary;
    if (plist_get_node_type(value) == PLIST_ARRAY) {
      dictionary.lists[key] = stringsOf(value);
    } else if (plist_get_node_type(value) == PLIST_STRING) {
      dictionary.strings[key] = stringOf(value);
    } else if (const auto flag = flagOf(value)) {
      dictionary.flags[key] = *flag;
    }
  }
}

std::string propertyListFromStrings(const std::vector<std::string>& strings) {
  const Plist array(plist_new_array());
  for (const std::string& string : strings) {
    plist_array_append_item(array.get(), plist_new_string(string.c_str()));  // takes it over
  }
  return xmlOf(array.get());
}

std::string propertyListFromDictionary(const std::map<std::string, std::string>& strings) {
  const Plist dictionary(plist_new_dict());
  for (const auto& [key, string] : strings) {
    plist_dict_set_item(dictionary.get(), key.c_str(), plist_new_string(string.c_str()));
  }
  return xmlOf(dictionary.get());
}

}  // namespace zolvar
