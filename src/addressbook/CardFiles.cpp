#include "addressbook/CardFiles.h"

#include <fmt/format.h>

#include <algorithm>

#include "addressbook/VCardPerson.h"
#include "addressbook/VCardReader.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

constexpr std::uint64_t LargestFile = 32ULL << 20U;  // bytes
constexpr std::string_view Extension = ".vcf";
constexpr std::uint32_t PrivateMode = 0600;

bool isCardFile(std::string_view name, const FileAttributes& attributes) {
  return attributes.kind == FileKind::Regular && attributes.size <= LargestFile &&
         !name.starts_with('.') && name.size() > Extension.size() &&
         isSameInAnyCase(name.substr(name.size() - Extension.size()), Extension);
}

std::string uidOf(std::string_view card) {
  for (const auto& line : linesOfCard(card)) {
    if (line.name == "UID") return unescapedValue(line.value);
  }
  return {};
}

}  // namespace

CardFiles::CardFiles(std::unique_ptr<Folder> folder, std::string path)
    : folder_(std::move(folder)), path_(std::move(path)) {}

Result<CardFiles::Changes> CardFiles::scan(const std::set<std::string>& suspects) {
  const auto listed = folder_->list("");
  if (!listed) return tl::unexpected(listed.error());
  std::set<std::string> present;
  std::map<std::string, File> fresh;
  for (const auto& [name, attributes] : *listed) {
    if (!isCardFile(name, attributes)) continue;
    const auto known = files_.find(name);
    if (known != files_.end()) {
      present.insert(name);
      const FileAttributes& before = known->second.attributes;
      if (!suspects.contains(name) && before.inode == attributes.inode &&
          before.size == attributes.size && before.modTime == attributes.modTime) {
        continue;
      }
    }
    auto texts = cardsOf(name);
    if (!texts.empty()) fresh[name] = {attributes, std::move(texts), {}};
  }
  std::vector<std::string> gone;
  for (const auto& [name, file] : files_) {
    if (!present.contains(name)) gone.push_back(name);
  }
  return takeOver(gone, std::move(fresh));
}

std::vector<std::string> CardFiles::cardsOf(const std::string& name) {
  const auto text = folder_->read(name, 0, LargestFile);
  if (!text) return {};
  std::vector<std::string> cards;
  for (const auto card : cardsIn(*text)) cards.emplace_back(card);
  return cards;
}

/// Makes the fresh files' cards those that are known, and tells the difference. Who has an id keeps
/// it, as long as its file stands unchanged.
CardFiles::Changes CardFiles::takeOver(const std::vector<std::string>& gone,
                                       std::map<std::string, File> fresh) {
  KeptCards before;
  const auto release = [&](const std::string& name) {
    const auto file = files_.find(name);
    if (file == files_.end()) return;
    for (const auto& id : file->second.ids) {
      before.insert(cards_.extract(id));
      owners_.erase(id);
    }
    files_.erase(file);
  };
  for (const auto& name : gone) release(name);
  for (const auto& [name, file] : fresh) release(name);
  Changes changes;
  for (auto& [name, file] : fresh) {
    const std::string stem = name.substr(0, name.size() - Extension.size());
    for (std::size_t index = 0; index < file.texts.size(); ++index) {
      const std::string number = index == 0 ? "" : fmt::format("-{}", index + 1);
      const std::string uid = uidOf(file.texts[index]);
      std::string id = uid.empty() ? recordId(stem) + number : recordId(uid);
      if (owners_.contains(id)) id += "-" + hexHash(name) + number;
      owners_[id] = name;
      KeptCard card{file.texts[index], file.texts.size() == 1, joinPath(path_, name)};
      const auto known = before.find(id);
      if (known == before.end() || known->second != card) changes.changed[id] = card;
      if (known != before.end()) before.erase(known);
      cards_[id] = std::move(card);
      file.ids.push_back(std::move(id));
    }
    file.texts.clear();
  }
  for (const auto& [id, card] : before) changes.removed.push_back(id);
  files_.merge(fresh);
  return changes;
}

CardFiles::Changes CardFiles::look(const std::string& name) {
  const auto attributes = folder_->attributes(name);
  if (!attributes) return takeOver({name}, {});
  std::map<std::string, File> fresh;
  if (auto texts = cardsOf(name); !texts.empty()) fresh[name] = {*attributes, std::move(texts), {}};
  return takeOver({}, std::move(fresh));
}

void CardFiles::Changes::add(Changes later) {
  for (auto& [id, card] : later.changed) {
    std::erase(removed, id);
    changed[id] = std::move(card);
  }
  for (auto& id : later.removed) {
    changed.erase(id);
    removed.push_back(std::move(id));
  }
}

Result<> CardFiles::write(const CardWrite& write, Changes& changes) {
  if (write.kind == CardWrite::Kind::Add) return add(write, changes);
  const auto owner = owners_.find(write.id);
  const auto there = owner == owners_.end() ? std::vector<std::string>() : cardsOf(owner->second);
  if (there.size() != 1 || there.front() != cards_.at(write.id).text) {
    // Changed, renamed or removed since.
    auto scanned = scan(owner == owners_.end() ? std::set<std::string>() : std::set{owner->second});
    if (!scanned) return tl::unexpected(scanned.error());
    changes.add(std::move(*scanned));
  }
  const auto card = cards_.find(write.id);
  if (card == cards_.end()) return {};
  if (!card->second.isWritable) {
    return fail(FailureKind::Refused, "change the contact", write.id,
                "its file holds several contacts");
  }
  const std::string name = owners_.at(write.id);
  auto done = write.kind == CardWrite::Kind::Remove ? remove(name) : change(write, name);
  if (done) changes.add(look(name));
  return done;
}

Result<> CardFiles::remove(const std::string& name) {
  auto trashed = folder_->trash(name);
  if (!trashed && trashed.error().kind == FailureKind::Absent) return {};
  return trashed;
}

Result<> CardFiles::change(const CardWrite& write, const std::string& name) {
  const auto text = folder_->read(name, 0, LargestFile);
  if (!text) return tl::unexpected(text.error());
  const auto cards = cardsIn(*text);
  if (cards.size() != 1) {
    return fail(FailureKind::Transient, "change the contact", write.id, "its file is in work");
  }
  const std::string changed = write.edit(cards.front());
  if (changed == cards.front()) return {};
  const auto attributes = folder_->attributes(name);
  if (!attributes) return tl::unexpected(attributes.error());
  std::string whole = *text;
  whole.replace(static_cast<std::size_t>(cards.front().data() - text->data()), cards.front().size(),
                changed);
  return folder_->replace(name, whole, attributes->mode, [&]() -> Result<> {
    const auto there = folder_->read(name, 0, LargestFile);
    if (there && *there == *text) return {};
    if (!there && there.error().kind != FailureKind::Absent) return tl::unexpected(there.error());
    return fail(FailureKind::Transient, "change the contact", write.id,
                "another program has just changed its file");
  });
}

Result<> CardFiles::add(const CardWrite& write, Changes& changes) {
  std::string name = write.id + std::string(Extension);
  for (int number = 2; folder_->attributes(name); ++number) {
    name = fmt::format("{}-{}{}", write.id, number, Extension);
  }
  auto written = folder_->replace(name, write.text, PrivateMode, [&]() -> Result<> {
    const auto there = folder_->attributes(name);
    if (!there && there.error().kind == FailureKind::Absent) return {};
    if (!there) return tl::unexpected(there.error());
    return fail(FailureKind::Transient, "add the contact", write.id,
                "another program has just made a file of its name");
  });
  if (written) changes.add(look(name));
  return written;
}

std::map<std::string, std::string> CardFiles::idsByFile() const {
  std::map<std::string, std::string> ids;
  for (const auto& [name, file] : files_) ids[name] = file.ids.front();
  return ids;
}

}  // namespace zolvar
