#pragma once

#include <QCoreApplication>
#include <QString>
#include <QTranslator>
#include <cstdint>
#include <string>

namespace zolvar {

/// Gives the texts of the window in the user's language: `Zolvar::tr("Missing")`, with plural forms
/// `Zolvar::tr("%n file(s)", nullptr, count)`. The English text is the key. Main thread.
struct Zolvar {
  Q_DECLARE_TR_FUNCTIONS(Zolvar)
};

/// English plurals where no translation is installed: "%n file(s)" becomes "1 file" or "2 files".
/// Installed before every other translator, so that these are asked first. Main thread.
class EnglishPlurals : public QTranslator {
 public:
  using QTranslator::QTranslator;
  [[nodiscard]] QString translate(const char* context, const char* source,
                                  const char* disambiguation, int count) const override;
  [[nodiscard]] bool isEmpty() const override { return false; }
};

/// A text of the engine in the user's language, with the names that it has in it; as it is where
/// the table has none.
QString said(const std::string& text);

[[nodiscard]] inline QString toQt(const std::string& text) { return QString::fromStdString(text); }

/// A name or a number that keeps its own direction among other words.
QString isolated(const QString& text);
/// "12.3 MB", by the locale.
QString bytesText(std::uint64_t bytes);
/// Date and time, short, by the locale; `seconds` since 1970.
QString dateText(double seconds);
/// How long ago in words: "just now", "5 minutes ago", "yesterday", then the date.
QString agoText(double seconds, double now);
/// How long something will take in words: "about 5 minutes left".
QString remainingText(double seconds);
/// A user id without the network's own suffix, isolated from the text around it so that it keeps
/// its direction.
QString personText(const std::string& userId);

}  // namespace zolvar
