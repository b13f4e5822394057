#pragma once

#include "support/SimulatedFileSystem.h"

namespace zolvar {

/// A folder of a SimulatedFileSystem, held by node: it follows the folder when that is moved.
class SimulatedFolder : public Folder {
 public:
  SimulatedFolder(SimulatedFileSystem& files, SimulatedTree::Node root);

  [[nodiscard]] Result<std::string> currentPath() const override;
  [[nodiscard]] FileIdentity identity() const override;
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
  enum class WalkGoesOn { Yes, No };
  Result<> begin(const char* operation, std::string_view path) const;
  Result<SimulatedTree::Node> file(const char* operation, std::string_view path);
  WalkGoesOn walkBelow(const SimulatedTree::Node& directory, std::string& path,
                       const Visitor& visit, const WalkErrors& errors);

  SimulatedFileSystem& files_;
  SimulatedTree& tree_;
  SimulatedTree::Node root_;
};

}  // namespace zolvar
