#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace zolvar {

/// A block of zeroed memory straight from the system, given back as a whole. Pages cost nothing
/// before they are written. Huge pages make filling large stores about three times as fast: most
/// of that time is the system's, a page at a time. Caller synchronises.
class MappedBytes {
 public:
  static constexpr std::size_t HugePage = 2U << 20U;
  enum class Pages { Ordinary, Huge };

  MappedBytes() = default;
  /// With huge pages the block begins at a multiple of HugePage. Throws std::bad_alloc.
  MappedBytes(std::size_t size, Pages pages);
  MappedBytes(MappedBytes&& other) noexcept
      : bytes_(std::exchange(other.bytes_, nullptr)), size_(std::exchange(other.size_, 0)) {}
  MappedBytes& operator=(MappedBytes&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~MappedBytes();

  [[nodiscard]] char* data() const { return bytes_; }
  [[nodiscard]] std::size_t size() const { return size_; }

 private:
  char* bytes_ = nullptr;
  std::size_t size_ = 0;
};

/// Hands out pieces of chunks that never move, one after the other; all are freed together.
class ChunkedBytes {
 public:
  static constexpr std::size_t ChunkSize = MappedBytes::HugePage;

  /// `size` is at most ChunkSize; what is left of a chunk that is too short for it stays unused.
  char* take(std::size_t size) {
    if (size > left_) grow();
    char* const taken = next_;
    next_ += size;
    left_ -= size;
    return taken;
  }
  [[nodiscard]] char* chunk(std::size_t index) const { return chunks_[index].data(); }

 private:
  void grow();

  std::vector<MappedBytes> chunks_;
  char* next_ = nullptr;
  std::size_t left_ = 0;
};

}  // namespace zolvar
