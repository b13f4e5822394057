#include "addressbook/AddressMemory.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/Log.h"
#include "util/PathRules.h"
#include "util/PropertyList.h"

namespace zolvar {

namespace {

constexpr const char* UidMappings = "uid-mappings.plist";
constexpr const char* Marks = "address-marks.plist";
constexpr const char* CardExtension = ".vcf";
constexpr std::string_view MatchedSuffix = " matched";
constexpr std::string_view NewSuffix = " new";
constexpr std::uint64_t LargestFile = 64U << 20U;  // bytes
constexpr std::uint32_t FileMode = 0600;

std::string markKey(const std::string& poolName, const std::string& fileName) {
  return poolName + "/" + fileName;
}

}  // namespace

Result<std::string> AddressMemory::uidMappingsPath(FileSystem& fileSystem) {
  const auto support = fileSystem.supportFolder();
  if (!support) return support;
  return joinPath(*support, UidMappings);
}

void AddressMemory::load() {
  const std::lock_guard guard(mutex_);
  if (isLoaded_) return;
  isLoaded_ = true;
  const auto path = fileSystem_.supportFolder();
  const auto folder = path ? fileSystem_.open(*path) : tl::unexpected(path.error());
  if (!folder) return;
  read(**folder, UidMappings, uids_);
  read(**folder, Marks, marks_);
}

void AddressMemory::read(Folder& folder, const char* name, File& file) {
  const auto bytes = folder.read(name, 0, LargestFile);
  if (!bytes) return;
  auto dictionary = dictionaryFromPropertyList(*bytes);
  if (dictionary) {
    file.strings = std::move(dictionary->strings);
  } else {
    log_.warning("{}", dictionary.error().message());
  }
}

std::string AddressMemory::uniqueIdForFilename(const std::string& fileName) const {
  const std::lock_guard guard(mutex_);
  const auto found = uids_.strings.find(fileName);
  if (found != uids_.strings.end()) return found->second;
  const std::size_t dot = fileName.rfind('.');
  return dot == std::string::npos || dot == 0 ? fileName : fileName.substr(0, dot);
}

std::string AddressMemory::filenameForUniqueId(const std::string& recordId,
                                               const std::string& poolName) const {
  const std::lock_guard guard(mutex_);
  const std::string ownName = recordId + CardExtension;
  const auto isOfPool = [&](const std::string& fileName) {
    return marks_.strings.contains(markKey(poolName, fileName));
  };
  std::string found;
  for (auto entry = uids_.strings.rbegin(); entry != uids_.strings.rend(); ++entry) {
    if (entry->second != recordId) continue;
    if (isOfPool(entry->first)) return entry->first;
    if (found.empty()) found = entry->first;
  }
  return found.empty() || isOfPool(ownName) ? ownName : found;
}

bool AddressMemory::isMapped(const std::string& fileName) const {
  const std::lock_guard guard(mutex_);
  return uids_.strings.contains(fileName);
}

void AddressMemory::setUniqueIdForFileName(const std::string& recordId,
                                           const std::string& fileName) {
  const std::lock_guard guard(mutex_);
  put(uids_, fileName, recordId);
}

void AddressMemory::forgetFile(const std::string& poolName, const std::string& fileName) {
  const std::lock_guard guard(mutex_);
  erase(uids_, fileName);
  erase(marks_, markKey(poolName, fileName));
}

std::optional<AddressMemory::Mark> AddressMemory::mark(const std::string& poolName,
                                                       const std::string& fileName) const {
  const std::lock_guard guard(mutex_);
  const auto found = marks_.strings.find(markKey(poolName, fileName));
  if (found == marks_.strings.end()) return std::nullopt;
  Mark mark;
  std::string text = found->second;
  const auto takeSuffix = [&text](std::string_view suffix) {
    const bool has = text.ends_with(suffix);
    if (has) text.resize(text.size() - suffix.size());
    return has;
  };
  mark.isNew = takeSuffix(NewSuffix);
  mark.isMatched = takeSuffix(MatchedSuffix);
  const std::size_t blank = text.find(' ');
  if (blank == std::string::npos) return std::nullopt;
  mark.record = text.substr(0, blank);
  mark.file = text.substr(blank + 1);
  return mark;
}

void AddressMemory::setMark(const std::string& poolName, const std::string& fileName,
                            const Mark& mark) {
  const std::lock_guard guard(mutex_);
  put(marks_, markKey(poolName, fileName),
      fmt::format("{} {}{}{}", mark.record, mark.file, mark.isMatched ? MatchedSuffix : "",
                  mark.isNew ? NewSuffix : ""));
}

void AddressMemory::removeMark(const std::string& poolName, const std::string& fileName) {
  const std::lock_guard guard(mutex_);
  erase(marks_, markKey(poolName, fileName));
}

void AddressMemory::useBook(const std::string& poolName, const std::string& identity,
                            bool isGroupNew) {
  const std::lock_guard guard(mutex_);
  const auto known = marks_.strings.find(poolName);
  const bool isSame = known != marks_.strings.end() && known->second == identity;
  if (isSame && !isGroupNew) return;
  const std::string prefix = markKey(poolName, "");
  std::erase_if(marks_.strings,
                [&prefix](const auto& entry) { return entry.first.starts_with(prefix); });
  put(marks_, poolName, identity);
  marks_.isDirty = true;
}

void AddressMemory::erase(File& file, const std::string& key) {
  file.isDirty = file.strings.erase(key) > 0 || file.isDirty;
}

void AddressMemory::put(File& file, const std::string& key, const std::string& value) {
  std::string& current = file.strings[key];
  if (current == value) return;
  current = value;
  file.isDirty = true;
}

void AddressMemory::save() {
  const std::lock_guard guard(mutex_);
  if (!uids_.isDirty && !marks_.isDirty) return;
  const auto path = fileSystem_.supportFolder();
  const auto folder = path ? fileSystem_.open(*path) : tl::unexpected(path.error());
  if (!folder) return;
  write(**folder, UidMappings, uids_);
  write(**folder, Marks, marks_);
}

/// What could not be written stays in memory, for the next time.
void AddressMemory::write(Folder& folder, const char* name, File& file) {
  if (!file.isDirty) return;
  const auto written = folder.replace(name, propertyListFromDictionary(file.strings), FileMode);
  file.isDirty = !written;
  if (!written) log_.debug("{}", written.error().message());
}

}  // namespace zolvar
