#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <filesystem>
#include <thread>

#include "app/AppHost.h"
#include "app/ControlRequest.h"
#include "cli/ControlClient.h"
#include "cli/ControlServer.h"

namespace zolvar {
namespace {

class ControlServerTest : public testing::Test {
 protected:
  ControlServerTest() {
    char pattern[] = "/tmp/zolvar-control-XXXXXX";
    directory = ::mkdtemp(pattern);
    path = directory + "/zolvar/control.sock";
    host.start();
    host.advance(1);
    server = std::make_unique<ControlServer>(*host.app, *host.operations, [] {});
  }
  ~ControlServerTest() override {
    server.reset();
    std::filesystem::remove_all(directory);
  }
  /// Runs `talk` on a client's thread while the server serves.
  void whileServing(const std::function<void()>& talk) {
    QEventLoop loop;
    std::thread client([&] {
      talk();
      QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    client.join();
  }

  int argumentCount = 1;
  char name[5] = "test";
  char* arguments[2] = {name, nullptr};
  QCoreApplication application{argumentCount, arguments};
  SimulatedWorld world;
  AppHost host{world, "alpha", "ann"};
  std::string directory;
  std::string path;
  std::unique_ptr<ControlServer> server;
};

TEST_F(ControlServerTest, answersItsUserAlone) {
  ASSERT_TRUE(server->listen(path));
  struct stat facts {};
  ASSERT_EQ(::stat(path.c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777U, 0600U);
  ASSERT_EQ(::stat((directory + "/zolvar").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777U, 0700U);
  whileServing([&] {
    ControlClient client;
    ASSERT_TRUE(client.connect(path));
    // Several requests at once, one of them cut in two, are answered in order.
    ASSERT_TRUE(client.send(R"({"command":"status"})"
                            "\n"
                            R"({"command":"list"})"
                            "\n"
                            "{"));
    EXPECT_NE(client.receive().value_or("").find("ann@alpha.local"), std::string::npos);
    EXPECT_EQ(client.receive(), R"({"data":[],"ok":true})");
    EXPECT_NE(client.receive().value_or("").find("no JSON"), std::string::npos);
  });
}

TEST_F(ControlServerTest, endsWithWhoWritesTooLongALine) {
  ASSERT_TRUE(server->listen(path));
  whileServing([&] {
    ControlClient client;
    ASSERT_TRUE(client.connect(path));
    (void)client.send(std::string(LongestControlLine + 100, 'x'));
    EXPECT_NE(client.receive().value_or("").find("too long"), std::string::npos);
    EXPECT_FALSE(client.receive());
  });
}

TEST_F(ControlServerTest, replacesAStaleSocketAndNoLivingOne) {
  ASSERT_TRUE(server->listen(path));
  ControlServer second(*host.app, *host.operations, [] {});
  EXPECT_FALSE(second.listen(path));
  server->endConversations();
  server.reset();

  // What a killed program leaves: a socket file that nobody listens on.
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int stale = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(::bind(stale, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ::close(stale);
  EXPECT_TRUE(second.listen(path));
}

TEST_F(ControlServerTest, letsClientsSeeTheEndOnlyWhenItGoes) {
  ASSERT_TRUE(server->listen(path));
  ControlClient client;
  whileServing([&] {
    ASSERT_TRUE(client.connect(path));
    ASSERT_TRUE(client.send(R"({"command":"watch"})"));
    EXPECT_TRUE(client.receive());
  });
  server->endConversations();
  EXPECT_FALSE(client.waitForClose(std::chrono::milliseconds(20)));
  server.reset();
  EXPECT_TRUE(client.waitForClose(std::chrono::milliseconds(1000)));
}

}  // namespace
}  // namespace zolvar
