#include "ui/Icons.h"

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QPixmapCache>
#include <QRegularExpression>
#include <algorithm>

namespace zolvar {
namespace {

constexpr int MostPictureSide = 4096;  // pixels

QImage drawn(const QString& name, const QSize& size, const QColor& color) {
  QFile file(":/icons/" + name + ".svg");
  if (!file.open(QIODevice::ReadOnly)) return {};
  QByteArray text = file.readAll();
  text.replace("currentColor", color.name().toLatin1());
  QBuffer buffer(&text);
  QImageReader reader(&buffer, "svg");
  reader.setScaledSize(size);
  return reader.read();
}

/// Draws an SVG of ours at whatever size is asked for, in the palette's colour of the moment.
class PaletteIconEngine : public QIconEngine {
 public:
  explicit PaletteIconEngine(QString name) : name_(std::move(name)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const double ratio = painter->device()->devicePixelRatioF();
    painter->drawPixmap(rect, scaledPixmap(rect.size() * ratio, mode, state, 1));
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return scaledPixmap(size, mode, state, 1);
  }
  QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/,
                       qreal /*scale*/) override {
    const QPalette palette = QGuiApplication::palette();
    const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::ButtonText;
    const QColor color = palette.color(group, role);
    const int side = std::min(size.width(), size.height());
    const QString key = QString("zolvar/%1/%2/%3").arg(name_).arg(side).arg(color.rgba());
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
      pixmap = QPixmap::fromImage(drawn(name_, {side, side}, color));
      QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
  }
  QIconEngine* clone() const override { return new PaletteIconEngine(name_); }
  bool isNull() override { return !QFile::exists(":/icons/" + name_ + ".svg"); }

 private:
  QString name_;
};

QString stateName(FolderStateKind kind) {
  using enum FolderStateKind;
  switch (kind) {
    case NotSubscribed:
      return "state-off";
    case Paused:
      return "state-paused";
    case WaitingForDrive:
    case WaitingForPassword:
    case WaitingForClock:
    case Missing:
      return "state-problem";
    case QuestionOpen:
      return "state-question";
    case Conflict:
      return "state-conflict";
    case Fetching:
    case Checking:
      return "state-syncing";
    case Alone:
      return "state-alone";
    case InStep:
      return "state-instep";
  }
  return {};
}

QString initials(const std::string& userId) {
  const QString name = QString::fromStdString(userId.substr(0, userId.find('@')));
  QString letters;
  for (const QString& part : name.split(QRegularExpression("[ ._-]+"), Qt::SkipEmptyParts)) {
    if (letters.size() < 2) letters += part.at(0).toUpper();
  }
  return letters;
}

}  // namespace

QIcon icon(const char* themeName, const char* ownName) {
  return QIcon::fromTheme(themeName, ownIcon(ownName));
}

QIcon ownIcon(const QString& name) { return QIcon(new PaletteIconEngine(name)); }

QIcon stateIcon(FolderStateKind kind) { return ownIcon(stateName(kind)); }

QIcon badgedIcon(FolderStateKind kind) {
  QIcon result;
  for (const int side : {16, 22, 24, 32, 48, 64}) {
    QPixmap pixmap = QPixmap::fromImage(drawn("zolvar", {side, side}, Qt::black));
    QPainter painter(&pixmap);
    const int badge = side * 9 / 16;
    painter.drawImage(side - badge, side - badge,
                      drawn(stateName(kind), {badge, badge}, Qt::black));
    painter.end();
    result.addPixmap(pixmap);
  }
  return result;
}

QPixmap personPicture(const std::string& userId, const QColor& color, const QImage& own, int size,
                      double pixelRatio) {
  const int side = static_cast<int>(size * pixelRatio);
  QPixmap pixmap(side, side);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  QPainterPath circle;
  circle.addEllipse(0, 0, side, side);
  if (own.isNull()) {
    constexpr int SmallestForLetters = 20;
    painter.fillPath(circle, color);
    if (size < SmallestForLetters) {
      // Stays visible on a selection of about its colour.
      const double rim = pixelRatio;
      painter.setPen(QPen(QColor(255, 255, 255, 200), rim));
      painter.drawEllipse(QRectF(rim / 2, rim / 2, side - rim, side - rim));
      painter.end();
      pixmap.setDevicePixelRatio(pixelRatio);
      return pixmap;
    }
    QFont font = painter.font();
    font.setPixelSize(side * 2 / 5);
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRect(0, 0, side, side), Qt::AlignCenter, initials(userId));
  } else {
    painter.setClipPath(circle);
    const QImage scaled =
        own.scaled(side, side, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    painter.drawImage((side - scaled.width()) / 2, (side - scaled.height()) / 2, scaled);
  }
  painter.end();
  pixmap.setDevicePixelRatio(pixelRatio);
  return pixmap;
}

QImage decodedPicture(const std::string& bytes) {
  constexpr int WantedSide = 128;
  QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer buffer(&data);
  QImageReader reader(&buffer);
  const QSize size = reader.size();
  if (!size.isValid() || std::max(size.width(), size.height()) > MostPictureSide) return {};
  reader.setScaledSize(size.scaled(WantedSide, WantedSide, Qt::KeepAspectRatioByExpanding));
  return reader.read();
}

bool isDark(const QPalette& palette) { return palette.color(QPalette::Base).lightness() < 128; }

QColor hereColor(const QPalette& palette) {
  return isDark(palette) ? QColor(0x6f, 0xd0, 0x8c) : QColor(0x1b, 0x7a, 0x3a);
}

QColor faintColor(const QPalette& palette, QPalette::ColorRole text, QPalette::ColorRole base) {
  constexpr double Weight = 0.62;
  const QColor above = palette.color(text);
  const QColor below = palette.color(base);
  const auto mix = [](int upper, int lower) {
    return static_cast<int>(upper * Weight + lower * (1 - Weight));
  };
  return {mix(above.red(), below.red()), mix(above.green(), below.green()),
          mix(above.blue(), below.blue())};
}

}  // namespace zolvar
