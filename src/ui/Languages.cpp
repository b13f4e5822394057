#include "ui/Languages.h"

#include <QGuiApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <algorithm>

#include "ui/Texts.h"

namespace zolvar {

std::vector<OfferedLanguage> offeredLanguages() {
  return {{"en", "English"}, {"de", "Deutsch"}, {"he", "עברית"}};
}

std::string chosenLanguage(const std::string& setting, const std::vector<std::string>& preferred) {
  const auto offered = offeredLanguages();
  const auto isOffered = [&](const std::string& code) {
    return std::any_of(offered.begin(), offered.end(),
                       [&](const auto& language) { return language.code == code; });
  };
  if (isOffered(setting)) return setting;
  for (const auto& language : preferred) {
    const std::string code = language.substr(0, language.find_first_of("-_"));
    if (isOffered(code)) return code;
  }
  return "en";
}

SpokenLanguage::SpokenLanguage(const std::string& setting) {
  std::vector<std::string> preferred;
  for (const QString& language : QLocale::system().uiLanguages()) {
    preferred.push_back(language.toStdString());
  }
  code_ = chosenLanguage(setting, preferred);
  // Whoever chose a language gets its formats as well; otherwise the system's formats stand.
  if (setting == code_) QLocale::setDefault(QLocale(toQt(code_)));
  install(std::make_unique<EnglishPlurals>());
  for (const char* place : {":/translations/zolvar_", ""}) {
    auto translator = std::make_unique<QTranslator>();
    const bool isToolkits = *place == '\0';
    const bool isLoaded = isToolkits
                              ? translator->load("qtbase_" + toQt(code_),
                                                 QLibraryInfo::path(QLibraryInfo::TranslationsPath))
                              : translator->load(place + toQt(code_));
    if (isLoaded) install(std::move(translator));
  }
  QGuiApplication::setLayoutDirection(QLocale(toQt(code_)).textDirection());
}

SpokenLanguage::~SpokenLanguage() {
  QLocale::setDefault(QLocale::system());
  QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}

void SpokenLanguage::install(std::unique_ptr<QTranslator> translator) {
  QCoreApplication::installTranslator(translator.get());
  translators_.push_back(std::move(translator));
}

}  // namespace zolvar
