#pragma once

#include <QString>

namespace zolvar {

/// The text with invisible places to break lines in words, such as paths, that are too long for a
/// line; labels break lines at spaces only, and would grow as wide as the longest word.
QString breakable(const QString& text);

}  // namespace zolvar
