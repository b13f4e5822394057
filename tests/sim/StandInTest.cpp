// The stand-in of the transfer tool against the real one: the same trees, the same arguments, and
// afterwards the same files, the same statuses and the same listing.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "pool/TransferRun.h"
#include "sim/RealTool.h"
#include "support/SimulatedPlatform.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

namespace fs = std::filesystem;

struct Item {
  std::string path;
  char kind = '-';  ///< '-', 'x' (executable), 'd', 'l', 'p'
  std::string content;
  std::int64_t modTime = 0;
};
using Items = std::vector<Item>;

constexpr std::int64_t T = 1'700'000'000;
constexpr std::int64_t Now = 1'740'000'000;  ///< later times are the moment of the run

void make(const std::string& folder, const Items& items) {
  for (const Item& item : items) {
    const fs::path path = folder + "/" + item.path;
    fs::create_directories(item.kind == 'd' ? path : path.parent_path());
    if (item.kind == 'l') fs::create_symlink(item.content, path);
    if (item.kind == 'p') ::mkfifo(path.c_str(), 0644);
    if (item.kind == '-' || item.kind == 'x') {
      std::ofstream(path, std::ios::binary) << item.content;
      ::chmod(path.c_str(), item.kind == 'x' ? 0755 : 0644);
    }
  }
  for (const Item& item : items) {
    const timespec times[2] = {{item.modTime, 0}, {item.modTime, 0}};
    ::utimensat(AT_FDCWD, (folder + "/" + item.path).c_str(), times, AT_SYMLINK_NOFOLLOW);
  }
}

void make(SimulatedFileSystem& files, const std::string& folder, const Items& items) {
  for (const Item& item : items) {
    const std::string path = folder + "/" + item.path;
    if (item.kind == 'd') (void)files.makeFolder(path);
    if (item.kind == 'l') files.makeLink(path, item.content);
    if (item.kind == 'p') files.makeOther(path);
    if (item.kind == '-' || item.kind == 'x') files.write(path, item.content);
    if (item.kind == 'x') files.setMode(path, 0755);
  }
  for (const Item& item : items) files.setTime(folder + "/" + item.path, item.modTime);
}

std::string shown(char kind, std::int64_t time, unsigned mode, const std::string& content) {
  return std::string(1, kind) + " " + (time >= Now ? "now" : std::to_string(time - T)) + " " +
         (kind == '-' ? std::to_string(mode & 0111U) + " " + content : content);
}

using Shown = std::map<std::string, std::string>;

Shown show(const std::string& folder) {
  Shown result;
  if (!fs::exists(folder)) return result;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    struct stat status {};
    ::lstat(entry.path().c_str(), &status);
    std::string content;
    if (S_ISLNK(status.st_mode)) content = fs::read_symlink(entry.path()).string();
    if (S_ISREG(status.st_mode)) {
      std::ostringstream text;
      text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
      content = text.str();
    }
    const char kind = S_ISLNK(status.st_mode) ? 'l' : S_ISDIR(status.st_mode) ? 'd' : '-';
    result[fs::relative(entry.path().parent_path(), folder) / entry.path().filename()] =
        shown(kind, status.st_mtime, status.st_mode, content);
  }
  return result;
}

Shown show(SimulatedFileSystem& files, const std::string& folder) {
  Shown result;
  if (!files.isFolder(folder)) return result;
  const auto opened = files.open(folder);
  (*opened)->walk(
      "",
      [&](std::string_view path, const FileAttributes& attributes) {
        const std::string full = folder + "/" + std::string(path);
        const char kind = "-dl"[static_cast<int>(attributes.kind)];
        const std::string content = kind == 'l'   ? files.linkTarget(full)
                                    : kind == '-' ? files.readAll(full).value_or("")
                                                  : "";
        const fs::path name{std::string(path)};
        result[(name.has_parent_path() ? name.parent_path() : ".") / name.filename()] =
            shown(kind, attributes.modTime, attributes.mode, content);
        return Folder::Visit::Enter;
      },
      [](std::string_view, const Failure&) {});
  return result;
}

/// Directory sizes are the file system's own affair, the order is the tool's.
std::vector<std::string> listedLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("d")) line.replace(10, 15, "              -");
    if (line.starts_with("p") || line.starts_with("s")) line[0] = 's';
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

/// The same folder "Docs" served twice, and a client of each.
class StandInTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Many connections: one that has ended keeps its slot for a moment.
    const std::string modules =
        "\n[Docs]\npath = FOLDER/remote/\nmax connections = 50\nread only = yes\ncomment = c\n"
        "[Secret]\npath = FOLDER/remote/\nauth users = " +
        hexHash("Secret") +
        "\nsecrets file = FOLDER/secrets\n"
        "[Unready]\npath = FOLDER/remote/\nauth users = " +
        hexHash("Unready") + "\n";
    if (!RealTool::isInstalled()) GTEST_SKIP() << "the transfer tool is not installed";
    real.emplace(modules);
    // Both sides see the same absolute paths, which the arguments carry.
    std::string text = modules;
    for (auto at = text.find("FOLDER"); at != std::string::npos; at = text.find("FOLDER")) {
      text.replace(at, 6, real->folder());
    }
    served.files.write("/etc/config", text);
    ProcessRequest request{"/usr/libexec/zolvar/zolvar",
                           {"--daemon", "--port=49999", "--config=/etc/config"},
                           {},
                           "",
                           false};
    ASSERT_EQ((*served.processes.start(request))->wait({}, {}).status, 0);
    addFile("secrets", "#x\n" + hexHash("Secret") + ":open\n");
  }
  void addFile(const std::string& name, const std::string& content) {
    std::ofstream(real->folder() + "/" + name) << content;
    ::chmod((real->folder() + "/" + name).c_str(), 0600);
    served.files.write(real->folder() + "/" + name, content);
    served.files.setMode(real->folder() + "/" + name, 0600);
  }
  void makeBoth(const Items& remote, const Items& local) {
    fs::create_directories(real->folder() + "/local");
    ASSERT_TRUE(client.files.makeFolder(real->folder() + "/local"));
    make(real->folder() + "/remote", remote);
    make(served.files, real->folder() + "/remote", remote);
    make(real->folder() + "/local", local);
    make(client.files, real->folder() + "/local", local);
  }
  using Arguments = std::function<std::vector<std::string>(const ParticipantAddress&)>;
  /// Runs both; expects the same status and, up to times of transfer, the same files.
  void runBoth(const std::string& what, const Arguments& arguments, const std::string& input = {},
               const std::string& password = "guestpass", const std::string& module = "Docs") {
    SCOPED_TRACE(what);
    const auto ended =
        real->run(arguments({"user", "127.0.0.1", real->port(), module}), input, password);
    ProcessRequest request{"/usr/libexec/zolvar/zolvar",
                           arguments({"user", "served.local", 49999, module}),
                           {{"RSYNC_PASSWORD", password}},
                           input,
                           true};
    std::string output;
    std::string errors;
    const auto simulated =
        (*client.processes.start(request))
            ->wait({10, 60},
                   {[&](auto text) { output += text; }, [&](auto text) { errors += text; }, {}});
    EXPECT_EQ(simulated.status, ended.status) << ended.errors;
    for (const char* reason : {"auth failed", "Unknown module"}) {
      EXPECT_EQ(errors.find(reason) == std::string::npos,
                ended.errors.find(reason) == std::string::npos)
          << reason << "\n"
          << ended.errors;
    }
    EXPECT_EQ(show(client.files, real->folder() + "/local"), show(real->folder() + "/local"));
    EXPECT_EQ(show(client.files, real->folder() + "/saved"), show(real->folder() + "/saved"));
    if (request.arguments.front() == "--recursive") {
      EXPECT_EQ(listedLines(output), listedLines(ended.output));
    }
  }
  static Arguments listing(bool logsOnly) {
    return [=](const auto& address) {
      return listingArguments(transferUrl(address, address.poolName, logsOnly));
    };
  }
  Arguments logLoad() {
    return [this](const auto& address) {
      const std::string folder = real->folder() + "/local";
      return logLoadArguments(folder + "/.Zolvar/me@client.local.fplog",
                              transferUrl(address, address.poolName, true), folder);
    };
  }
  Arguments copying(bool updatesOnly, bool saves, unsigned limit = 0) {
    return [=, this](const auto& address) {
      return copyArguments({limit, saves ? real->folder() + "/saved" : "", updatesOnly},
                           transferUrl(address, address.poolName, false),
                           real->folder() + "/local");
    };
  }

  std::optional<RealTool> real;
  SimulatedWorld world;
  SimulatedPlatform served{world, "served"};
  SimulatedPlatform client{world, "client"};
};

TEST_F(StandInTest, listsAsTheToolDoes) {
  makeBoth({{"a", '-', "hi", T},
            {"big name", '-', std::string(1'234'567, 'x'), T + 1},
            {"tab\there", '-', "1", T},
            {"bell\x07", '-', "1", T},
            {"b\\#101", '-', "1", T},
            {"\xc3\xa9t\xc3\xa9", '-', "1", T},
            {"bad\xff", '-', "1", T},
            {"tool", 'x', "1", T + 86400L * 180},
            {"link", 'l', "a", T + 2},
            {"away", 'l', "/etc/passwd", T + 2},
            {"pipe", 'p', "", T},
            {"sub/deep/f", '-', "deep", 86400},
            {".Zolvar/me@client.local.fplog", '-', "1,2\n", T},
            {".Zolvar/todos.plist", '-', "x", T},
            {".Zolvar", 'd', "", T},
            {"sub/deep", 'd', "", T + 7},
            {"empty", 'd', "", T + 8},
            {"sub", 'd', "", T + 9},
            {"", 'd', "", T}},
           {});
  runBoth("folder", listing(false));
  runBoth("metadata", listing(true));
}

TEST_F(StandInTest, loadsLogsAsTheToolDoes) {
  makeBoth({{".Zolvar/new@a.local.fplog", '-', "new", T},
            {".Zolvar/me@client.local.fplog", '-', "mine, served by the other", T + 5},
            {".Zolvar/older@a.local.fplog", '-', "older there", T},
            {".Zolvar/newer@a.local.fplog", '-', "newer there", T + 5},
            {".Zolvar/grown@a.local.fplog", '-', "same second, more", T},
            {".Zolvar/twin@a.local.fplog", '-', "BBBB", T},
            {".Zolvar/todos.plist", '-', "theirs", T},
            {".Zolvar/linked@a.local.fplog", 'l', "todos.plist", T},
            {".Zolvar/folder/x@y.fplog", '-', "deep", T},
            {".Zolvar/folder", 'd', "", T + 1},
            {".Zolvar", 'd', "", T + 2},
            {"file", '-', "not asked for", T}},
           {{".Zolvar/me@client.local.fplog", '-', "mine", T},
            {".Zolvar/older@a.local.fplog", '-', "newer here", T + 5},
            {".Zolvar/newer@a.local.fplog", '-', "older here", T},
            {".Zolvar/grown@a.local.fplog", '-', "same second", T},
            {".Zolvar/twin@a.local.fplog", '-', "AAAA", T},
            {".Zolvar", 'd', "", T},
            {"file", '-', "stays", T}});
  runBoth("logs", logLoad());
}

TEST_F(StandInTest, copiesAsTheToolDoes) {
  const Items remote = {{"new/sub/file", '-', "new", T},
                        {"new/sub/other", '-', "unasked", T},
                        {"newer", '-', "newer there", T + 5},
                        {"older", '-', "older there", T},
                        {"same", '-', "BBBB", T},
                        {"grown", '-', "longer", T},
                        {"tool", 'x', "run", T},
                        {"plain", '-', "no longer run", T + 5},
                        {"folder/inside", '-', "unasked", T},
                        {"link", 'l', "newer", T},
                        {"folder/up", 'l', "../newer", T},
                        {"folder/escape", 'l', "../../x", T},
                        {"folder/turn", 'l', "a/../newer", T},
                        {"away", 'l', "/etc/passwd", T},
                        {"relinked", 'l', "older", T},
                        {"pipe", 'p', "", T},
                        {"wasFile/inside", '-', "in", T},
                        {"wasLink/inside", '-', "in", T},
                        {"wasEmpty", '-', "file now", T},
                        {"wasFull", '-', "file now", T},
                        {"wasLinkFile", '-', "file now", T},
                        {"wasFileLink", 'l', "newer", T},
                        {"wasFull2", 'l', "newer", T},
                        {"#odd ;name", '-', "odd", T},
                        {"-dash", '-', "dash", T},
                        {" blank ", '-', "blank", T},
                        {"\xc3\xa9", '-', "accent", T},
                        {"new/sub", 'd', "", T + 3},
                        {"wasFile", 'd', "", T + 5},
                        {"wasLink", 'd', "", T + 6},
                        {"new", 'd', "", T + 4},
                        {"folder", 'd', "", T + 7}};
  const Items local = {{"newer", '-', "older here", T},
                       {"older", '-', "newer here", T + 5},
                       {"same", '-', "AAAA", T},
                       {"grown", '-', "short", T},
                       {"plain", 'x', "run", T},
                       {"relinked", 'l', "grown", T + 9},
                       {"wasFile", '-', "a file here", T + 9},
                       {"wasLink", 'l', "newer", T},
                       {"wasEmpty", 'd', "", T},
                       {"wasFull/x", '-', "keeps", T},
                       {"wasLinkFile", 'l', "older", T + 9},
                       {"wasFileLink", '-', "file", T + 9},
                       {"wasFull2/x", '-', "keeps", T},
                       {"wasFull", 'd', "", T},
                       {"wasFull2", 'd', "", T},
                       {"", 'd', "", T}};
  std::string input = "gone\nfolder/gone\nfolder/up\nfolder/escape\nfolder/turn\nnew/sub/file\n";
  for (const Item& item : remote) {
    if (item.path.find('/') == std::string::npos && item.path != "new") input += item.path + "\n";
  }
  input += "wasFile/inside\nwasLink/inside\n";
  makeBoth(remote, local);
  runBoth("first run", copying(true, true), input);
  runBoth("what looks newer here", copying(false, true, 1000), "older\nnewer\n");
  runBoth("nothing to do", copying(true, false), "newer\nnew/sub/file\n");
}

TEST_F(StandInTest, copiesWithoutSavingAsTheToolDoes) {
  makeBoth({{"file", '-', "there", T},
            {"wasFile/inside", '-', "in", T},
            {"wasFile", 'd', "", T},
            {"link", 'l', "file", T}},
           {{"file", '-', "here!", T + 9},
            {"wasFile", '-', "file", T},
            {"link", '-', "x", T},
            {"", 'd', "", T}});
  runBoth("copy", copying(false, false), "file\nwasFile/inside\nlink\n");
}

TEST_F(StandInTest, refusesAsTheToolDoes) {
  makeBoth({{"a", '-', "a", T}, {"", 'd', "", T}}, {{"", 'd', "", T}});
  runBoth("no such module", listing(false), "", "guestpass", "Nothing");
  runBoth("no metadata", logLoad(), "", "guestpass", "Docs");
  for (const char* password : {"open", "wrong", "guestpass"}) {
    runBoth(std::string("password ") + password, listing(false), "", password, "Secret");
    runBoth(std::string("no secrets file, ") + password, listing(false), "", password, "Unready");
  }
  ::chmod((real->folder() + "/secrets").c_str(), 0644);
  served.files.setMode(real->folder() + "/secrets", 0644);
  runBoth("secrets that all can read", listing(false), "", "open", "Secret");
  const auto closed = [&](const auto& address) {
    auto other = address;
    other.port = 1;
    return listingArguments(transferUrl(other, "Docs", false));
  };
  runBoth("nobody listens", closed);
}

}  // namespace
}  // namespace zolvar
