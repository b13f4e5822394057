#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "addressbook/ABPerson.h"

namespace zolvar {

// Changes a card's text and leaves every line that need not change byte for byte. What is written
// anew is in the card's own version and with its own line ends. Any thread; a text that is no card
// comes back as it is.

/// The card with these values. What a line says beside its value (parameters that we do not know)
/// goes with the value. The whole name follows when a part of it changes.
std::string cardWithChanges(std::string_view card, const ABChanges& changes);

/// The card in (or no longer in) the group, and in all its other ones.
std::string cardInCategory(std::string_view card, std::string_view category);
std::string cardNotInCategory(std::string_view card, std::string_view category);
std::string cardInNoCategory(std::string_view card);

std::string cardWithUid(std::string_view card, std::string_view uid);

/// A card 3.0 that says nothing yet.
std::string emptyCard();

}  // namespace zolvar
