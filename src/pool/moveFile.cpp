#include "pool/moveFile.h"

#include <algorithm>

#include "platform/FileSystem.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::size_t PieceSize = 4U << 20;  ///< bytes read, written and synced at once

/// The deepest folder above both paths; "" when that is the root of the file system.
std::string commonFolder(const std::string& left, const std::string& right) {
  const auto [end, unused] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
  return std::string(parentPath(std::string(left.begin(), end) + "x"));
}

/// Within one folder a second name and then no first one: atomic, and it replaces nothing.
Result<> moveByLink(FileSystem& files, const std::string& from, const std::string& to) {
  const std::string common = commonFolder(from, to);
  if (common.empty()) return fail(FailureKind::Refused, "move", from);
  auto folder = files.open(common);
  if (!folder) return tl::unexpected(folder.error());
  const std::string source = from.substr(common.size() + 1);
  if (auto linked = (*folder)->link(source, to.substr(common.size() + 1)); !linked) return linked;
  static_cast<void>((*folder)->removeFile(source));  // it is there under its new name in any case
  return {};
}

Result<> copyBytes(Folder& source, const std::string& name, Folder& target,
                   const std::string& newName) {
  auto reader = source.open(name, 0);
  if (!reader) return tl::unexpected(reader.error());
  if (const auto made = target.append(newName, ""); !made) return made;
  std::string piece(PieceSize, '\0');
  for (;;) {
    const auto count = (*reader)(piece.data(), piece.size());
    if (!count) return tl::unexpected(count.error());
    if (*count == 0) return {};
    if (auto added = target.append(newName, std::string_view(piece).substr(0, *count)); !added) {
      return added;
    }
  }
}

Result<> moveByCopy(Folder& source, const std::string& name, Folder& target,
                    const std::string& newName) {
  const auto attributes = source.attributes(name);
  if (!attributes) return tl::unexpected(attributes.error());
  if (attributes->kind == FileKind::Link) {
    const auto linked = source.readLink(name);
    if (!linked) return tl::unexpected(linked.error());
    if (auto made = target.makeSymbolicLink(newName, *linked); !made) return made;
    static_cast<void>(target.setModTime(newName, attributes->modTime));
    static_cast<void>(source.removeFile(name));
    return {};
  }
  if (attributes->kind != FileKind::Regular) return fail(FailureKind::Refused, "move", name);

  const std::string aside = ".zolvar-move-" + std::to_string(attributes->inode);
  if (auto removed = target.removeTree(aside); !removed) return removed;
  Result<> result = copyBytes(source, name, target, aside);
  if (result) result = target.setModTime(aside, attributes->modTime);
  if (result) result = target.link(aside, newName);  // fails where a rename would replace
  static_cast<void>(target.removeFile(aside));
  if (result) static_cast<void>(source.removeFile(name));
  return result;
}

}  // namespace

Result<> moveFile(FileSystem& files, const std::string& from, const std::string& to) {
  auto target = files.open(std::string(parentPath(to)));
  if (!target) return tl::unexpected(target.error());
  const std::string newName(lastPathComponent(to));
  if ((*target)->attributes(newName)) {
    return fail(FailureKind::Refused, "write", to, "There is a file of that name");
  }
  if (moveByLink(files, from, to)) return {};
  auto source = files.open(std::string(parentPath(from)));
  if (!source) return tl::unexpected(source.error());
  return moveByCopy(**source, std::string(lastPathComponent(from)), **target, newName);
}

}  // namespace zolvar
