#include "ui/VersionTreeView.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QStyle>
#include <QToolTip>
#include <algorithm>

#include "ui/Icons.h"
#include "ui/PersonColors.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr int Margin = 12;  // device-independent pixels, as all of these
constexpr int LaneWidth = 24;
constexpr int NodeRadius = 6;
constexpr int Gap = 10;

}  // namespace

VersionTreeView::VersionTreeView(std::string localUserId, PersonColors& colors, QWidget* parent)
    : QAbstractScrollArea(parent), localUserId_(std::move(localUserId)), colors_(colors) {
  setFocusPolicy(Qt::StrongFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setAccessibleName(Zolvar::tr("Version tree"));
  viewport()->setBackgroundRole(QPalette::Base);
  viewport()->setAutoFillBackground(true);
}

void VersionTreeView::setHistory(FileHistory history) {
  if (history == history_) return;
  const bool isSameFile = history.path == history_.path;
  const auto kept = current() != nullptr ? std::optional(current()->id) : std::nullopt;
  history_ = std::move(history);
  places_ = versionPlaces(history_);
  lanes_ = 0;
  for (const auto& place : places_) lanes_ = std::max(lanes_, place.lane + 1);
  current_ = -1;
  updateScrollBar();
  setCurrent(isSameFile ? kept : std::nullopt);
  if (!isSameFile) verticalScrollBar()->setValue(verticalScrollBar()->maximum());
  viewport()->update();
}

const HistoryVersion* VersionTreeView::current() const {
  return current_ < 0 ? nullptr : &history_.versions[static_cast<std::size_t>(current_)];
}

void VersionTreeView::setCurrent(const std::optional<VersionId>& version) {
  const auto found =
      std::find_if(history_.versions.begin(), history_.versions.end(),
                   [&](const HistoryVersion& each) { return version && each.id == *version; });
  current_ =
      found == history_.versions.end() ? -1 : static_cast<int>(found - history_.versions.begin());
  updateAccessibleText();
  viewport()->update();
}

void VersionTreeView::makeCurrent(int row) {
  if (row < 0 || row >= static_cast<int>(history_.versions.size())) return;
  current_ = row;
  const int top = row * rowHeight() + Margin / 2;
  QScrollBar& bar = *verticalScrollBar();
  const int lowest = top + rowHeight() + Margin - viewport()->height();
  if (bar.value() < lowest) bar.setValue(lowest);
  if (bar.value() > top - Margin) bar.setValue(top - Margin);
  updateAccessibleText();
  viewport()->update();
  Q_EMIT currentChanged(history_.versions[static_cast<std::size_t>(row)].id);
}

void VersionTreeView::updateAccessibleText() {
  const QString text = current() == nullptr ? Zolvar::tr("%n version(s)", nullptr,
                                                         static_cast<int>(history_.versions.size()))
                                            : description(*current());
  if (text == accessibleDescription()) return;
  setAccessibleDescription(text);
  QAccessibleEvent event(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&event);
}

// Words.

QString VersionTreeView::person(const std::string& userId) const {
  return userId == localUserId_ ? Zolvar::tr("You") : personText(userId);
}

QString VersionTreeView::what(const HistoryVersion& version) const {
  const double when = version.isDeletion() ? version.id.logTime : version.modTime;
  if (version.isDeletion()) return Zolvar::tr("deleted it, %1").arg(dateText(when));
  if (version.parent < 0 && history_.omitted == 0) {
    return Zolvar::tr("added it, %1").arg(dateText(when));
  }
  return Zolvar::tr("changed it, %1").arg(dateText(when));
}

QString VersionTreeView::description(const HistoryVersion& version) const {
  QStringList lines{Zolvar::tr("%1 %2").arg(person(version.id.userId), what(version))};
  lines += Zolvar::tr("Logged %1").arg(dateText(version.id.logTime));
  if (version.size) lines += Zolvar::tr("Size %1").arg(bytesText(*version.size));
  if (version.isHere) lines += Zolvar::tr("This one is here.");
  if (!version.selectedBy.empty()) {
    QStringList people;
    for (const auto& userId : version.selectedBy) people += person(userId);
    lines += Zolvar::tr("Chosen by %1").arg(people.join(Zolvar::tr(", ")));
  }
  if (!version.isContinued && !version.isDeletion() && !version.isHere) {
    lines += Zolvar::tr("A current version: it can be used instead of the one here.");
  }
  if (version.isContinued) lines += Zolvar::tr("An earlier version: somebody went on from it.");
  return lines.join('\n');
}

// Geometry.

int VersionTreeView::rowHeight() const { return std::max(fontMetrics().height() + 10, 26); }

QSize VersionTreeView::sizeHint() const { return {400, 7 * rowHeight()}; }

QPointF VersionTreeView::node(int row) const {
  const auto& place = places_[static_cast<std::size_t>(row)];
  double x = Margin + NodeRadius + place.lane * LaneWidth;
  if (isRightToLeft()) x = viewport()->width() - x;
  const double y = Margin / 2.0 + row * rowHeight() + rowHeight() / 2.0;
  return {x, y - verticalScrollBar()->value()};
}

int VersionTreeView::rowAt(const QPoint& position) const {
  const int row = (position.y() + verticalScrollBar()->value() - Margin / 2) / rowHeight();
  return row >= 0 && row < static_cast<int>(history_.versions.size()) ? row : -1;
}

void VersionTreeView::updateScrollBar() {
  const int whole = static_cast<int>(history_.versions.size()) * rowHeight() + Margin;
  verticalScrollBar()->setRange(0, std::max(0, whole - viewport()->height()));
  verticalScrollBar()->setPageStep(viewport()->height());
  verticalScrollBar()->setSingleStep(rowHeight());
}

// Painting.

void VersionTreeView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(viewport());
  painter.setRenderHint(QPainter::Antialiasing);
  if (history_.versions.empty()) return;
  const int first = std::max(0, rowAt({0, 0}));
  const int below = rowAt({0, viewport()->height()});
  const int last = below < 0 ? static_cast<int>(history_.versions.size()) - 1 : below;
  for (int row = first; row <= last; ++row) paintRow(painter, row);
  // Lines may come from far above; they are few.
  for (int row = 0; row < static_cast<int>(history_.versions.size()); ++row) {
    const int parent = history_.versions[static_cast<std::size_t>(row)].parent;
    if (row >= first && parent <= last) paintLine(painter, row);
  }
  for (int row = first; row <= last; ++row) paintNode(painter, row);
}

void VersionTreeView::paintRow(QPainter& painter, int row) const {
  const auto& version = history_.versions[static_cast<std::size_t>(row)];
  const int top = static_cast<int>(node(row).y()) - rowHeight() / 2;
  const QRect whole(0, top, viewport()->width(), rowHeight());
  const bool isCurrent = row == current_;
  const auto group = hasFocus() ? QPalette::Active : QPalette::Inactive;
  if (isCurrent) painter.fillRect(whole, palette().brush(group, QPalette::Highlight));
  const QColor text = isCurrent ? palette().color(group, QPalette::HighlightedText)
                                : palette().color(QPalette::Text);
  const QColor faint = isCurrent ? text : faintColor(palette());

  const int start = Margin + lanes_ * LaneWidth + Gap;
  QRect rest(start, top, viewport()->width() - start - Margin, rowHeight());
  const auto write = [&](const QString& words, const QColor& color, bool isBold) {
    QFont font = this->font();
    font.setBold(isBold);
    painter.setFont(font);
    painter.setPen(color);
    const QString shown = QFontMetrics(font).elidedText(words, Qt::ElideRight, rest.width());
    const int width = QFontMetrics(font).horizontalAdvance(shown);
    const QRect place = QStyle::visualRect(layoutDirection(), viewport()->rect(),
                                           QRect(rest.left(), top, width + 1, rowHeight()));
    painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, shown);
    rest.setLeft(rest.left() + width + Gap);
  };
  write(person(version.id.userId), text, true);
  write(what(version), faint, false);
  if (version.isHere) write(Zolvar::tr("here"), isCurrent ? text : hereColor(palette()), true);
  QStringList others;
  for (const auto& userId : version.selectedBy) {
    if (userId != localUserId_) others += person(userId);
  }
  if (!others.isEmpty()) {
    write(Zolvar::tr("chosen by %1").arg(others.join(Zolvar::tr(", "))), faint, false);
  }
}

void VersionTreeView::paintLine(QPainter& painter, int row) const {
  const auto& version = history_.versions[static_cast<std::size_t>(row)];
  const QPointF to = node(row);
  QPen pen(faintColor(palette()), 2);
  if (version.parent < 0) {
    if (history_.omitted == 0 || row > 0) return;
    pen.setStyle(Qt::DotLine);  // there is more above
    painter.setPen(pen);
    painter.drawLine(QPointF(to.x(), to.y() - rowHeight() / 2.0), to);
    return;
  }
  const QPointF from = node(version.parent);
  pen.setColor(colors_.of(version.id.userId));
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  QPainterPath path(from);
  if (from.x() == to.x()) {
    path.lineTo(to);
  } else {  // leave the parent's lane at once, then run down one's own
    const QPointF turn(to.x(), std::min(from.y() + rowHeight(), to.y()));
    const double middle = (from.y() + turn.y()) / 2;
    path.cubicTo({from.x(), middle}, {turn.x(), middle}, turn);
    path.lineTo(to);
  }
  painter.drawPath(path);
}

void VersionTreeView::paintNode(QPainter& painter, int row) const {
  const auto& version = history_.versions[static_cast<std::size_t>(row)];
  const QPointF center = node(row);
  const QColor color = colors_.of(version.id.userId);
  const QColor ground = palette().color(row == current_ ? QPalette::Highlight : QPalette::Base);
  if (version.isHere) {
    painter.setPen(QPen(hereColor(palette()), 2.5));
    painter.setBrush(ground);
    painter.drawEllipse(center, NodeRadius + 3, NodeRadius + 3);
  }
  // Current versions are filled, earlier ones are rings, deletions are crossed out.
  painter.setPen(QPen(version.isDeletion() ? faintColor(palette()) : color, 2));
  painter.setBrush(version.isCurrent() ? color : ground);
  painter.drawEllipse(center, NodeRadius, NodeRadius);
  if (row == current_ && !version.isHere) {  // the colour may be the selection's
    painter.setPen(QPen(palette().color(QPalette::HighlightedText), 1.2));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(center, NodeRadius + 1.5, NodeRadius + 1.5);
  }
  if (version.isDeletion()) {
    const double arm = NodeRadius * 0.5;
    painter.drawLine(center - QPointF(arm, arm), center + QPointF(arm, arm));
    painter.drawLine(center - QPointF(arm, -arm), center + QPointF(arm, -arm));
  }
}

// Events.

void VersionTreeView::resizeEvent(QResizeEvent* /*event*/) { updateScrollBar(); }

void VersionTreeView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    updateScrollBar();
  }
  viewport()->update();
  QAbstractScrollArea::changeEvent(event);
}

void VersionTreeView::focusInEvent(QFocusEvent* event) {
  if (current_ < 0 && event->reason() != Qt::MouseFocusReason) {
    makeCurrent(static_cast<int>(history_.versions.size()) - 1);
  }
  viewport()->update();
}

void VersionTreeView::focusOutEvent(QFocusEvent* /*event*/) { viewport()->update(); }

void VersionTreeView::keyPressEvent(QKeyEvent* event) {
  const int last = static_cast<int>(history_.versions.size()) - 1;
  const int page = std::max(1, viewport()->height() / rowHeight() - 1);
  switch (event->key()) {
    case Qt::Key_Up:
      return makeCurrent(std::max(0, current_ - 1));
    case Qt::Key_Down:
      return makeCurrent(std::min(last, current_ + 1));
    case Qt::Key_PageUp:
      return makeCurrent(std::max(0, current_ - page));
    case Qt::Key_PageDown:
      return makeCurrent(std::min(last, current_ + page));
    case Qt::Key_Home:
      return makeCurrent(0);
    case Qt::Key_End:
      return makeCurrent(last);
    default:
      QAbstractScrollArea::keyPressEvent(event);
  }
}

void VersionTreeView::mousePressEvent(QMouseEvent* event) {
  makeCurrent(rowAt(event->position().toPoint()));
}

void VersionTreeView::contextMenuEvent(QContextMenuEvent* event) {
  if (event->reason() == QContextMenuEvent::Mouse) makeCurrent(rowAt(event->pos()));
  if (current_ < 0) return;
  const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
  Q_EMIT menuWanted(isByKey ? viewport()->mapToGlobal(node(current_).toPoint())
                            : event->globalPos());
}

bool VersionTreeView::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QAbstractScrollArea::viewportEvent(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const int row = rowAt(help->pos());
  if (row < 0) {
    QToolTip::hideText();
  } else {
    QToolTip::showText(help->globalPos(),
                       description(history_.versions[static_cast<std::size_t>(row)]), viewport());
  }
  return true;
}

}  // namespace zolvar
