#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zolvar {

/// A text being typed and what is selected in it. Positions and lengths are in bytes of UTF-8.
struct TypedText {
  std::string text;
  std::size_t selectionStart = 0;
  std::size_t selectionLength = 0;

  bool operator==(const TypedText&) const = default;
};

/// Removes characters that a field must not hold while a person types; carriage return and line
/// feed unless a subclass says otherwise. Values are their own strings. Immutable.
class QMCharFilterFormatter {
 public:
  struct Verdict {
    bool isValid = true;                 ///< the proposed text can stand as it is
    std::optional<TypedText> corrected;  ///< else put this in its place; none: refuse the edit
  };

  virtual ~QMCharFilterFormatter() = default;
  /// The selection moves back by the length of what is removed before it.
  [[nodiscard]] virtual Verdict check(const TypedText& proposed) const;

 protected:
  [[nodiscard]] virtual bool isInvalid(char32_t character) const;
};

}  // namespace zolvar
