#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ServiceTest.h"
#include "platform/qt/AutostartEntry.h"
#include "platform/qt/DesktopWorkspace.h"

namespace zolvar {
namespace {

const QString Notifications = "org.freedesktop.Notifications";
const QString NotificationsPath = "/org/freedesktop/Notifications";

/// A notification service that shows nothing.
class NotificationsStub : public QDBusVirtualObject {
 public:
  explicit NotificationsStub(QStringList capabilities)
      : capabilities_(std::move(capabilities)),
        bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "stub")) {
    EXPECT_TRUE(bus_.registerVirtualObject(NotificationsPath, this));
    EXPECT_TRUE(bus_.registerService(Notifications));
  }
  ~NotificationsStub() override {
    bus_.unregisterService(Notifications);
    bus_.unregisterObject(NotificationsPath);
    QDBusConnection::disconnectFromBus("stub");
  }
  void tell(const char* signal, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createSignal(NotificationsPath, Notifications, signal);
    message.setArguments(arguments);
    bus_.send(message);
  }
  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    if (message.member() == "GetCapabilities") {
      bus.send(message.createReply(capabilities_));
    } else if (message.member() == "Notify") {
      shown.push_back(message.arguments());
      if (isSlow) {
        unanswered.push_back(message);
      } else {
        answer(message);
      }
    } else if (message.member() == "CloseNotification") {
      withdrawn.push_back(message.arguments().value(0).toUInt());
    }
    return true;
  }

  void answer(const QDBusMessage& message) {
    const uint replaced = message.arguments().value(1).toUInt();
    bus_.send(message.createReply(replaced != 0 ? replaced : ++lastId_));
  }

  bool isSlow = false;  ///< answers nothing by itself
  std::vector<QVariantList> shown;
  std::vector<QDBusMessage> unanswered;
  std::vector<uint> withdrawn;

 private:
  uint lastId_ = 100;
  QStringList capabilities_;
  QDBusConnection bus_;
};

class NoticesTest : public ServiceTest {};

Notice noticeWith(const std::string& key, const std::string& title) {
  Notice notice;
  notice.key = key;
  notice.title = title;
  return notice;
}

TEST_F(NoticesTest, answersClicksOnItsOwnNoticesOnly) {
  NotificationsStub stub({"actions", "body-markup"});
  DesktopWorkspace workspace(log_);
  int clicks = 0;
  workspace.showNotice({"", "Title <a>", "a <b> & c", Notice::Urgency::Critical, true},
                       [&] { clicks += 1; });
  workspace.showNotice(noticeWith("", "Second"), [&] { clicks += 10; });
  ASSERT_TRUE(runUntil([&] { return stub.shown.size() == 2; }));
  const QVariantList first = stub.shown.front();
  EXPECT_EQ(first.at(1).toUInt(), 0u);
  EXPECT_EQ(first.at(3).toString(), "Title <a>");
  EXPECT_EQ(first.at(4).toString(), "a &lt;b&gt; &amp; c");
  EXPECT_EQ(first.at(5).toStringList().value(0), "default");
  EXPECT_EQ(first.at(7).toInt(), 0);  // stays
  const auto hints = qdbus_cast<QVariantMap>(first.at(6));
  EXPECT_EQ(hints.value("urgency").toInt(), 2);
  const struct {
    const char* signal;
    uint id;
    QVariant argument;
    int expected;
  } rows[] = {{"ActionInvoked", 999, "default", 0},  // another program's
              {"ActionInvoked", 101, "other", 0},   {"ActionInvoked", 101, "default", 1},
              {"NotificationClosed", 102, 2u, 1},   {"ActionInvoked", 102, "default", 1},
              {"ActionInvoked", 101, "default", 2}};
  for (const auto& row : rows) {
    stub.tell(row.signal, {row.id, row.argument});
    runFor(0.05);
    EXPECT_EQ(clicks, row.expected) << row.signal << " " << row.id;
  }
}

TEST_F(NoticesTest, leavesNothingOnTheScreenAtTheEnd) {
  NotificationsStub stub({});
  auto workspace = std::make_unique<DesktopWorkspace>(log_);
  for (const bool isSticky : {true, false, true}) {
    workspace->showNotice({"", "Title", "", Notice::Urgency::Normal, isSticky}, {});
  }
  ASSERT_TRUE(runUntil([&] { return stub.shown.size() == 3; }));
  runFor(0.1);  // for the answers
  workspace.reset();
  EXPECT_TRUE(runUntil([&] { return stub.withdrawn == std::vector<uint>{101, 103}; }));
}

TEST_F(NoticesTest, showsOneNoticeAKeyEvenAtASlowService) {
  NotificationsStub stub({});
  DesktopWorkspace workspace(log_);
  const auto replaced = [&](std::size_t at) { return stub.shown.at(at).at(1).toUInt(); };
  const auto wasShown = [&](std::size_t count) {
    return runUntil([&] { return stub.shown.size() == count; });
  };
  workspace.showNotice(noticeWith("a", "first"), {});
  ASSERT_TRUE(wasShown(1));
  runFor(0.05);
  stub.isSlow = true;
  for (const char* title : {"second", "third", "fourth"}) {
    workspace.showNotice(noticeWith("a", title), {});
  }
  workspace.showNotice(noticeWith("b", "never seen"), {});
  ASSERT_TRUE(wasShown(3));
  EXPECT_EQ(replaced(1), 101u);
  workspace.withdrawNotice("b");
  stub.isSlow = false;
  for (const QDBusMessage& waiting : stub.unanswered) stub.answer(waiting);
  ASSERT_TRUE(wasShown(4));
  EXPECT_EQ(stub.shown.at(3).at(3).toString(), "fourth");
  EXPECT_EQ(replaced(3), 101u);
  EXPECT_TRUE(runUntil([&] { return stub.withdrawn == std::vector<uint>{102}; }));
  // Closed by its person, the next one is a new one.
  stub.tell("NotificationClosed", {101u, 2u});
  runFor(0.05);
  workspace.showNotice(noticeWith("a", "fifth"), {});
  ASSERT_TRUE(wasShown(5));
  EXPECT_EQ(replaced(4), 0u);
}

TEST_F(NoticesTest, fitsAPlainServiceAndDoesWithoutAny) {
  DesktopWorkspace workspace(log_);
  workspace.showNotice(noticeWith("key", "Lost"), nullptr);
  runFor(0.1);
  NotificationsStub stub({});
  workspace.showNotice({"key", "Title", "a < b"}, [] {});
  ASSERT_TRUE(runUntil([&] { return stub.shown.size() == 1; }));
  EXPECT_EQ(stub.shown.front().at(4).toString(), "a < b");
  EXPECT_TRUE(stub.shown.front().at(5).toStringList().isEmpty());
}

class AutostartTest : public AdapterTest {};

TEST_F(AutostartTest, startsAtLoginOnce) {
  const AutostartEntry entry(folder_.path());
  const auto content = [&] {
    std::ostringstream text;
    text << std::ifstream(entry.path()).rdbuf();
    return text.str();
  };
  ASSERT_TRUE(entry.enable("/usr/bin/zolvar-desktop"));
  const auto written = std::filesystem::last_write_time(entry.path());
  ASSERT_TRUE(entry.enable("/usr/bin/zolvar-desktop"));
  EXPECT_EQ(std::filesystem::last_write_time(entry.path()), written);
  EXPECT_NE(content().find("\nExec=\"/usr/bin/zolvar-desktop\" --hidden\n"), std::string::npos);
  ASSERT_TRUE(entry.enable("/opt/a \"b\" $c\\100%/zolvar"));
  EXPECT_NE(content().find("\nExec=\"/opt/a \\\\\"b\\\\\" \\\\$c\\\\\\\\100%%/zolvar\" --hidden\n"),
            std::string::npos)
      << content();
  EXPECT_TRUE(entry.isEnabled());
  std::ofstream(entry.path(), std::ios::app) << "Hidden = true\n";
  EXPECT_FALSE(entry.isEnabled());
  ASSERT_TRUE(entry.disable());
  ASSERT_TRUE(entry.disable());
  EXPECT_FALSE(entry.isEnabled());
  EXPECT_FALSE(std::filesystem::exists(entry.path()));
}

class ContactsTest : public AdapterTest {};

TEST_F(ContactsTest, openInWhatIsInstalled) {
  const auto install = [&](const std::string& program) {
    folder_.write(program, "#!/bin/sh\nprintf '%s|' " + program +
                               " \"$@\" > \"${0%/*}/new\"\n"
                               "mv \"${0%/*}/new\" \"${0%/*}/opened\"\n");
    std::filesystem::permissions(folder_.path(program), std::filesystem::perms::owner_all);
  };
  const QByteArray before = qgetenv("PATH");
  qputenv("PATH", QByteArray::fromStdString(folder_.path()) + ":" + before);
  DesktopWorkspace workspace(log_);
  const std::string address = "contacts:?source-uid=s&contact-uid=u&name=Ann%20Lee";
  install("evolution");
  workspace.open(address);
  EXPECT_TRUE(runUntil([&] { return folder_.content("opened") == "evolution|" + address + "|"; }));
  install("gnome-contacts");
  workspace.open(address);
  EXPECT_TRUE(
      runUntil([&] { return folder_.content("opened") == "gnome-contacts|--search|Ann Lee|"; }));
  qputenv("PATH", before);
}

}  // namespace
}  // namespace zolvar
