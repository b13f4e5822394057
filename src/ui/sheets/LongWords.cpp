#include "ui/sheets/LongWords.h"

#include <QLabel>
#include <algorithm>

namespace zolvar {
namespace {

constexpr int LongestWord = 40;  // characters
constexpr QChar ZeroWidthSpace(0x200B);

}  // namespace

QString breakable(const QString& text) {
  QString broken;
  int length = 0;
  for (const QChar character : text) {
    length = character.isSpace() ? 0 : length + 1;
    if (length > LongestWord && !character.isLowSurrogate() && !character.isMark()) {
      broken += ZeroWidthSpace;
      length = 1;
    }
    broken += character;
  }
  return broken;
}

void putWords(QLabel& label, const QString& text) {
  const QString words = breakable(text);
  if (label.layoutDirection() == Qt::LeftToRight) {
    label.setTextFormat(Qt::PlainText);
    label.setText(words);
    return;
  }
  // Plain lines that run from right to left are moved by the blank at their end, and cut off.
  label.setTextFormat(Qt::RichText);
  // A sentence may begin with a name that runs the other way.
  constexpr QChar RightToLeftMark(0x200F);
  const bool isHere = std::any_of(words.begin(), words.end(), [](QChar character) {
    return character.direction() == QChar::DirR || character.direction() == QChar::DirAL;
  });
  label.setText("<div align=\"right\">" + (isHere ? QString(RightToLeftMark) : QString()) +
                words.toHtmlEscaped().replace('\n', "<br>") + "</div>");
}

}  // namespace zolvar
