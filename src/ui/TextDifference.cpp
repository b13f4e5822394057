#include "ui/TextDifference.h"

#include <QStringDecoder>
#include <algorithm>

namespace zolvar {
namespace {

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.push_back(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

}  // namespace

bool isText(std::string_view bytes) {
  const bool isPlain = std::none_of(bytes.begin(), bytes.end(), [](char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 && character != '\n' && character != '\r' && character != '\t' &&
           character != '\f';
  });
  if (!isPlain) return false;
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString decoded =
      decoder(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
  return !decoder.hasError();
}

std::optional<std::vector<DifferenceLine>> textDifference(std::string_view left,
                                                          std::string_view right,
                                                          std::size_t most) {
  using Side = DifferenceLine::Side;
  const auto from = linesOf(left);
  const auto to = linesOf(right);
  const auto fromCount = static_cast<std::ptrdiff_t>(from.size());
  const auto toCount = static_cast<std::ptrdiff_t>(to.size());
  const auto limit = std::min(fromCount + toCount, static_cast<std::ptrdiff_t>(most));
  // How far one gets in `from` with so many differences on each diagonal, kept for the way back.
  std::vector<std::vector<std::ptrdiff_t>> reached;
  std::vector<std::ptrdiff_t> best(static_cast<std::size_t>(2 * limit + 3), 0);
  const auto at = [&](std::vector<std::ptrdiff_t> & row, std::ptrdiff_t diagonal) -> auto& {
    return row[static_cast<std::size_t>(diagonal + limit + 1)];
  };
  std::ptrdiff_t found = -1;
  for (std::ptrdiff_t count = 0; count <= limit && found < 0; ++count) {
    reached.push_back(best);
    for (std::ptrdiff_t diagonal = -count; diagonal <= count; diagonal += 2) {
      const bool isDown = diagonal == -count ||
                          (diagonal != count && at(best, diagonal - 1) < at(best, diagonal + 1));
      std::ptrdiff_t x = isDown ? at(best, diagonal + 1) : at(best, diagonal - 1) + 1;
      std::ptrdiff_t y = x - diagonal;
      while (x < fromCount && y < toCount &&
             from[static_cast<std::size_t>(x)] == to[static_cast<std::size_t>(y)]) {
        ++x, ++y;
      }
      at(best, diagonal) = x;
      if (x >= fromCount && y >= toCount) {
        found = count;
        break;
      }
    }
  }
  if (found < 0) return std::nullopt;
  std::vector<DifferenceLine> lines;
  std::ptrdiff_t x = fromCount;
  std::ptrdiff_t y = toCount;
  const auto takeCommon = [&](std::ptrdiff_t toX, std::ptrdiff_t toY) {
    while (x > toX && y > toY) {
      --x, --y;
      lines.push_back({Side::Both, std::string(from[static_cast<std::size_t>(x)])});
    }
  };
  for (std::ptrdiff_t count = found; count > 0; --count) {
    auto& before = reached[static_cast<std::size_t>(count)];
    const std::ptrdiff_t diagonal = x - y;
    const bool isDown = diagonal == -count ||
                        (diagonal != count && at(before, diagonal - 1) < at(before, diagonal + 1));
    const std::ptrdiff_t startX = at(before, isDown ? diagonal + 1 : diagonal - 1);
    const std::ptrdiff_t startY = startX - (isDown ? diagonal + 1 : diagonal - 1);
    takeCommon(isDown ? startX : startX + 1, isDown ? startY + 1 : startY);
    if (isDown) {
      lines.push_back({Side::Right, std::string(to[static_cast<std::size_t>(--y)])});
    } else {
      lines.push_back({Side::Left, std::string(from[static_cast<std::size_t>(--x)])});
    }
  }
  takeCommon(0, 0);
  std::reverse(lines.begin(), lines.end());
  return lines;
}

std::vector<DifferenceLine> withoutFarLines(const std::vector<DifferenceLine>& lines,
                                            std::size_t context) {
  std::vector<bool> isNear(lines.size(), false);
  for (std::size_t each = 0; each < lines.size(); ++each) {
    if (lines[each].side == DifferenceLine::Side::Both) continue;
    const std::size_t first = each < context ? 0 : each - context;
    const std::size_t end = std::min(each + context + 1, lines.size());
    for (std::size_t near = first; near < end; ++near) isNear[near] = true;
  }
  std::vector<DifferenceLine> shown;
  for (std::size_t each = 0; each < lines.size(); ++each) {
    if (isNear[each]) {
      shown.push_back(lines[each]);
    } else if (each == 0 || isNear[each - 1]) {
      shown.push_back({DifferenceLine::Side::Both, "…"});
    }
  }
  return shown;
}

}  // namespace zolvar
