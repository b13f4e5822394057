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
    if (texts.empty()) continue;
    present.insert(name);
    files_[name] = {attributes, std::move(texts), {}};
  }
  std::erase_if(files_, [&](const auto& file) { return !present.contains(file.first); });
  return takeOver();
}

std::vector<std::string> CardFiles::cardsOf(const std::string& name) {
  const auto text = folder_->read(name, 0, LargestFile);
  if (!text) return {};
  std::vector<std::string> cards;
  for (const auto card : cardsIn(*text)) cards.emplace_back(card);
  return cards;
}

/// Who has an id keeps it, as long as its file stands unchanged.
void CardFiles::giveIds() {
  std::erase_if(owners_, [&](const auto& owner) {
    const auto file = files_.find(owner.second);
    return file == files_.end() || (file->second.ids.empty() && owner.first != added_);
  });
  for (auto& [name, file] : files_) {
    if (!file.ids.empty()) continue;
    const std::string stem = name.substr(0, name.size() - Extension.size());
    for (std::size_t index = 0; index < file.texts.size(); ++index) {
      const std::string number = index == 0 ? "" : fmt::format("-{}", index + 1);
      const std::string uid = uidOf(file.texts[index]);
      std::string id = uid.empty() ? recordId(stem) + number : recordId(uid);
      const auto owner = owners_.find(id);
      const bool isTaken = owner != owners_.end() && (owner->second != name || id != added_);
      if (isTaken) id += "-" + hexHash(name) + number;
      owners_[id] = name;
      file.ids.push_back(std::move(id));
    }
  }
}

/// Makes the files' cards those that are known, and tells the difference.
CardFiles::Changes CardFiles::takeOver() {
  giveIds();
  KeptCards now;
  for (const auto& [name, file] : files_) {
    for (std::size_t index = 0; index < file.texts.size(); ++index) {
      now[file.ids[index]] = {file.texts[index], file.texts.size() == 1, joinPath(path_, name)};
    }
  }
  Changes changes;
  for (const auto& [id, card] : now) {
    const auto known = cards_.find(id);
    if (known == cards_.end() || known->second.text != card.text ||
        known->second.isWritable != card.isWritable ||
        known->second.addressToOpen != card.addressToOpen) {
      changes.changed[id] = card;
    }
  }
  for (const auto& [id, card] : cards_) {
    if (!now.contains(id)) changes.removed.push_back(id);
  }
  cards_ = std::move(now);
  return changes;
}

Result<CardFiles::Changes> CardFiles::write(const CardWrite& write) {
  if (write.kind == CardWrite::Kind::Add) return add(write);
  auto scanned = scan({});  // it may have another name by now
  if (!scanned) return scanned;
  const auto card = cards_.find(write.id);
  if (card == cards_.end()) return scanned;
  if (!card->second.isWritable) {
    return fail(FailureKind::Refused, "change the contact", write.id,
                "its file holds several contacts");
  }
  const std::string name = owners_.at(write.id);
  if (write.kind == CardWrite::Kind::Remove) {
    if (const auto trashed = folder_->trash(name);
        !trashed && trashed.error().kind != FailureKind::Absent) {
      return tl::unexpected(trashed.error());
    }
  } else {
    if (const auto changed = change(write, name); !changed) return tl::unexpected(changed.error());
  }
  auto after = scan({name});
  if (!after) return after;
  for (auto& [id, changed] : scanned->changed) after->changed.try_emplace(id, std::move(changed));
  return after;
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
  return folder_->replace(name, whole, attributes->mode);
}

Result<CardFiles::Changes> CardFiles::add(const CardWrite& write) {
  std::string name = write.id + std::string(Extension);
  for (int number = 2; folder_->attributes(name); ++number) {
    name = fmt::format("{}-{}{}", write.id, number, Extension);
  }
  if (const auto written = folder_->replace(name, write.text, PrivateMode); !written) {
    return tl::unexpected(written.error());
  }
  owners_.try_emplace(write.id, name);
  added_ = write.id;
  auto scanned = scan({name});
  added_.clear();
  return scanned;
}

std::map<std::string, std::string> CardFiles::idsByFile() const {
  std::map<std::string, std::string> ids;
  for (const auto& [name, file] : files_) ids[name] = file.ids.front();
  return ids;
}

}  // namespace zolvar
