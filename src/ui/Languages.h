#pragma once

#include <QString>
#include <QTranslator>
#include <memory>
#include <string>
#include <vector>

namespace zolvar {

struct OfferedLanguage {
  std::string code;  ///< as the setting "Language" has it, such as "de"
  QString ownName;   ///< in the language itself
};

/// The languages that the window speaks, English first.
std::vector<OfferedLanguage> offeredLanguages();
/// The one to speak: `setting` when it is offered; else, as for an empty one, the first of
/// `preferred` ("de-AT", "fr", …) that is; else English.
std::string chosenLanguage(const std::string& setting, const std::vector<std::string>& preferred);

/// Makes the program speak a language while this lives: texts, the toolkit's own ones, formats of
/// numbers and dates, and the direction of layouts. Windows that exist already keep theirs. Main
/// thread.
class SpokenLanguage {
 public:
  /// `setting`: the setting "Language"; empty: the system's language and formats.
  explicit SpokenLanguage(const std::string& setting);
  ~SpokenLanguage();
  SpokenLanguage(const SpokenLanguage&) = delete;
  SpokenLanguage& operator=(const SpokenLanguage&) = delete;

  [[nodiscard]] const std::string& code() const { return code_; }

 private:
  void install(std::unique_ptr<QTranslator> translator);

  std::string code_;
  std::vector<std::unique_ptr<QTranslator>> translators_;
};

}  // namespace zolvar
