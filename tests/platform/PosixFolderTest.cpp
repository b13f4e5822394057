#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include "PlatformFixture.h"
#include "platform/qt/PosixFileSystem.h"

namespace zolvar {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class PosixFolderTest : public LoopTest {
 protected:
  std::unique_ptr<Folder> open(const std::string& path) {
    auto folder = fileSystem_.open(path);
    EXPECT_TRUE(folder) << folder.error().message();
    return std::move(*folder);
  }
  static FailureKind kindOf(const auto& result) {
    return result ? FailureKind::Cancelled : result.error().kind;  // never told by a folder
  }

  PosixFileSystem fileSystem_{loop_};
  TemporaryFolder outer_;
  TemporaryFolder other_;
  std::unique_ptr<Folder> folder_ = open(outer_.path());
};

TEST_F(PosixFolderTest, neverLeavesTheRootNorPassesThroughALink) {
  outer_.write("root/inside", "inside");
  outer_.write("secret", "secret");
  outer_.makeFolder("folder");
  fs::create_symlink("../secret", outer_.path("root/link"));
  fs::create_symlink("../folder", outer_.path("root/door"));
  fs::create_symlink(".", outer_.path("root/self"));
  const auto root = open(outer_.path("root"));

  const std::vector<std::string> paths = {
      "../secret", "door/new", "self/inside", outer_.path("secret"),
      ".",         "..",       "./inside",    "a/../inside",
      "inside/",   "a//b",     "link",        "folder/../../secret"};
  for (const auto& path : paths) {
    SCOPED_TRACE(path);
    EXPECT_EQ(FailureKind::Refused, kindOf(root->read(path, 0, 100)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->append(path, "x")));
    if (path == "link") continue;  // as a last step, a link is itself the subject
    EXPECT_EQ(FailureKind::Refused, kindOf(root->attributes(path)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->replace(path, "x", 0644)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->removeFile(path)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->removeTree(path)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->trash(path)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->setModTime(path, 5)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->setLabel(path, 1)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->rename("inside", path)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->link("inside", path)));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->makeSymbolicLink(path, "x")));
    EXPECT_EQ(FailureKind::Refused, kindOf(root->makeDirectories(path + "/below")));
  }
  EXPECT_EQ(FailureKind::Refused, kindOf(root->read(std::string("in\0side", 7), 0, 100)));
  EXPECT_EQ("secret", outer_.content("secret"));
  EXPECT_TRUE(fs::is_empty(outer_.path("folder")));
  EXPECT_EQ("inside", outer_.content("root/inside"));

  // A link itself can be asked about, replaced and removed; its target stays as it is.
  EXPECT_EQ(FileKind::Link, root->attributes("link")->kind);
  EXPECT_EQ("../secret", *root->readLink("link"));
  EXPECT_TRUE(root->setModTime("link", 1234));
  EXPECT_EQ(1234, root->attributes("link")->modTime);
  EXPECT_TRUE(root->setLabel("link", 3));
  EXPECT_TRUE(root->removeTree("door"));
  EXPECT_TRUE(outer_.exists("folder"));
  EXPECT_TRUE(root->replace("link", "now a file", 0600));
  EXPECT_EQ("secret", outer_.content("secret"));
}

TEST_F(PosixFolderTest, tellsWhatIsWrongByKind) {
  outer_.write("file", "text");
  outer_.makeFolder("folder/full");
  ASSERT_EQ(0, mkfifo(outer_.path("pipe").c_str(), 0600));
  EXPECT_EQ(FailureKind::Absent, kindOf(folder_->read("none", 0, 9)));
  EXPECT_EQ(FailureKind::Absent, kindOf(folder_->attributes("file/below")));
  EXPECT_EQ(FailureKind::Absent, kindOf(folder_->append("none/file", "x")));
  EXPECT_EQ(FailureKind::Refused, kindOf(folder_->read("pipe", 0, 9)));  // and does not wait for it
  EXPECT_EQ(FailureKind::Refused, kindOf(folder_->read("folder", 0, 9)));
  EXPECT_EQ(FailureKind::Refused, kindOf(folder_->makeDirectories("file/below")));
  EXPECT_EQ(FailureKind::Refused, kindOf(folder_->replace("folder", "x", 0644)));
  EXPECT_EQ(FailureKind::Refused, kindOf(folder_->link("file", "folder")));
  EXPECT_EQ(FailureKind::Absent, kindOf(folder_->rename("folder/full", "file/x")));
  EXPECT_EQ(FailureKind::Damaged, kindOf(folder_->read("file", 0, 3)));
  EXPECT_EQ("xt", *folder_->read("file", 2, 2));
  EXPECT_EQ("", *folder_->read("file", 10, 2));
  EXPECT_EQ(FailureKind::Absent, kindOf(fileSystem_.open(outer_.path("none"))));
  EXPECT_EQ(FailureKind::Absent, kindOf(fileSystem_.open(outer_.path("file"))));
}

TEST_F(PosixFolderTest, writesWholeFilesOrNothing) {
  ASSERT_TRUE(folder_->append("log", "one\n"));
  ASSERT_TRUE(folder_->append("log", "two\n"));
  EXPECT_EQ("one\ntwo\n", outer_.content("log"));
  ASSERT_TRUE(folder_->makeDirectories("a/b/c"));
  ASSERT_TRUE(folder_->makeDirectories("a/b/c"));
  ASSERT_TRUE(folder_->replace("a/b/c/secret", "first", 0600));
  ASSERT_TRUE(folder_->replace("a/b/c/secret", "second", 0600));
  const auto files = [&] {
    return std::distance(fs::directory_iterator(outer_.path("a/b/c")), {});
  };
  const auto refuse = [&]() -> Result<> {
    EXPECT_EQ(2, files()) << "the new one lies there and is flushed";
    return fail(FailureKind::Transient, "write", "secret");
  };
  EXPECT_EQ(FailureKind::Transient,
            kindOf(folder_->replace("a/b/c/secret", "third", 0600, refuse)));
  EXPECT_EQ(1, files());
  EXPECT_EQ("second", outer_.content("a/b/c/secret"));
  EXPECT_EQ(0600U, folder_->attributes("a/b/c/secret")->mode);
  ASSERT_FALSE(folder_->replace("a/b", "over a folder", 0600));
  EXPECT_EQ(2, std::distance(fs::directory_iterator(outer_.path()), {})) << "nothing aside stays";

  // A disk that is full in the middle of a write leaves no half line.
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{10, before.rlim_max};
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  const auto cut = folder_->append("log", "three\n");
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, handler);
  EXPECT_EQ(FailureKind::Transient, kindOf(cut));
  EXPECT_EQ("one\ntwo\n", outer_.content("log"));
}

TEST_F(PosixFolderTest, movesIn) {
  for (const std::string above : {"", "/dev/shm"}) {  // the second is another file system
    SCOPED_TRACE(above);
    if (!above.empty() && access(above.c_str(), W_OK) != 0) continue;
    const TemporaryFolder source(above);
    source.write("file", "new");
    fs::create_symlink("target", source.path("link"));
    const auto from = open(source.path());
    ASSERT_TRUE(from->setModTime("file", 1'000'000'000));
    ASSERT_TRUE(from->setModTime("link", 1'000'000'001));
    outer_.write("place/file", "old");
    const auto old = *folder_->attributes("place/file");
    outer_.write("place/file", "saved meanwhile");
    for (const auto& replaced : {std::optional(old), std::optional<FileAttributes>()}) {
      EXPECT_EQ(FailureKind::Transient,
                kindOf(folder_->moveIn(source.path("file"), "place/file", replaced)));
    }
    EXPECT_EQ("saved meanwhile", outer_.content("place/file"));
    ASSERT_TRUE(
        folder_->moveIn(source.path("file"), "place/file", *folder_->attributes("place/file")));
    ASSERT_TRUE(folder_->moveIn(source.path("link"), "place/link", std::nullopt));
    EXPECT_EQ("new", outer_.content("place/file"));
    EXPECT_EQ(1'000'000'000, folder_->attributes("place/file")->modTime);
    EXPECT_EQ("target", *folder_->readLink("place/link"));
    EXPECT_EQ(1'000'000'001, folder_->attributes("place/link")->modTime);
    EXPECT_FALSE(folder_->moveIn(source.path(), "place/folder", std::nullopt));
    EXPECT_TRUE(fs::is_empty(source.path()));
    EXPECT_EQ(2U, folder_->list("place")->size());
    ASSERT_TRUE(folder_->removeTree("place"));
  }
}

TEST_F(PosixFolderTest, removesTreesButNothingBehindLinks) {
  other_.write("precious", "x");
  for (int index = 0; index < 300; ++index) {
    outer_.write("tree/" + std::to_string(index % 7) + "/" + std::to_string(index), "x");
  }
  fs::create_directory_symlink(other_.path(), outer_.path("tree/3/door"));
  EXPECT_TRUE(folder_->removeTree("tree"));
  EXPECT_FALSE(outer_.exists("tree"));
  EXPECT_TRUE(folder_->removeTree("tree")) << "absent is success";
  EXPECT_TRUE(folder_->removeTree("none/below"));
  EXPECT_TRUE(other_.exists("precious"));
}

TEST_F(PosixFolderTest, followsTheFolderWhenItIsMoved) {
  outer_.write("here/file", "x");
  const auto folder = open(outer_.path("here"));
  fs::rename(outer_.path("here"), outer_.path("there (deleted)"));
  EXPECT_EQ(outer_.path("there (deleted)"), *folder->currentPath());
  EXPECT_EQ("x", *folder->read("file", 0, 9));
  fs::remove_all(outer_.path("there (deleted)"));
  EXPECT_EQ(FailureKind::Absent, kindOf(folder->currentPath()));
  outer_.makeFolder("there (deleted)");
  EXPECT_EQ(FailureKind::Absent, kindOf(folder->currentPath())) << "another folder of that name";
}

TEST_F(PosixFolderTest, labels) {
  outer_.write("file", "x");
  const auto label = [this] {
    char digit = '-';
    return getxattr(outer_.path("file").c_str(), "user.zolvar.label", &digit, 1) == 1 ? digit : '-';
  };
  ASSERT_TRUE(folder_->setModTime("file", 77));
  for (const auto& [number, expected] : std::map<int, char>{{0, '-'}, {2, '2'}, {7, '7'}}) {
    EXPECT_TRUE(folder_->setLabel("file", number));
    if (number == 2 && label() == '-') GTEST_SKIP() << "no extended attributes here";
    EXPECT_EQ(expected, label());
  }
  EXPECT_TRUE(folder_->setLabel("file", 0));
  EXPECT_EQ('-', label());
  EXPECT_EQ(77, folder_->attributes("file")->modTime);
}

// Walking
// ------------------------------------------------------------------------------------------

TEST_F(PosixFolderTest, walksLikeTheStandardLibrary) {
  std::mt19937 random(7);
  std::vector<std::string> folders = {""};
  for (int index = 0; index < 400; ++index) {
    const std::string name = folders[random() % folders.size()] + std::to_string(index) +
                             std::string(random() % 200, 'n');
    switch (random() % 4) {
      case 0:
        outer_.makeFolder(name);
        folders.push_back(name + "/");
        break;
      case 1:
        fs::create_symlink(index % 2 == 0 ? ".." : "nowhere", outer_.path(name));
        break;
      default:
        outer_.write(name, std::string(random() % 100, 'x'));
    }
    if (folders.back().size() > 2000) folders.pop_back();
  }
  std::map<std::string, std::uint64_t> expected;
  for (const auto& entry : fs::recursive_directory_iterator(outer_.path())) {
    const bool isFile = fs::is_regular_file(entry.symlink_status());
    expected[entry.path().lexically_relative(outer_.path())] = isFile ? entry.file_size() : 0;
  }
  std::map<std::string, std::uint64_t> walked;
  folder_->walk(
      "",
      [&](std::string_view path, const FileAttributes& attributes) {
        const std::string parent = fs::path(path).parent_path();
        EXPECT_TRUE(parent.empty() || walked.contains(parent)) << "parents first";
        const bool isFile = attributes.kind == FileKind::Regular;
        EXPECT_TRUE(walked.emplace(path, isFile ? attributes.size : 0).second) << "once";
        return Folder::Visit::Enter;
      },
      [](std::string_view, const Failure& failure) { ADD_FAILURE() << failure.message(); });
  EXPECT_EQ(expected, walked);
}

TEST_F(PosixFolderTest, leavesOutWhatIsSkippedAndEndsAtStop) {
  for (const auto* name : {"a/1", "a/2", "b/1", "b/c/2"}) outer_.write(name, "");
  std::set<std::string> seen;
  folder_->walk("",
                [&](std::string_view path, const FileAttributes&) {
                  seen.emplace(path);
                  return path == "b" ? Folder::Visit::Skip : Folder::Visit::Enter;
                },
                {});
  EXPECT_THAT(seen, ElementsAre("a", "a/1", "a/2", "b"));
  int calls = 0;
  folder_->walk("b",
                [&](std::string_view path, const FileAttributes&) {
                  EXPECT_TRUE(path.starts_with("b/"));
                  ++calls;
                  return Folder::Visit::Stop;
                },
                {});
  EXPECT_EQ(1, calls);
  const auto listed = folder_->list("b");
  ASSERT_EQ(2U, listed->size());
  EXPECT_EQ("1", listed->at(0).first);
  EXPECT_EQ("c", listed->at(1).first);
}

TEST_F(PosixFolderTest, tellsWhichDirectoryCouldNotBeRead) {
  for (const auto* name : {"gone/1", "kept/1"}) outer_.write(name, "");
  std::vector<std::string> failed;
  std::set<std::string> seen;
  const auto note = [&](std::string_view directory, const Failure&) {
    failed.emplace_back(directory);
  };
  folder_->walk(
      "",
      [&](std::string_view path, const FileAttributes&) {
        seen.emplace(path);
        if (path == "gone") fs::remove_all(outer_.path("gone"));
        return Folder::Visit::Enter;
      },
      note);
  EXPECT_THAT(failed, ElementsAre("gone"));
  EXPECT_THAT(seen, ElementsAre("gone", "kept", "kept/1"));
  folder_->walk(
      "none", [](auto, const auto&) { return Folder::Visit::Enter; }, note);
  EXPECT_THAT(failed, ElementsAre("gone", "none"));
  EXPECT_EQ(FailureKind::Absent, kindOf(folder_->list("none")));
}

TEST_F(PosixFolderTest, walksDeeperThanAPathMayBeLong) {
  // 60 levels of 200 bytes: three times what the kernel takes as one path.
  const std::string step(200, 'd');
  std::string path;
  const fs::path before = fs::current_path();
  fs::current_path(outer_.path());
  for (int level = 0; level < 60; ++level) {
    ASSERT_EQ(0, mkdir(step.c_str(), 0700));
    ASSERT_EQ(0, chdir(step.c_str()));
    path += (path.empty() ? "" : "/") + step;
  }
  fs::current_path(before);
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit few{40, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
  std::string deepest;
  folder_->walk(
      "",
      [&](std::string_view each, const FileAttributes&) {
        deepest = each;
        return Folder::Visit::Enter;
      },
      [](std::string_view, const Failure& failure) { ADD_FAILURE() << failure.reason; });
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(path, deepest);
  EXPECT_EQ(FileKind::Directory, folder_->attributes(path)->kind);
  EXPECT_TRUE(folder_->append(path + "/file", "x"));
  EXPECT_TRUE(folder_->removeTree(step));
  EXPECT_TRUE(fs::is_empty(outer_.path()));
}

// The doors
// ----------------------------------------------------------------------------------------

TEST_F(PosixFolderTest, makesAndListsFoldersAndLocksFiles) {
  ASSERT_TRUE(fileSystem_.makeFolder(outer_.path("a/b/c")));
  ASSERT_TRUE(fileSystem_.makeFolder(outer_.path("a/b/c")));
  outer_.write("a/file", "x");
  fs::create_directory_symlink("b", outer_.path("a/link"));
  EXPECT_EQ(FailureKind::Absent, kindOf(fileSystem_.makeFolder(outer_.path("a/file/below"))));
  EXPECT_FALSE(fileSystem_.makeFolder(outer_.path("a/file")));
  EXPECT_THAT(fileSystem_.subfolders(outer_.path("a")), ElementsAre(outer_.path("a/b")));
  EXPECT_EQ(testDataHome() + "/Zolvar", *fileSystem_.supportFolder());
  EXPECT_EQ(fs::perms::owner_all, fs::status(*fileSystem_.supportFolder()).permissions());

  auto lock = fileSystem_.lock(outer_.path("lock"));
  ASSERT_TRUE(lock);
  EXPECT_EQ(std::to_string(getpid()) + "\n", outer_.content("lock"));
  EXPECT_EQ(FailureKind::Refused, kindOf(fileSystem_.lock(outer_.path("lock"))));
  lock->reset();
  EXPECT_TRUE(fileSystem_.lock(outer_.path("lock")));
}

// Trash
// --------------------------------------------------------------------------------------------

class TrashTest : public PosixFolderTest {
 protected:
  void SetUp() override {
    fs::remove_all(testDataHome());
    fs::create_directories(testDataHome());
  }
  /// The one item under the support folder's own Trash, relative to its dated folder; "" for none.
  static std::vector<std::string> kept() {
    std::vector<std::string> paths;
    const fs::path trash = testDataHome() + "/Zolvar/Trash";
    if (!fs::exists(trash)) return paths;
    for (const auto& dated : fs::directory_iterator(trash)) {
      for (const auto& entry : fs::recursive_directory_iterator(dated)) {
        if (!fs::is_directory(entry.symlink_status())) {
          paths.push_back(entry.path().lexically_relative(dated.path()));
        }
      }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
  }
};

TEST_F(TrashTest, usesTheDesktopsTrashFirst) {
  outer_.write("pool/sub/file", "content");
  const auto folder = open(outer_.path("pool"));
  ASSERT_TRUE(folder->trash("sub/file"));
  EXPECT_FALSE(outer_.exists("pool/sub/file"));
  const bool isInDesktopTrash = fs::exists(testDataHome() + "/Trash/files/file");
  EXPECT_TRUE(isInDesktopTrash || kept() == std::vector<std::string>{"pool/sub/file"});
  EXPECT_EQ(FailureKind::Absent, kindOf(folder->trash("sub/file")));
}

TEST_F(TrashTest, keepsItInTheSupportFolderWhereTheDesktopRefuses) {
  std::ofstream(testDataHome() + "/Trash") << "in the way of the desktop's Trash";
  outer_.write("pool/sub/file", "content");
  outer_.write("pool/sub/tree/file", "content");
  fs::create_symlink("nowhere", outer_.path("pool/link"));
  const auto folder = open(outer_.path("pool"));
  ASSERT_TRUE(folder->trash("sub/file"));
  outer_.write("pool/sub/file", "a second one of this name in the same second");
  ASSERT_TRUE(folder->trash("sub/file"));
  ASSERT_TRUE(folder->trash("sub/tree"));
  ASSERT_TRUE(folder->trash("link"));
  EXPECT_THAT(kept(),
              ElementsAre("pool/link", "pool/sub/file", "pool/sub/file", "pool/sub/tree/file"));
  ASSERT_TRUE(fileSystem_.trashFolder(outer_.path("pool") + "/"));
  EXPECT_FALSE(outer_.exists("pool"));
}

TEST_F(TrashTest, copiesAcrossFileSystemsAndRemovesOnlyThen) {
  struct stat here {};
  struct stat there {};
  if (stat("/dev/shm", &there) != 0 || stat(testDataHome().c_str(), &here) != 0 ||
      here.st_dev == there.st_dev || access("/dev/shm", W_OK) != 0) {
    GTEST_SKIP() << "one file system only";
  }
  const TemporaryFolder source("/dev/shm");
  source.write("pool/tree/deep/file", std::string(300'000, 'x'));
  fs::create_symlink("deep/file", source.path("pool/tree/link"));
  const auto folder = open(source.path("pool"));
  ASSERT_TRUE(folder->setModTime("tree/link", 1'000'000'000));
  ASSERT_TRUE(folder->setModTime("tree/deep/file", 1'000'000'001));
  ASSERT_TRUE(folder->setModTime("tree/deep", 1'000'000'002));
  ASSERT_TRUE(folder->trash("tree"));
  EXPECT_FALSE(source.exists("pool/tree"));
  if (!source.exists(".Trash-0") && kept().empty()) GTEST_SKIP() << "the desktop took it";
  const std::string dated = fs::directory_iterator(testDataHome() + "/Zolvar/Trash")->path();
  const auto trash = open(dated + "/pool/tree");
  EXPECT_EQ(std::string(300'000, 'x'), *trash->read("deep/file", 0, 1'000'000));
  EXPECT_EQ("deep/file", *trash->readLink("link"));
  EXPECT_EQ(1'000'000'000, trash->attributes("link")->modTime);
  EXPECT_EQ(1'000'000'001, trash->attributes("deep/file")->modTime);
  EXPECT_EQ(1'000'000'002, trash->attributes("deep")->modTime);

  // What cannot be copied whole stays where it is, and no part of it lies elsewhere.
  source.write("pool/odd/file", "x");
  ASSERT_EQ(0, mkfifo(source.path("pool/odd/pipe").c_str(), 0600));
  fs::remove_all(testDataHome() + "/Zolvar/Trash");
  EXPECT_FALSE(folder->trash("odd"));
  EXPECT_TRUE(source.exists("pool/odd/file"));
  EXPECT_TRUE(kept().empty());
}

}  // namespace
}  // namespace zolvar
