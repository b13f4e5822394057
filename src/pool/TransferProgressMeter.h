#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "pool/PoolSnapshot.h"

namespace zolvar {

class Folder;

/// One file that a copy run is to bring.
struct AwaitedFile {
  std::string path;
  std::uint64_t size = 0;
  std::vector<std::int64_t> modTimes;  ///< candidates, see ListingLine
};

/// Whether the transfer tool handles `left` before `right`: in each directory the files come first,
/// in the order of their bytes, and then the sub-folders, by their names with the slash.
[[nodiscard]] bool comesFirstInTransfer(std::string_view left, std::string_view right);

/// Watches a copy run from outside: which of the awaited files lie there with the listed size and
/// time, and how far the one has grown that is arriving (`.NAME.XXXXXX` beside its place). The tool
/// keeps its order, so a tick looks for the border between what has arrived and what has not by
/// doubling steps and halving: some dozens of stats, however many files there are. The transfer
/// lane; the folder outlives it.
class TransferProgressMeter {
 public:
  TransferProgressMeter(Folder& folder, std::string participant, std::vector<AwaitedFile> files,
                        double now);

  /// What has been done by `now` (seconds). The rate is an average over some seconds.
  TransferProgress tick(double now);

 private:
  [[nodiscard]] bool hasArrived(std::size_t index);
  [[nodiscard]] std::size_t findBorder();
  [[nodiscard]] std::uint64_t arrivingBytes(double now);

  Folder& folder_;
  std::string participant_;
  std::vector<AwaitedFile> files_;          ///< in the tool's order
  std::vector<std::uint64_t> bytesBefore_;  ///< index → sizes of all files before it; one longer
  std::size_t border_ = 0;                  ///< files before it have been handled
  std::string arriving_;    ///< path of the arriving file's temporary copy, when known
  double nextSearch_ = 0;   ///< not before this time is it looked for again
  double searchDelay_ = 0;  ///< seconds
  double lastTick_;
  std::uint64_t lastBytes_ = 0;
  double rate_ = 0;  ///< bytes a second
};

}  // namespace zolvar
