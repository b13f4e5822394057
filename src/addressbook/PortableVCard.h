#pragma once

#include <optional>
#include <string>

#include "addressbook/AddressBook.h"

namespace zolvar {

class Log;

// A writer of vCard 3.0 text that needs no address-book program; for people of whom a book has no
// card of its own. Postal addresses, the parts of the name (N) and notes are not written.

/// ";type=WORK" and the like; of an unknown label nothing, and a warning.
std::string vCardLabelString(const std::string& label, Log& log);
/// ";" becomes "\;"; nothing else is escaped.
std::string vCardQuotedString(const std::string& text);
/// Appends a line for the value (of a multi-value one for each entry); without a key a further
/// component of the line before. Nothing for no value and for an empty text.
void appendValueToString(std::string& text, const ABValue* value,
                         const std::optional<std::string>& vCardKey, Log& log);
std::string vCardRepresentationPortable(const ABPerson& person, const AddressBook& book, Log& log);

}  // namespace zolvar
