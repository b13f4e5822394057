#pragma once

#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace zolvar {

/// What the next scan has to look at.
struct ScanScope {
  bool isWhole = true;
  /// Directories whose entries are compared, "" is the top; not what lies deeper.
  std::set<std::string, std::less<>> folders;
  /// Directories that came or were moved: what lies in them may be new even where a directory lay
  /// at that place before.
  std::set<std::string, std::less<>> arrived;
};

/// Remembers in which directories of a synced folder something happened since the last scan, so
/// that a scan of an idle folder costs nothing. Whoever observes the folder notes what the system
/// reports; the pool's state notes what it learned itself. While nobody observes, and once in a
/// while besides, everything is to be scanned. Paths are relative to the folder. Any thread.
class ChangedFolders {
 public:
  /// Seconds between scans of everything: what no system reports (writes through a memory mapping,
  /// a drive mounted within) is found that much later at most.
  static constexpr double WholeScanInterval = 600;

  /// The item at this path, or what is known of it, changed.
  void note(std::string_view path);
  /// The entries of this directory are to be looked at.
  void noteFolder(std::string_view folder);
  /// The item at this path was made or moved there; when it is a directory, with all beneath it.
  void noteArrival(std::string_view path);
  /// Everything is to be scanned next.
  void noteEverything();
  /// Whether changes are reported without a gap from now on.
  void setObserved(bool isObserved);
  [[nodiscard]] bool isObserved() const;

  /// What is to be scanned at `now` (seconds since 1970); it counts as scanned from here on.
  [[nodiscard]] ScanScope take(double now);
  /// The scan of that scope did not come to its end.
  void giveBack(const ScanScope& scope);

 private:
  /// With more than this a scan of everything is cheaper.
  static constexpr std::size_t MostFolders = 20'000;

  mutable std::mutex mutex_;
  std::set<std::string, std::less<>> folders_;
  std::set<std::string, std::less<>> arrived_;
  bool isEverything_ = true;
  bool isObserved_ = false;
  double lastWhole_ = 0;
};

}  // namespace zolvar
