#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "addressbook/VCardReader.h"

namespace zolvar {

/// The lines of one card and what becomes of each; the new text is put together at the end, and
/// what was neither replaced nor removed is in it byte for byte. Caller synchronises; the text
/// outlives it.
class CardText {
 public:
  enum class Version { V21, V30, V40 };

  explicit CardText(std::string_view text);

  /// Nothing can be changed otherwise.
  [[nodiscard]] bool isCard() const {
    return lines_.size() >= 2 && lines_.front().name == "BEGIN" && lines_.back().name == "END";
  }
  [[nodiscard]] const std::vector<VCardLine>& lines() const { return lines_; }
  [[nodiscard]] Version version() const { return version_; }
  /// The first line of that name which is to stay; null when there is none.
  [[nodiscard]] const VCardLine* first(std::string_view name) const;
  /// Where the card's last line begins.
  [[nodiscard]] std::size_t end() const { return lines_.back().begin; }
  /// Text as a value of this version.
  [[nodiscard]] std::string escaped(std::string_view text) const;
  /// A name for lines that belong together which no line has yet.
  [[nodiscard]] std::string newGroup();

  void remove(const VCardLine& line) { removed_.insert(line.begin); }
  void removeAll(std::string_view name);
  /// A new line before the one that begins at `place`; `value` is escaped already. Written as the
  /// card's version wants it: folded, or with a transfer encoding.
  void insert(std::size_t place, const std::string& name, std::string_view parameters,
              std::string_view value) {
    insertedAt(place) += encoded(name, parameters, value);
  }
  /// A new line instead of the old one and in its group; at the end where there is none.
  void replace(const VCardLine* old, const std::string& name, std::string_view parameters,
               std::string_view value);
  /// Keeps the line as it stands, but before the one that begins at `place`.
  void move(const VCardLine& line, std::size_t place);

  [[nodiscard]] std::string written() const;

 private:
  std::string& insertedAt(std::size_t place);
  [[nodiscard]] std::string encoded(const std::string& name, std::string_view parameters,
                                    std::string_view value) const;
  [[nodiscard]] std::string folded(std::string_view line) const;

  const std::string_view text_;
  const std::vector<VCardLine> lines_;
  Version version_ = Version::V30;
  std::string lineEnd_;
  std::set<std::size_t> removed_;                ///< by where the line begins
  std::map<std::size_t, std::string> inserted_;  ///< before the line that begins there
  std::set<std::string> newGroups_;
};

}  // namespace zolvar
