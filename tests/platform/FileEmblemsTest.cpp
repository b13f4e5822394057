#include <QProcess>

#include "ServiceTest.h"
#include "platform/qt/PosixFileSystem.h"

namespace zolvar {
namespace {

/// What the desktop's own program says about a file's metadata.
std::string gio(const QStringList& arguments) {
  QProcess program;
  program.start("gio", arguments);
  program.waitForFinished();
  return program.readAllStandardOutput().toStdString();
}

class ServiceEmblemsTest : public ServiceTest {};

TEST_F(ServiceEmblemsTest, marksFilesInConflictBesideTheirOtherEmblems) {
  folder_.write("report", "x");
  const QString file = QString::fromStdString(folder_.path("report"));
  if (gio({"info", "-w", file}).find(" metadata ") == std::string::npos) {
    GTEST_SKIP() << "this session keeps no metadata of files";
  }
  gio({"set", "-t", "stringv", file, "metadata::emblems", "important"});
  PosixFileSystem files(loop_);
  auto opened = files.open(folder_.path());
  ASSERT_TRUE(opened);
  const auto emblems = [&] { return gio({"info", "-a", "metadata::emblems", file}); };
  const auto has = [&](const char* words) {
    return runUntil([&] { return emblems().find(words) != std::string::npos; });
  };
  ASSERT_TRUE((*opened)->setLabel("report", 6));
  EXPECT_TRUE(has("[important, zolvar-conflict]")) << emblems();
  folder_.write("report", "another file of that name, as a transfer makes");
  ASSERT_TRUE((*opened)->setLabel("report", 0));
  EXPECT_TRUE(has("[important]")) << emblems();
}

}  // namespace
}  // namespace zolvar
