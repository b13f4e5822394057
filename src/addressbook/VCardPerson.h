#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "addressbook/ABPerson.h"
#include "addressbook/VCardReader.h"

namespace zolvar {

// What the lines of a card mean for a person. Any thread.

/// The person of a card: values and UID. The card's text goes along whole.
ABPerson personOfCard(std::string_view card);

/// Whether the card is of a person or an organisation, not of a group or a list of addresses.
bool isPersonsCard(const std::vector<VCardLine>& lines);

/// The groups that a card says it is in (CATEGORIES), each once, in order.
std::vector<std::string> categoriesOfCard(std::string_view card);

/// Which of the properties with several entries the line is an entry of (ABProperty::Phones and so
/// on); null for all other lines.
const char* multiPropertyOfLine(const VCardLine& line);
/// The entry that such a line holds; nothing when it is empty. `lines` are the whole card's: a
/// label can stand in another line.
std::optional<ABMultiValueEntry> entryOfLine(const VCardLine& line,
                                             const std::vector<VCardLine>& lines);

/// "1980-02-03", "19800203" and the same with a time; nothing when it is no whole date.
std::optional<ABDate> dateOfText(std::string_view text);
/// The opposite, the time only when there is one.
std::string textOfDate(ABDate date);

/// The names of the TYPE parameters that stand for a label on an entry of the property: "HOME" and
/// "FAX" for ABLabel::PhoneHomeFax. Empty when the label has none.
std::vector<std::string> typesOfLabel(std::string_view property, std::string_view label);

}  // namespace zolvar
