#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QPalette>
#include <string>

#include "app/FolderState.h"

namespace zolvar {

/// The desktop's icon of that name, else our own one. Main thread, as all of these.
QIcon icon(const char* themeName, const char* ownName);
/// Our own icon, drawn in the palette's text colour, sharp at every size.
QIcon ownIcon(const QString& name);
QIcon stateIcon(FolderStateKind kind);
/// The program's icon with the state as a badge: for the tray.
QIcon badgedIcon(FolderStateKind kind);

/// A round picture of `size` device-independent pixels: the person's own, cut to a circle, or the
/// first letters on `color`.
QPixmap personPicture(const std::string& userId, const QColor& color, const QImage& own, int size,
                      double pixelRatio);
/// Decodes a picture that a peer sent; null when it is none, or larger than any picture needs to
/// be.
QImage decodedPicture(const std::string& bytes);

/// The colour for "this one is here": green, legible on the palette's base.
QColor hereColor(const QPalette& palette);
/// Text of lesser weight.
QColor faintColor(const QPalette& palette, QPalette::ColorRole text = QPalette::Text,
                  QPalette::ColorRole base = QPalette::Base);
[[nodiscard]] bool isDark(const QPalette& palette);

}  // namespace zolvar
