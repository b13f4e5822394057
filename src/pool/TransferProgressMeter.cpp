#include "pool/TransferProgressMeter.h"

#include <algorithm>
#include <cmath>

#include "platform/FileSystem.h"
#include "pool/ArrivingName.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr double RateMemory = 3;          ///< seconds over which the rate is averaged
constexpr double FirstSearchDelay = 0.5;  ///< seconds; doubles while nothing is found
constexpr double LongestSearchDelay = 8;
constexpr std::uint64_t LeastWatchedSize = 1U << 20;  ///< bytes; smaller files arrive at once
constexpr std::size_t NearStep = 8;  ///< a file that was left out does not hide this many after it

}  // namespace

bool comesFirstInTransfer(std::string_view left, std::string_view right) {
  for (;;) {
    const std::size_t leftEnd = left.find('/');
    const std::size_t rightEnd = right.find('/');
    // A folder's name counts with its slash.
    const std::string_view leftName = left.substr(0, leftEnd == left.npos ? leftEnd : leftEnd + 1);
    const std::string_view rightName =
        right.substr(0, rightEnd == right.npos ? rightEnd : rightEnd + 1);
    const bool leftIsFile = leftEnd == std::string_view::npos;
    const bool rightIsFile = rightEnd == std::string_view::npos;
    if (leftIsFile != rightIsFile) return leftIsFile;
    if (leftName != rightName) {
      return std::lexicographical_compare(leftName.begin(), leftName.end(), rightName.begin(),
                                          rightName.end(), [](char one, char other) {
                                            return static_cast<unsigned char>(one) <
                                                   static_cast<unsigned char>(other);
                                          });
    }
    if (leftIsFile) return false;
    left.remove_prefix(leftEnd + 1);
    right.remove_prefix(rightEnd + 1);
  }
}

TransferProgressMeter::TransferProgressMeter(Folder& folder, std::string participant,
                                             std::vector<AwaitedFile> files, double now)
    : folder_(folder),
      participant_(std::move(participant)),
      files_(std::move(files)),
      lastTick_(now) {
  std::sort(files_.begin(), files_.end(), [](const AwaitedFile& left, const AwaitedFile& right) {
    return comesFirstInTransfer(left.path, right.path);
  });
  bytesBefore_.reserve(files_.size() + 1);
  bytesBefore_.push_back(0);
  for (const AwaitedFile& file : files_) bytesBefore_.push_back(bytesBefore_.back() + file.size);
}

TransferProgress TransferProgressMeter::tick(double now) {
  const std::size_t border = findBorder();
  if (border != border_) {
    border_ = border;
    arriving_.clear();
    nextSearch_ = now + FirstSearchDelay;
    searchDelay_ = FirstSearchDelay;
  }
  const std::uint64_t bytes = std::max(lastBytes_, bytesBefore_[border_] + arrivingBytes(now));

  if (const double passed = now - lastTick_; passed > 0) {
    const double current = static_cast<double>(bytes - lastBytes_) / passed;
    const double weight = 1 - std::exp(-passed / RateMemory);
    rate_ = rate_ == 0 ? current : rate_ + weight * (current - rate_);
    lastTick_ = now;
    lastBytes_ = bytes;
  }

  TransferProgress progress;
  progress.participant = participant_;
  progress.filesDone = border_;
  progress.filesWanted = files_.size();
  progress.bytesDone = bytes;
  progress.bytesWanted = bytesBefore_.back();
  progress.bytesPerSecond = rate_;
  return progress;
}

bool TransferProgressMeter::hasArrived(std::size_t index) {
  const AwaitedFile& file = files_[index];
  const auto there = folder_.attributes(file.path);
  if (!there || there->kind == FileKind::Directory) return false;
  if (there->kind == FileKind::Regular && there->size != file.size) return false;
  return std::find(file.modTimes.begin(), file.modTimes.end(), there->modTime) !=
         file.modTimes.end();
}

/// Files that the tool left out lie before the border too: it has passed them.
std::size_t TransferProgressMeter::findBorder() {
  std::size_t arrived = border_;       // all before it have been handled
  std::size_t missed = files_.size();  // the next probe after them, not arrived
  for (std::size_t index = border_; index < std::min(border_ + NearStep, files_.size()); ++index) {
    if (hasArrived(index)) arrived = index + 1;
  }
  for (std::size_t step = NearStep; border_ + step < files_.size(); step *= 2) {
    const std::size_t probe = border_ + step;
    if (hasArrived(probe)) {
      arrived = probe + 1;
      missed = files_.size();
    } else {
      missed = std::min(missed, probe);
    }
  }
  if (arrived == border_) return border_;
  while (arrived < missed) {
    const std::size_t middle = arrived + (missed - arrived) / 2;
    if (hasArrived(middle)) {
      arrived = middle + 1;
    } else {
      missed = middle;
    }
  }
  return arrived;
}

std::uint64_t TransferProgressMeter::arrivingBytes(double now) {
  if (border_ >= files_.size() || files_[border_].size < LeastWatchedSize) return 0;
  const AwaitedFile& file = files_[border_];
  if (arriving_.empty()) {
    if (now < nextSearch_) return 0;
    searchDelay_ = std::min(std::max(searchDelay_ * 2, FirstSearchDelay), LongestSearchDelay);
    nextSearch_ = now + searchDelay_;
    const std::string directory(parentPath(file.path));
    const auto names = folder_.list(directory);
    if (!names) return 0;
    for (const auto& [name, attributes] : *names) {
      if (isArriving(name, lastPathComponent(file.path))) {
        arriving_ = directory.empty() ? name : joinPath(directory, name);
      }
    }
    if (arriving_.empty()) return 0;
  }
  const auto there = folder_.attributes(arriving_);
  if (!there) {
    arriving_.clear();
    return 0;
  }
  return std::min(there->size, file.size);
}

}  // namespace zolvar
