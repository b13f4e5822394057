#include "platform/qt/PosixTrash.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>

#include "platform/qt/BeneathPath.h"
#include "platform/qt/PosixTree.h"

namespace zolvar {

namespace {

constexpr const char* Attempt = "move to the Trash";

struct ReleaseObject {
  void operator()(void* object) const { g_object_unref(object); }
};

bool moveToDesktopTrash(const std::string& path) {
  // The local implementation: the default one may ask services on the session bus, and wait.
  const std::unique_ptr<GFile, ReleaseObject> file(
      g_vfs_get_file_for_path(g_vfs_get_local(), path.c_str()));
  return g_file_trash(file.get(), nullptr, nullptr) == TRUE;
}

/// Makes the directory "DATE TIME", with a counter when that is taken, and opens it.
Result<Descriptor> makeDatedDirectory(int trash) {
  const std::string date = fmt::format("{:%Y-%m-%d %H.%M.%S}", fmt::localtime(std::time(nullptr)));
  std::string name = date;
  for (int counter = 2; mkdirat(trash, name.c_str(), S_IRWXU) != 0; ++counter) {
    if (errno != EEXIST) return tl::unexpected(posixFailure(errno, Attempt, name));
    name = fmt::format("{} {}", date, counter);
  }
  return openBeneath(trash, name, O_PATH | O_DIRECTORY, Attempt);
}

}  // namespace

PosixTrash::PosixTrash(std::function<Result<std::string>()> supportFolder)
    : supportFolder_(std::move(supportFolder)) {}

Result<> PosixTrash::trash(int parent, const std::string& name, std::string_view keptPath) const {
  struct stat status;
  const auto isThere = [&] {
    return fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  };
  if (!isThere()) return tl::unexpected(posixFailure(errno, Attempt, keptPath));
  // The desktop's Trash takes paths only: the parent's true path, as the kernel knows it.
  const std::string folder = pathOfDescriptor(parent);
  if (!folder.empty() && moveToDesktopTrash(folder + "/" + name)) return {};
  if (!isThere()) return tl::unexpected(posixFailure(errno, Attempt, keptPath));
  return moveToOwnTrash(parent, name, keptPath);
}

Result<> PosixTrash::moveToOwnTrash(int parent, const std::string& name,
                                    std::string_view keptPath) const {
  const auto support = supportFolder_();
  if (!support) return tl::unexpected(support.error());
  const std::string path = *support + "/Trash";
  if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    return tl::unexpected(posixFailure(errno, Attempt, path));
  }
  const Descriptor trash(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!trash) return tl::unexpected(posixFailure(errno, Attempt, path));
  const auto dated = makeDatedDirectory(trash.get());
  if (!dated) return tl::unexpected(dated.error());
  const std::size_t slash = keptPath.rfind('/');
  if (slash != std::string_view::npos) {
    auto made = makeDirectoriesBeneath(dated->get(), keptPath.substr(0, slash));
    if (!made) return made;
  }
  const auto target = openParentBeneath(dated->get(), keptPath, Attempt);
  if (!target) return tl::unexpected(target.error());
  if (renameat(parent, name.c_str(), target->parent.get(), target->name.c_str()) == 0) return {};
  if (errno != EXDEV) return tl::unexpected(posixFailure(errno, Attempt, keptPath));
  // Out of the way first: what is saved under the name from now on is another file and stays.
  const std::string aside = fmt::format(".zolvar-trash-{}-{}", getpid(), std::time(nullptr));
  if (renameat2(parent, name.c_str(), parent, aside.c_str(), RENAME_NOREPLACE) != 0) {
    return tl::unexpected(posixFailure(errno, Attempt, keptPath));
  }
  auto kept = copyTree(parent, aside, target->parent.get(), target->name);
  if (kept) kept = syncDirectory(target->parent.get(), keptPath);
  if (!kept) {
    (void)renameat2(parent, aside.c_str(), parent, name.c_str(), RENAME_NOREPLACE);
    return kept;
  }
  return removeTreeAt(parent, aside);
}

}  // namespace zolvar
