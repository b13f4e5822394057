#include "ui/Texts.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QLocale>
#include <cmath>

#include "util/PathRules.h"

namespace zolvar {

QString EnglishPlurals::translate(const char* /*context*/, const char* source,
                                  const char* /*disambiguation*/, int count) const {
  const QString text = QString::fromUtf8(source);
  if (count < 0 || !text.contains("(s)")) return {};
  return QString(text).replace("(s)", count == 1 ? "" : "s");
}

QString isolated(const QString& text) {
  constexpr QChar FirstStrongIsolate(0x2068);
  constexpr QChar PopIsolate(0x2069);
  return FirstStrongIsolate + text + PopIsolate;
}

QString bytesText(std::uint64_t bytes) {
  const QString text = QLocale().formattedDataSize(static_cast<qint64>(bytes), 1,
                                                   QLocale::DataSizeTraditionalFormat);
  // Keeps "2.0 kB" together in words that run the other way.
  return QGuiApplication::isRightToLeft() ? isolated(text) : text;
}

QString dateText(double seconds) {
  const auto when = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(seconds));
  return QLocale().toString(when, QLocale::ShortFormat);
}

QString agoText(double seconds, double now) {
  constexpr double Minute = 60;
  constexpr double Hour = 3600;
  const double age = now - seconds;
  if (age < Minute) return Zolvar::tr("just now");
  if (age < Hour) return Zolvar::tr("%n minute(s) ago", nullptr, static_cast<int>(age / Minute));
  const auto when = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(seconds));
  const auto today = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(now)).date();
  const auto days = when.date().daysTo(today);
  if (days == 0) return Zolvar::tr("%n hour(s) ago", nullptr, static_cast<int>(age / Hour));
  const QString time = QLocale().toString(when.time(), QLocale::ShortFormat);
  if (days == 1) return Zolvar::tr("yesterday, %1").arg(time);
  return dateText(seconds);
}

QString remainingText(double seconds) {
  constexpr double Minute = 60;
  constexpr double Hour = 3600;
  if (seconds < Minute) return Zolvar::tr("less than a minute left");
  if (seconds < 1.5 * Hour) {
    return Zolvar::tr("about %n minute(s) left", nullptr,
                      static_cast<int>(std::lround(seconds / Minute)));
  }
  return Zolvar::tr("about %n hour(s) left", nullptr,
                    static_cast<int>(std::lround(seconds / Hour)));
}

QString personText(const std::string& userId) {
  return isolated(QString::fromStdString(std::string(withoutLocalSuffix(userId))));
}

}  // namespace zolvar
