#pragma once

#include <QString>
#include <string>
#include <vector>

namespace zolvar {

/// A sentence of the engine as its source has it, with fields: "Got {} in '{}':". Finds out whether
/// a finished text was made from it and with what, and fills a translation in the same way, where
/// fields may be numbered to change their order. Immutable.
class EngineSentence {
 public:
  explicit EngineSentence(const char* key);

  [[nodiscard]] const char* key() const { return key_; }
  /// Characters outside the fields: of two sentences that fit, the one with more is meant.
  [[nodiscard]] qsizetype weight() const { return weight_; }
  /// The fields' values by number, decimal numbers as the language writes them; empty when `text`
  /// was not made from this, or it has no field.
  [[nodiscard]] std::vector<QString> fieldsOf(const QString& text) const;
  /// `translation` with its fields filled.
  [[nodiscard]] static QString filled(const QString& translation,
                                      const std::vector<QString>& fields);

 private:
  struct Piece {
    QString words;           ///< before the field
    int field = -1;          ///< -1: the end
    bool isDecimal = false;  ///< the field has a format, as only decimal numbers have
  };
  [[nodiscard]] static std::vector<Piece> piecesOf(const QString& text);

  const char* key_;
  std::vector<Piece> pieces_;
  qsizetype weight_ = 0;
};

/// All that the engine says, the weightiest first.
const std::vector<EngineSentence>& engineSentences();

}  // namespace zolvar
