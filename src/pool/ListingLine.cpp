#include "pool/ListingLine.h"

#include <algorithm>
#include <ctime>

namespace zolvar {

namespace {

constexpr std::time_t Day = std::time_t{24} * 60 * 60;
constexpr std::string_view TimePattern = "0000/00/00 00:00:00";

bool isDigit(char character) { return character >= '0' && character <= '9'; }

/// Whether the text has a digit wherever the pattern has a "0", and the pattern's character else.
bool fitsTimePattern(std::string_view text) {
  return text.size() == TimePattern.size() &&
         std::equal(text.begin(), text.end(), TimePattern.begin(), [](char given, char wanted) {
           return wanted == '0' ? isDigit(given) : given == wanted;
         });
}

/// The text from `start` to the next blank; moves `start` behind it.
std::string_view takeField(std::string_view line, std::size_t& start) {
  start = std::min(line.find_first_not_of(' ', start), line.size());
  const std::size_t end = std::min(line.find(' ', start), line.size());
  const std::string_view field = line.substr(start, end - start);
  start = end;
  return field;
}

/// A size such as "1,234,567"; the separator depends on the locale.
std::optional<std::uint64_t> sizeFrom(std::string_view text) {
  std::uint64_t size = 0;
  bool hasDigit = false;
  for (const char character : text) {
    if (isDigit(character)) {
      if (size > (UINT64_MAX - 9) / 10) return std::nullopt;
      size = size * 10 + static_cast<std::uint64_t>(character - '0');
      hasDigit = true;
    } else if (character != ',' && character != '.' && character != '\'') {
      return std::nullopt;
    }
  }
  return hasDigit ? std::optional(size) : std::nullopt;
}

bool isSameLocalTime(const std::tm& left, const std::tm& right) {
  return left.tm_year == right.tm_year && left.tm_mon == right.tm_mon &&
         left.tm_mday == right.tm_mday && left.tm_hour == right.tm_hour &&
         left.tm_min == right.tm_min && left.tm_sec == right.tm_sec;
}

/// The distance of local time from UTC at `time`, in seconds.
long utcOffset(std::time_t time) {
  std::tm local{};
  return localtime_r(&time, &local) != nullptr ? local.tm_gmtoff : 0;
}

}  // namespace

std::vector<std::int64_t> ListingLine::modTimes() const {
  if (!fitsTimePattern(time)) return {};
  const auto number = [this](std::size_t start, std::size_t count) {
    int value = 0;
    for (const char digit : time.substr(start, count)) value = value * 10 + (digit - '0');
    return value;
  };
  std::tm fields{};
  fields.tm_year = number(0, 4) - 1900;
  fields.tm_mon = number(5, 2) - 1;
  fields.tm_mday = number(8, 2);
  fields.tm_hour = number(11, 2);
  fields.tm_min = number(14, 2);
  fields.tm_sec = number(17, 2);
  if (fields.tm_mon < 0 || fields.tm_mon > 11 || fields.tm_mday < 1 || fields.tm_mday > 31 ||
      fields.tm_hour > 23 || fields.tm_min > 59 || fields.tm_sec > 60) {
    return {};
  }

  // The local time as if it were UTC, taken back by each offset that rules around it. Where clocks
  // change that day the two offsets differ: both results may show this local time, or only one.
  std::tm asUtc = fields;
  const std::time_t unshifted = timegm(&asUtc);
  const long before = utcOffset(unshifted - Day);
  const long after = utcOffset(unshifted + Day);
  std::vector<std::int64_t> times;
  for (const long offset : {std::max(before, after), std::min(before, after)}) {
    const std::time_t candidate = unshifted - offset;
    std::tm local{};
    if (localtime_r(&candidate, &local) == nullptr || !isSameLocalTime(local, asUtc)) continue;
    if (times.empty() || times.back() != candidate) times.push_back(candidate);
    if (before == after) break;
  }
  if (times.empty()) times.push_back(unshifted - before);
  if (kind() != 'd') {
    for (std::int64_t& time : times) time = std::max<std::int64_t>(time, 1);
  }
  return times;
}

std::optional<ListingLine> parseListingLine(std::string_view line) {
  ListingLine parsed;
  std::size_t position = 0;
  if (line.empty() || line.front() == ' ') return std::nullopt;
  parsed.mode = takeField(line, position);
  if (parsed.mode.size() < 10) return std::nullopt;
  const auto size = sizeFrom(takeField(line, position));
  if (!size) return std::nullopt;
  parsed.size = *size;
  const std::size_t timeStart = position + 1;
  if (timeStart + TimePattern.size() >= line.size()) return std::nullopt;
  parsed.time = line.substr(timeStart, TimePattern.size());
  const std::size_t nameStart = timeStart + TimePattern.size() + 1;
  if (line[nameStart - 1] != ' ' || !fitsTimePattern(parsed.time)) return std::nullopt;
  parsed.path = withoutListingEscapes(line.substr(nameStart));
  if (parsed.path.empty() || parsed.path == ".") return std::nullopt;
  return parsed;
}

std::string withoutListingEscapes(std::string_view text) {
  const auto isEscape = [text](std::size_t at) {
    return text.substr(at, 2) == "\\#" && text.size() - at >= 5 &&
           std::all_of(text.begin() + static_cast<std::ptrdiff_t>(at) + 2,
                       text.begin() + static_cast<std::ptrdiff_t>(at) + 5,
                       [](char digit) { return digit >= '0' && digit <= '7'; }) &&
           text[at + 2] <= '3';
  };
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] == '\\' && isEscape(at)) {
      plain += static_cast<char>((text[at + 2] - '0') * 64 + (text[at + 3] - '0') * 8 +
                                 (text[at + 4] - '0'));
      at += 5;
    } else {
      plain += text[at++];
    }
  }
  return plain;
}

}  // namespace zolvar
