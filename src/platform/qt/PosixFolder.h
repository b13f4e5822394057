#pragma once

#include "platform/FileSystem.h"
#include "platform/qt/Descriptor.h"

namespace zolvar {

class FileEmblems;
class PosixTrash;

/// A folder held by an O_PATH descriptor. Each operation lets the kernel resolve the path beneath
/// it, through no link, and then works on the parent directory's descriptor, so that nobody can
/// exchange a step of the path in between. The trash and the emblems outlive it.
class PosixFolder : public Folder {
 public:
  PosixFolder(Descriptor root, FileIdentity identity, const PosixTrash& trash,
              const FileEmblems& emblems);

  [[nodiscard]] Result<std::string> currentPath() const override;
  [[nodiscard]] FileIdentity identity() const override { return identity_; }

  void walk(std::string_view start, const Visitor& visit, const WalkErrors& errors) override;
  Result<std::vector<std::pair<std::string, FileAttributes>>> list(
      std::string_view directory) override;
  Result<FileAttributes> attributes(std::string_view path) override;

  Result<std::string> read(std::string_view path, std::uint64_t offset,
                           std::uint64_t limit) override;
  Result<Reader> open(std::string_view path, std::uint64_t offset) override;
  Result<> append(std::string_view path, std::string_view bytes) override;
  Result<> replace(std::string_view path, std::string_view bytes, std::uint32_t mode,
                   const Check& check) override;

  Result<> flush() override;
  Result<> clear(std::string_view path) override;
  Result<> link(std::string_view from, std::string_view to) override;
  Result<> makeSymbolicLink(std::string_view path, std::string_view target) override;
  Result<> rename(std::string_view from, std::string_view to) override;
  Result<> moveIn(const std::string& absoluteSource, std::string_view path,
                  const std::optional<FileAttributes>& replaced) override;
  Result<> removeFile(std::string_view path) override;
  Result<> removeTree(std::string_view path) override;
  Result<> makeDirectories(std::string_view path) override;
  Result<std::string> readLink(std::string_view path) override;
  Result<> setModTime(std::string_view path, std::int64_t seconds) override;
  Result<std::uint64_t> freeSpace() override;

  Result<> trash(std::string_view path) override;
  Result<> setLabel(std::string_view path, int number) override;

 private:
  Result<Descriptor> openRegular(std::string_view path, int flags, const char* attempt) const;

  const Descriptor root_;
  const FileIdentity identity_;
  const PosixTrash& trash_;
  const FileEmblems& emblems_;
};

}  // namespace zolvar
