#include "ui/sheets/LongWords.h"

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

}  // namespace zolvar
