#include "log/MappedBytes.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

namespace zolvar {

MappedBytes::MappedBytes(std::size_t size, Pages pages) {
  // The system promises no more than the alignment of a page: map more and give the ends back.
  const std::size_t spare = pages == Pages::Huge ? HugePage : 0;
  void* const mapped =
      ::mmap(nullptr, size + spare, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  bytes_ = static_cast<char*>(mapped);
  size_ = size;
  if (pages == Pages::Ordinary) return;
  const std::size_t past = reinterpret_cast<std::uintptr_t>(mapped) % HugePage;
  const std::size_t before = past == 0 ? 0 : HugePage - past;
  if (before > 0) ::munmap(bytes_, before);
  bytes_ += before;
  if (before < spare) ::munmap(bytes_ + size, spare - before);
  ::madvise(bytes_, size_, MADV_HUGEPAGE);  // without them it is slower, and that is all
}

MappedBytes::~MappedBytes() {
  if (bytes_ != nullptr) ::munmap(bytes_, size_);
}

void ChunkedBytes::grow() {
  // A small store must not pay for huge pages that it would hardly use.
  constexpr std::size_t OrdinaryChunks = 2;
  const bool isLarge = chunks_.size() >= OrdinaryChunks;
  chunks_.emplace_back(ChunkSize,
                       isLarge ? MappedBytes::Pages::Huge : MappedBytes::Pages::Ordinary);
  next_ = chunks_.back().data();
  left_ = ChunkSize;
}

}  // namespace zolvar
