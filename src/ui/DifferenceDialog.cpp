#include "ui/DifferenceDialog.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>
#include <QVBoxLayout>

#include "ui/Icons.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr std::size_t ContextLines = 4;

QColor ground(DifferenceLine::Side side, bool dark) {
  if (side == DifferenceLine::Side::Left)
    return dark ? QColor(0x55, 0x28, 0x2a) : QColor(0xfd, 0xe3, 0xe1);
  return dark ? QColor(0x1f, 0x47, 0x2b) : QColor(0xdd, 0xf4, 0xe0);
}

void fill(QPlainTextEdit& text, const std::vector<DifferenceLine>& lines) {
  using Side = DifferenceLine::Side;
  const bool dark = isDark(text.palette());
  QTextCursor cursor(text.document());
  cursor.beginEditBlock();
  bool isFirst = true;
  for (const auto& line : lines) {
    QTextBlockFormat format;
    if (line.side != Side::Both) format.setBackground(ground(line.side, dark));
    if (isFirst) {
      cursor.setBlockFormat(format);
    } else {
      cursor.insertBlock(format);
    }
    isFirst = false;
    const QString mark = line.side == Side::Left ? "− " : line.side == Side::Right ? "+ " : "  ";
    cursor.insertText(mark + toQt(line.text));
  }
  cursor.endEditBlock();
}

/// A label with a patch of the colour that its lines have.
QString legend(const QString& mark, const QString& words, DifferenceLine::Side side, bool dark) {
  return QString("<span style='background-color:%1'>&nbsp;%2&nbsp;</span> %3")
      .arg(ground(side, dark).name(), mark, words.toHtmlEscaped());
}

}  // namespace

DifferenceDialog::DifferenceDialog(const QString& file, const QString& left, const QString& right,
                                   const std::vector<DifferenceLine>& lines, QWidget* parent)
    : QDialog(parent) {
  using Side = DifferenceLine::Side;
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle(Zolvar::tr("Differences in %1").arg(file));
  resize(760, 520);
  const bool dark = isDark(palette());
  auto* sides = new QLabel(
      legend("−", left, Side::Left, dark) + "<br>" + legend("+", right, Side::Right, dark), this);
  sides->setTextFormat(Qt::RichText);
  auto* text = new QPlainTextEdit(this);
  text->setReadOnly(true);
  text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  text->setLineWrapMode(QPlainTextEdit::NoWrap);
  text->setLayoutDirection(Qt::LeftToRight);
  text->setAccessibleName(windowTitle());
  fill(*text, withoutFarLines(lines, ContextLines));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  auto* open = buttons->addButton(Zolvar::tr("&Open Both"), QDialogButtonBox::ActionRole);
  connect(open, &QPushButton::clicked, this, &DifferenceDialog::openBothWanted);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(sides);
  layout->addWidget(text, 1);
  layout->addWidget(buttons);
}

}  // namespace zolvar
