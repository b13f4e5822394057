#include "addressbook/BookUnderTest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdlib>
#include <stdexcept>

#include "addressbook/AddressBookChoice.h"
#include "addressbook/CardBook.h"
#include "addressbook/CardFolder.h"
#include "platform/PlatformFixture.h"
#include "platform/qt/PosixFileSystem.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/ThreadLanes.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {
namespace {

constexpr double LongestWait = 20;  // seconds

/// A folder in memory, in virtual time.
class SimulatedFolderUnderTest : public BookUnderTest {
 public:
  Platform& platform() override { return simulated_; }
  std::unique_ptr<AddressBook> open(NotificationCenter& center) override {
    return std::make_unique<CardBook>(
        std::make_unique<CardFolder>(platform(), CardFolder::pathFor(platform())), platform(),
        center);
  }
  bool runUntil(const std::function<bool()>& condition) override {
    return simulated_.loop.runUntil(condition, LongestWait);
  }

 private:
  SimulatedPlatform simulated_;
};

/// The real run loop, lanes and files; everything else is simulated.
class RealUnderTest : public BookUnderTest {
 public:
  ~RealUnderTest() override { lanes_.finishAll(LongestWait); }
  Platform& platform() override { return platform_; }
  bool runUntil(const std::function<bool()>& condition) override {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
      if (timer.elapsed() > LongestWait * 1000) return false;
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
  }

 private:
  SimulatedPlatform simulated_;
  QtRunLoop loop_{simulated_.log};
  ThreadLanes lanes_{simulated_.log};
  PosixFileSystem files_{loop_};
  Platform platform_{simulated_.clock,
                     simulated_.random,
                     loop_,
                     lanes_,
                     files_,
                     simulated_.processes,
                     simulated_.services,
                     simulated_.hosts,
                     simulated_.secrets,
                     simulated_.defaults,
                     simulated_.workspace,
                     simulated_.networkWatch,
                     simulated_.firewall,
                     simulated_.log};
};

class FolderUnderTest : public RealUnderTest {
 public:
  std::unique_ptr<AddressBook> open(NotificationCenter& center) override {
    return std::make_unique<CardBook>(
        std::make_unique<CardFolder>(platform(), folder_.path("cards")), platform(), center);
  }

 private:
  const TemporaryFolder folder_;
};

/// The desktop's address book, which with-eds.sh has started for us. It is emptied first.
class ServerUnderTest : public RealUnderTest {
 public:
  ServerUnderTest() {
    NotificationCenter center;
    const auto book = open(center);
    (void)book->groups();
    if (!runUntil([&] { return book->people().has_value(); })) return;
    const auto people = book->people();
    for (const auto& person : *people) (void)book->removePerson(person.uniqueId);
    (void)book->save();
    const auto after = open(center);
    runUntil([&] { return after->people().has_value() && after->people()->empty(); });
  }
  std::unique_ptr<AddressBook> open(NotificationCenter& center) override {
    auto cards = loadServerCards(platform(), serverModuleFolder());
    if (!cards) throw std::runtime_error(cards.error().message());
    return std::make_unique<CardBook>(std::move(*cards), platform(), center);
  }
};

}  // namespace

std::string serverModuleFolder() {
  return (QCoreApplication::applicationDirPath() + "/../libexec/zolvar").toStdString();
}

std::vector<BookKind> bookKinds() {
  return {{"SimulatedFolder", [](auto&) { return std::make_unique<SimulatedFolderUnderTest>(); }},
          {"Folder", [](auto&) { return std::make_unique<FolderUnderTest>(); }},
          {"Server", [](auto& whyNot) -> std::unique_ptr<BookUnderTest> {
             if (std::getenv("ZOLVAR_TEST_EDS") != nullptr) {
               return std::make_unique<ServerUnderTest>();
             }
             whyNot = "needs the server of tests/addressbook/with-eds.sh";
             return nullptr;
           }}};
}

}  // namespace zolvar
