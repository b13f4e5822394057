#pragma once

#include "platform/FileSystem.h"
#include "platform/qt/FileEmblems.h"
#include "platform/qt/PosixTrash.h"

namespace zolvar {

class RunLoop;

/// The machine's files. Any thread, but observe, which is for the main thread. Outlives the folders
/// it opened; the run loop outlives it.
class PosixFileSystem : public FileSystem {
 public:
  explicit PosixFileSystem(RunLoop& runLoop);

  Result<std::unique_ptr<Folder>> open(const std::string& absolutePath) override;
  Result<> makeFolder(const std::string& absolutePath) override;
  [[nodiscard]] bool isFolder(const std::string& absolutePath) const override;
  [[nodiscard]] Result<FileIdentity> identity(const std::string& absolutePath) const override;
  [[nodiscard]] std::vector<std::string> subfolders(const std::string& absolutePath) const override;
  Result<> trashFolder(const std::string& absolutePath) override;
  Result<std::unique_ptr<FileLock>> lock(const std::string& absolutePath) override;
  Result<std::unique_ptr<FolderObservation>> observe(
      const std::string& absolutePath, std::function<void(const FileEvent&)> changed,
      std::function<void(const Failure&)> lost) override;

  /// $HOME, or what the password database says.
  [[nodiscard]] std::string homeFolder() const override;
  /// "Zolvar" in $XDG_DATA_HOME, or in ~/.local/share.
  Result<std::string> supportFolder() override;

 private:
  RunLoop& runLoop_;
  const PosixTrash trash_;
  const FileEmblems emblems_;
};

}  // namespace zolvar
