#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zolvar {

/// A day or an instant, seconds since 1970 UTC; a birthday without a time is midnight UTC.
using ABDate = std::chrono::sys_seconds;

/// One of several telephone numbers, addresses and so on.
struct ABMultiValueEntry {
  std::string value;
  std::string label;       ///< one of ABLabel, or whatever else the card says; may be empty
  std::string identifier;  ///< tells entries of one person apart; may be empty
  bool isPrimary = false;
};
using ABMultiValue = std::vector<ABMultiValueEntry>;

/// What a property holds. Never empty: a person who has no value for a property lacks its key.
using ABValue = std::variant<std::string, ABDate, ABMultiValue>;

/// The names of the properties that a person can have.
namespace ABProperty {
inline constexpr const char* UniqueId = "UID";
inline constexpr const char* FirstName = "First";
inline constexpr const char* LastName = "Last";
inline constexpr const char* MiddleName = "Middle";
inline constexpr const char* Title = "Title";  ///< honorific prefix: Dr
inline constexpr const char* Suffix = "Suffix";
inline constexpr const char* Nickname = "Nickname";
inline constexpr const char* MaidenName = "MaidenName";
inline constexpr const char* Organization = "Organization";
inline constexpr const char* Department = "Department";
inline constexpr const char* JobTitle = "JobTitle";
inline constexpr const char* Birthday = "Birthday";  ///< ABDate; text when the year is not known
inline constexpr const char* Phones = "Phone";       ///< ABMultiValue
inline constexpr const char* Emails = "Email";       ///< ABMultiValue
inline constexpr const char* Addresses = "Address";  ///< ABMultiValue: the seven parts of a card's
                                                     ///< ADR, ";" between them and "\;" in them
inline constexpr const char* AIMNames = "AIMInstant";        ///< ABMultiValue
inline constexpr const char* JabberNames = "JabberInstant";  ///< ABMultiValue
inline constexpr const char* URLs = "URLs";                  ///< ABMultiValue
inline constexpr const char* HomePage = "HomePage";  ///< only from stores that tell it from URLs
inline constexpr const char* Note = "Note";
inline constexpr const char* Image = "Image";  ///< the picture's bytes, as the file they came from
inline constexpr const char* Modification = "Modification";  ///< ABDate
inline constexpr const char* Creation = "Creation";          ///< ABDate
}  // namespace ABProperty

/// The labels that mean something; of cards, TYPE=WORK on a TEL is PhoneWork, on an ADR
/// AddressWork.
namespace ABLabel {
inline constexpr const char* Work = "work";
inline constexpr const char* Home = "home";
inline constexpr const char* AddressHome = "address home";
inline constexpr const char* AddressWork = "address work";
inline constexpr const char* PhoneWork = "phone work";
inline constexpr const char* PhoneHome = "phone home";
inline constexpr const char* PhoneHomeFax = "phone home fax";
inline constexpr const char* PhoneWorkFax = "phone work fax";
inline constexpr const char* PhoneMobile = "phone mobile";
inline constexpr const char* PhoneMain = "phone main";
inline constexpr const char* PhonePager = "phone pager";
inline constexpr const char* EmailHome = "e-mail home";
inline constexpr const char* EmailWork = "e-mail work";
inline constexpr const char* AIMHome = "AIM home";
inline constexpr const char* AIMWork = "AIM work";
inline constexpr const char* JabberHome = "Jabber home";
inline constexpr const char* JabberWork = "Jabber work";
inline constexpr const char* HomePage = "home page";
}  // namespace ABLabel

/// A person as an address book or a card tells of them, at the moment of reading: a value.
struct ABPerson {
  std::string uniqueId;                   ///< within its book; of a card alone its UID, or empty
  std::map<std::string, ABValue> values;  ///< by ABProperty; the unique id is not among them
  /// The whole card as text, vCard 3.0 or as it came, with what we do not know. Pictures are in it,
  /// not beside it.
  std::string vCardData;

  /// The property's value; null when there is none.
  [[nodiscard]] const ABValue* value(const std::string& property) const {
    const auto found = values.find(property);
    return found == values.end() ? nullptr : &found->second;
  }
};

/// New values by property; nothing means that the value is removed.
using ABChanges = std::map<std::string, std::optional<ABValue>>;

}  // namespace zolvar
