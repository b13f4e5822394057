#pragma once

#include <QString>

class QLabel;

namespace zolvar {

/// The text with invisible places to break lines in words, such as paths, that are too long for a
/// line; labels break lines at spaces only, and would grow as wide as the longest word.
QString breakable(const QString& text);
/// Shows the text in a label that wraps its lines, with names and markup as they are.
void putWords(QLabel& label, const QString& text);

}  // namespace zolvar
