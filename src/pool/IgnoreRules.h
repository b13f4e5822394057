#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zolvar {

/// Which paths of a synced folder stay out of it: never logged, fetched or deleted. Written in the
/// syntax of gitignore(5): one pattern a line, the last one that fits decides, "!" takes out again,
/// and nothing beneath an ignored directory can be taken out. The file with the rules itself is
/// never ignored. A value, and pure; any thread.
class IgnoreRules {
 public:
  /// Nothing is ignored.
  IgnoreRules() = default;
  /// Reads the rules. Lines that can fit nothing are passed over.
  explicit IgnoreRules(std::string_view text);

  /// Whether a path, relative to the folder, or a directory above it is ignored.
  [[nodiscard]] bool ignores(std::string_view path, bool isDirectory) const;
  /// The same for an item whose parent is known not to be ignored: what a walk asks.
  [[nodiscard]] bool ignoresItem(std::string_view path, bool isDirectory) const;
  [[nodiscard]] bool isEmpty() const { return patterns_.empty(); }

  bool operator==(const IgnoreRules&) const = default;

 private:
  struct Pattern {
    std::string glob;          ///< without the marks around it
    bool takesOut = false;     ///< "!" before it
    bool isAnchored = false;   ///< fits the whole path, else the last component
    bool onlyFolders = false;  ///< "/" behind it
    bool operator==(const Pattern&) const = default;
  };

  void addLine(std::string_view line);

  std::vector<Pattern> patterns_;
};

}  // namespace zolvar
