// Cards, which come from peers: a text of any bytes, behind a first byte that chooses what is
// changed in its cards. Whatever is read, changes do what they say and touch nothing else.

#include <algorithm>
#include <vector>

#include "addressbook/PersonProperties.h"
#include "addressbook/PlainCard.h"
#include "addressbook/VCardEditor.h"
#include "addressbook/VCardPerson.h"
#include "fuzz/Fuzz.h"
#include "util/PathRules.h"

namespace zolvar::fuzz {
namespace {

ABChanges changesFor(std::uint8_t choice) {
  ABChanges changes;
  if (choice & 1U) changes[ABProperty::LastName] = "Le;e, \\ \u00E9";
  if (choice & 2U) changes[ABProperty::Note] = "one\ntwo " + std::string(100, '\xC3');
  if (choice & 4U) changes[ABProperty::Birthday] = dateOfText("1980-02-03");
  if (choice & 8U) changes[ABProperty::Image] = std::string("GIF8\0\xFF", 6);
  if (choice & 16U) {
    changes[ABProperty::Phones] =
        ABMultiValue{{"1", ABLabel::PhoneWorkFax, "", true}, {"2", "my boat", "", false}};
  }
  if (choice & 32U) changes[ABProperty::JobTitle] = std::nullopt;
  if (choice & 64U) changes[ABProperty::Emails] = std::nullopt;
  if (choice & 128U) changes[ABProperty::Organization] = "Acme";
  return changes;
}

std::vector<std::string> unknownLines(std::string_view card) {
  std::vector<std::string> found;
  for (const auto& line : linesOfCard(card)) {
    if (line.name.starts_with("X-UNKNOWN")) {
      found.emplace_back(card.substr(line.begin, line.end - line.begin));
    }
  }
  return found;
}

void check(std::string_view card, std::uint8_t choice) {
  std::size_t position = 0;
  // Characters that mean nothing, and what goes on from an empty line.
  bool leavesOut = card.find("\n\n") != card.npos || card.find("\n\r") != card.npos;
  for (const auto& line : linesOfCard(card)) {
    leavesOut = leavesOut || (line.isBase64 && line.value.find_first_of(" \t") != line.value.npos);
    expect(line.begin >= position && line.begin < line.end && line.end <= card.size(),
           "lines follow each other");
    position = line.end;
    expect(isValidUtf8(line.value), "values are UTF-8");
  }
  const ABPerson before = personOfCard(card);
  for (const auto& [property, value] : before.values) {
    if (const auto* text = std::get_if<std::string>(&value))
      expect(!text->empty(), "no empty value");
  }
  const std::string plain = plainCard(card);
  const ABPerson plainly = personOfCard(plain);
  std::vector<std::string> properties;
  for (const auto* values : {&before.values, &plainly.values}) {
    for (const auto& [property, value] : *values) properties.push_back(property);
  }
  for (std::size_t at = 0; at < card.size(); ++at) {
    leavesOut =
        leavesOut || card[at] == '\0' || (card[at] == '\r' && card.substr(at + 1, 1) != "\n");
  }
  expect(leavesOut ||
             (hasAllOf(before, plainly, properties) && hasAllOf(plainly, before, properties) &&
              hasEqualProperties(before, plainly, {ABProperty::FirstName, ABProperty::LastName}) &&
              plainly.uniqueId == before.uniqueId && cardsIn(plain).size() == 1),
         "in plain words it says the same");
  ABChanges same(before.values.begin(), before.values.end());
  same.erase(ABProperty::Image);  // written anew in any case
  expect(cardWithChanges(card, same) == card, "what is the same changes nothing");

  const ABChanges changes = changesFor(choice);
  const std::string changed = cardWithChanges(card, changes);
  expect(cardsIn(changed).size() == 1, "a card stays one card");
  expect(unknownLines(changed) == unknownLines(card), "unknown lines stay as they are");
  const std::string twice = cardWithChanges(changed, changes);
  expect(hasEqualProperties(personOfCard(twice), personOfCard(changed),
                            {ABProperty::LastName, ABProperty::Phones, ABProperty::Birthday}),
         "a change made twice is one");
  const std::string in = cardInCategory(changed, "a,b;\u00E9");
  const auto categories = categoriesOfCard(in);
  expect(std::count(categories.begin(), categories.end(), "a,b;\u00E9") == 1, "in its group");
  const auto left = categoriesOfCard(cardNotInCategory(in, "a,b;\u00E9"));
  expect(std::count(left.begin(), left.end(), "a,b;\u00E9") == 0, "and out of it");
  expect(categoriesOfCard(cardInNoCategory(in)).empty(), "in no group");
}

}  // namespace
}  // namespace zolvar::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zolvar;
  using namespace zolvar::fuzz;
  if (size == 0) return -1;
  const std::string_view text = textOf(data + 1, size - 1);
  (void)personOfCard(text);
  for (const auto card : cardsIn(text)) check(card, data[0]);
  return 0;
}
