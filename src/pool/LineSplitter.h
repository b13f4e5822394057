#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>

namespace zolvar {

/// Turns a stream of bytes that comes in pieces into its lines, without their line ends (a line
/// feed, or a carriage return before it). What a line has beyond `longest` bytes is dropped, so
/// that a stream without line ends costs no memory. Caller synchronises.
class LineSplitter {
 public:
  using Sink = std::function<void(std::string_view line)>;

  LineSplitter(std::size_t longest, Sink sink) : longest_(longest), sink_(std::move(sink)) {}

  void add(std::string_view bytes) {
    while (!bytes.empty()) {
      const std::size_t end = bytes.find('\n');
      const std::string_view piece = bytes.substr(0, end);
      pending_.append(piece.substr(0, std::min(piece.size(), longest_ - pending_.size())));
      if (end == std::string_view::npos) return;
      give();
      bytes.remove_prefix(end + 1);
    }
  }
  /// Gives a last line that has no line end.
  void finish() {
    if (!pending_.empty()) give();
  }

 private:
  void give() {
    std::string_view line = pending_;
    if (line.ends_with('\r')) line.remove_suffix(1);
    sink_(line);
    pending_.clear();
  }

  std::size_t longest_;
  Sink sink_;
  std::string pending_;
};

}  // namespace zolvar
