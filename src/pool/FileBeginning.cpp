#include "pool/FileBeginning.h"

#include <string>

#include "platform/FileSystem.h"

namespace zolvar {

namespace {

constexpr std::size_t PieceSize = 256U << 10U;

/// Up to `size` bytes, less only at the end; false when the file cannot be read.
bool readPiece(const Folder::Reader& reader, std::string& piece, std::size_t size) {
  piece.resize(size);
  std::size_t filled = 0;
  while (filled < size) {
    const auto count = reader(piece.data() + filled, size - filled);
    if (!count) return false;
    if (*count == 0) break;
    filled += *count;
  }
  piece.resize(filled);
  return true;
}

}  // namespace

bool isBeginningOf(Folder& folder, std::string_view path, Folder& otherFolder,
                   std::string_view otherPath) {
  const auto shorter = folder.open(path, 0);
  const auto longer = otherFolder.open(otherPath, 0);
  if (!shorter || !longer) return false;
  std::string piece;
  std::string other;
  do {
    if (!readPiece(*shorter, piece, PieceSize) || !readPiece(*longer, other, piece.size())) {
      return false;
    }
    if (piece != other) return false;
  } while (piece.size() == PieceSize);
  return true;
}

}  // namespace zolvar
