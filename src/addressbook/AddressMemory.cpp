#include "addressbook/AddressMemory.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/Log.h"
#include "util/PathRules.h"
#include "util/PropertyList.h"

namespace zolvar {

namespace {

constexpr const char* UidMappings = "uid-mappings.plist";
constexpr const char* Marks = "address-marks.plist";
constexpr const char* CardExtension = ".vcf";
constexpr std::uint64_t LargestFile = 64U << 20U;  // bytes
constexpr std::uint32_t FileMode = 0600;

struct Flag {
  std::string_view suffix;
  bool AddressMemory::Mark::*member;
};
/// In the reverse order of their writing.
constexpr Flag Flags[] = {{" deleted", &AddressMemory::Mark::isDeleted},
                          {" new", &AddressMemory::Mark::isNew},
                          {" matched", &AddressMemory::Mark::isMatched}};

std::string textOf(const AddressMemory::Mark& mark) {
  return fmt::format("{} {}{}{}{}", mark.record, mark.file, mark.isMatched ? " matched" : "",
                     mark.isNew ? " new" : "", mark.isDeleted ? " deleted" : "");
}

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
  const bool isMappingKnown = read(**folder, UidMappings, uids_);
  read(**folder, Marks, marks_);
  indexMapping();
  if (isMappingKnown || marks_.strings.empty()) return;
  log_.warning("It was forgotten which contacts the files of shared groups stand for ('{}').",
               UidMappings);
  for (auto& [key, text] : marks_.strings) {
    auto mark = markUnlocked(key);
    if (!mark) continue;
    mark->isNew = true;
    put(marks_, key, textOf(*mark));
  }
}

bool AddressMemory::read(Folder& folder, const char* name, File& file) {
  const auto bytes = folder.read(name, 0, LargestFile);
  if (!bytes) return false;
  auto dictionary = dictionaryFromPropertyList(*bytes);
  if (dictionary) {
    file.strings = std::move(dictionary->strings);
  } else {
    log_.warning("{}", dictionary.error().message());
  }
  return dictionary.has_value();
}

void AddressMemory::indexMapping() {
  for (const auto& [fileName, recordId] : uids_.strings) filesByRecord_[recordId].insert(fileName);
}

std::string AddressMemory::uniqueIdForFilename(const std::string& fileName) const {
  const std::lock_guard guard(mutex_);
  const auto found = uids_.strings.find(fileName);
  if (found != uids_.strings.end()) return found->second;
  const std::size_t dot = fileName.rfind('.');
  return dot == std::string::npos || dot == 0 ? fileName : fileName.substr(0, dot);
}

std::set<std::string> AddressMemory::filesUnlocked(const std::string& recordId,
                                                   const std::string& poolName) const {
  const auto found = filesByRecord_.find(recordId);
  std::set<std::string> files;
  if (found != filesByRecord_.end()) files = found->second;
  const std::string ownName = recordId + CardExtension;
  if (!uids_.strings.contains(ownName) && marks_.strings.contains(markKey(poolName, ownName))) {
    files.insert(ownName);
  }
  return files;
}

std::set<std::string> AddressMemory::filesOf(const std::string& recordId,
                                             const std::string& poolName) const {
  const std::lock_guard guard(mutex_);
  return filesUnlocked(recordId, poolName);
}

std::string AddressMemory::filenameForUniqueId(const std::string& recordId,
                                               const std::string& poolName) const {
  const std::lock_guard guard(mutex_);
  std::string matched;
  std::string unmarked;
  for (const std::string& fileName : filesUnlocked(recordId, poolName)) {
    const auto mark = markUnlocked(markKey(poolName, fileName));
    if (mark && !mark->isMatched) return fileName;
    (mark ? matched : unmarked) = fileName;
  }
  if (!matched.empty()) return matched;
  return unmarked.empty() ? recordId + CardExtension : unmarked;
}

bool AddressMemory::isMapped(const std::string& fileName) const {
  const std::lock_guard guard(mutex_);
  return uids_.strings.contains(fileName);
}

void AddressMemory::setUniqueIdForFileName(const std::string& recordId,
                                           const std::string& fileName) {
  const std::lock_guard guard(mutex_);
  const auto known = uids_.strings.find(fileName);
  if (known != uids_.strings.end()) filesByRecord_[known->second].erase(fileName);
  put(uids_, fileName, recordId);
  filesByRecord_[recordId].insert(fileName);
}

void AddressMemory::forgetFile(const std::string& poolName, const std::string& fileName) {
  const std::lock_guard guard(mutex_);
  erase(marks_, markKey(poolName, fileName));
  const bool isElsewhere = std::any_of(
      marks_.strings.begin(), marks_.strings.end(),
      [ending = markKey("", fileName)](const auto& mark) { return mark.first.ends_with(ending); });
  const auto known = uids_.strings.find(fileName);
  if (isElsewhere || known == uids_.strings.end()) return;
  filesByRecord_[known->second].erase(fileName);
  erase(uids_, fileName);
}

std::optional<AddressMemory::Mark> AddressMemory::mark(const std::string& poolName,
                                                       const std::string& fileName) const {
  const std::lock_guard guard(mutex_);
  return markUnlocked(markKey(poolName, fileName));
}

std::optional<AddressMemory::Mark> AddressMemory::markUnlocked(const std::string& key) const {
  const auto found = marks_.strings.find(key);
  if (found == marks_.strings.end() || key.find('/') == std::string::npos) return std::nullopt;
  Mark mark;
  std::string text = found->second;
  for (const Flag& flag : Flags) {
    mark.*flag.member = text.ends_with(flag.suffix);
    if (mark.*flag.member) text.resize(text.size() - flag.suffix.size());
  }
  const std::size_t blank = text.find(' ');
  if (blank == std::string::npos) return std::nullopt;
  mark.record = text.substr(0, blank);
  mark.file = text.substr(blank + 1);
  return mark;
}

void AddressMemory::setMark(const std::string& poolName, const std::string& fileName,
                            const Mark& mark) {
  const std::lock_guard guard(mutex_);
  put(marks_, markKey(poolName, fileName), textOf(mark));
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
  const std::lock_guard order(writing_);
  const auto path = fileSystem_.supportFolder();
  const auto folder = path ? fileSystem_.open(*path) : tl::unexpected(path.error());
  if (!folder) return;
  // A mark without the file that it is about would have that file read in once more, no worse.
  write(**folder, UidMappings, uids_);
  write(**folder, Marks, marks_);
}

/// What could not be written stays in memory, for the next time.
void AddressMemory::write(Folder& folder, const char* name, File& file) {
  std::map<std::string, std::string> strings;
  {
    const std::lock_guard guard(mutex_);
    if (!std::exchange(file.isDirty, false)) return;
    strings = file.strings;
  }
  const auto written = folder.replace(name, propertyListFromDictionary(strings), FileMode);
  if (written) return;
  log_.debug("{}", written.error().message());
  const std::lock_guard guard(mutex_);
  file.isDirty = true;
}

}  // namespace zolvar
