#include "addressbook/GroupComparison.h"

#include <fmt/format.h>

#include <algorithm>

#include "addressbook/AddressBookSearch.h"
#include "addressbook/PersonProperties.h"
#include "platform/Log.h"
#include "util/PathRules.h"
#include "util/QMDigest.h"

namespace zolvar {

namespace {

constexpr std::string_view CardExtension = ".vcf";

class Comparison {
 public:
  Comparison(const ComparedGroup& group, const MirroredCards& cards, const AddressMemory& memory,
             Log& log)
      : group_(group), cards_(cards), memory_(memory), log_(log) {
    for (const ABPerson& member : group.members) ids_.insert(member.uniqueId);
  }

  GroupDifference compare() {
    for (const ABPerson& member : group_.members) compareMember(member);
    for (const auto& [fileName, card] : cards_) {
      if (!card.isRead || isMissing(fileName) || fileNames_.contains(fileName)) continue;
      const auto mark = markOf(fileName);
      if (mark && ids_.contains(memory_.uniqueIdForFilename(fileName))) continue;
      if (mark && mark->isMatched) {
        // Whoever leaves the group only had a like name: the card is not theirs to take along.
        found_.orphans.insert(fileName);
      } else if (mark && !mark->isNew) {
        found_.changes.push_back({fileName, card.text, std::nullopt});
      } else {
        found_.toImport.insert(fileName);
      }
    }
    return std::move(found_);
  }

 private:
  using Mark = AddressMemory::Mark;

  [[nodiscard]] bool isMissing(const std::string& fileName) const {
    return std::binary_search(group_.missing->begin(), group_.missing->end(), fileName);
  }
  [[nodiscard]] std::optional<Mark> markOf(const std::string& fileName) const {
    return memory_.mark(group_.poolName, fileName);
  }
  [[nodiscard]] const MirroredCard* cardOf(const std::string& fileName) const {
    const auto found = cards_.find(fileName);
    return found == cards_.end() ? nullptr : &found->second;
  }

  /// Every file that the member goes by: more than one, where people of one name were made one.
  void compareMember(const ABPerson& member) {
    const std::string digest = digestOfProperties(member, group_.checked);
    std::set<std::string> merged;
    std::string inStep;  // the first one, so that all computers take the same
    std::string gone;
    std::string unmarked;
    bool waits = false;
    for (const std::string& fileName : memory_.filesOf(member.uniqueId, group_.poolName)) {
      const auto mark = markOf(fileName);
      const MirroredCard* card = cardOf(fileName);
      const bool isThere = card || isMissing(fileName);
      if (!mark) {
        unmarked = fileName;
      } else if (mark->isMatched) {
        waits = waits || (isMissing(fileName) && mark->record == digest);
        if (!card || isMissing(fileName)) continue;
        if (isMerged(member, digest, *card, *mark)) {
          merged.insert(fileName);
          if (inStep.empty()) inStep = fileName;
          continue;
        }
        if (mark->file != card->digest && card->isRead) found_.toImport.insert(fileName);
        waits = waits ||
                (mark->record == digest && (!card->person || hasSameName(*card->person, member)));
      } else if (mark->isDeleted && !isThere) {
        found_.deletions.insert(fileName);
        waits = true;
      } else {
        std::string& best = isThere ? inStep : gone;
        if (best.empty()) best = fileName;
      }
    }
    for (const std::string& fileName : merged) compareFile(member, digest, fileName);
    if (inStep.empty()) inStep = gone;
    if (inStep.empty()) {
      if (waits) return;
      inStep = nameFor(member, digest, unmarked);
    }
    if (!merged.contains(inStep)) compareFile(member, digest, inStep);
  }

  /// Whether a person has made the two one: nothing of the card is lost when it is written over.
  [[nodiscard]] bool isMerged(const ABPerson& member, const std::string& digest,
                              const MirroredCard& card, const Mark& mark) const {
    if (!card.person) return false;
    if (hasEqualProperties(member, *card.person, group_.checked)) return true;
    return mark.record != digest && hasSameName(*card.person, member) &&
           hasAllOf(member, *card.person, group_.checked);
  }

  /// A file for a member who has none that was in step.
  std::string nameFor(const ABPerson& member, const std::string& digest,
                      const std::string& mapped) {
    if (!mapped.empty() && isFree(member, mapped)) return mapped;
    const std::string own = member.uniqueId + std::string(CardExtension);
    const bool isOwn = memory_.uniqueIdForFilename(own) == member.uniqueId;
    if (!(isOwn && (cardOf(own) || isMissing(own)))) {
      if (const std::string fileName = claimed(digest); !fileName.empty()) {
        found_.mappings[fileName] = member.uniqueId;
        return fileName;
      }
    }
    if (isOwn && isFree(member, own)) return own;
    std::string other = cardDigest(member.uniqueId) + std::string(CardExtension);
    found_.mappings[other] = member.uniqueId;
    return other;
  }

  /// Whether the member can have a file of that name: nobody else's card is there.
  [[nodiscard]] bool isFree(const ABPerson& member, const std::string& fileName) const {
    if (!isCardName(fileName) || !isSafeRelativePath(fileName)) return false;
    const auto mark = markOf(fileName);
    if (mark) return !mark->isMatched;
    const MirroredCard* card = cardOf(fileName);
    return !card || (card->person && hasSameName(*card->person, member));
  }

  /// A file that says the same and is no other member's: the record got another id, or it was
  /// forgotten which one the file stands for.
  std::string claimed(const std::string& digest) {
    if (!claimable_) {
      claimable_.emplace();
      for (const auto& [fileName, card] : cards_) {
        if (!card.person || isMissing(fileName)) continue;
        if (ids_.contains(memory_.uniqueIdForFilename(fileName))) continue;
        const auto mark = markOf(fileName);
        if (mark && mark->isMatched) continue;
        claimable_->emplace(digestOfProperties(*card.person, group_.checked), fileName);
        if (mark && mark->file == card.digest) claimable_->emplace(mark->record, fileName);
      }
    }
    const auto [first, last] = claimable_->equal_range(digest);
    for (auto entry = first; entry != last; ++entry) {
      if (!fileNames_.contains(entry->second)) return entry->second;
    }
    return {};
  }

  void compareFile(const ABPerson& member, const std::string& digest, const std::string& fileName) {
    fileNames_.insert(fileName);
    if (isMissing(fileName)) return;  // what is to come is read in, or met with our change, later
    const MirroredCard* card = cardOf(fileName);
    const bool isNew = group_.unwritten.contains(member.uniqueId);
    std::optional<std::string> expected;
    if (card) {
      if (!card->isRead) return;
      const auto mark = markOf(fileName);
      const Mark inStep{digest, card->digest, false, isNew, false};
      if (card->person && hasEqualProperties(member, *card->person, group_.checked)) {
        if (mark != inStep) found_.settled[fileName] = {mark, inStep};
        return;
      }
      if (mark && !mark->isMatched && mark->record == digest) {
        if (mark->file != card->digest) {
          found_.toImport.insert(fileName);
        } else if ((mark->isNew && !isNew) || mark->isDeleted) {
          found_.settled[fileName] = {mark, inStep};
        }
        return;  // the book keeps it in its own way
      }
      if (!mark && !(card->person && hasAllOf(member, *card->person, group_.checked))) {
        found_.toImport.insert(fileName);
        return;
      }
      expected = card->text;
    }
    log_.warning("Writing vcard file for {} as {}", fullnameOrOrganization(member), fileName);
    found_.marks[fileName] = {digest, cardDigest(member.vCardData), false, isNew, false};
    found_.changes.push_back({fileName, expected, member.vCardData});
  }

  const ComparedGroup& group_;
  const MirroredCards& cards_;
  const AddressMemory& memory_;
  Log& log_;
  GroupDifference found_;
  std::set<std::string> ids_;
  std::set<std::string> fileNames_;                                   ///< that members go by
  std::optional<std::multimap<std::string, std::string>> claimable_;  ///< digest → file name
};

}  // namespace

bool isCardName(std::string_view name) {
  return name.ends_with(CardExtension) && !name.starts_with('.') &&
         name.find('/') == std::string_view::npos;
}

std::string cardDigest(std::string_view text) {
  QMDigest digest(QMDigest::Algorithm::MD5);
  digest.update(text);
  std::string hexadecimal;
  for (const char byte : digest.finish()) {
    hexadecimal += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  }
  return hexadecimal;
}

GroupDifference compareGroup(const ComparedGroup& group, const MirroredCards& cards,
                             const AddressMemory& memory, Log& log) {
  return Comparison(group, cards, memory, log).compare();
}

}  // namespace zolvar
