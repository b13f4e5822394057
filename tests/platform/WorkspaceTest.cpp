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

const QString Notifications = QStringLiteral("org.freedesktop.Notifications");
const QString NotificationsPath = QStringLiteral("/org/freedesktop/Notifications");

/// A notification service that shows nothing.
class NotificationsStub : public QDBusVirtualObject {
 public:
  explicit NotificationsStub(QStringList capabilities)
      : capabilities_(std::move(capabilities)),
        bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("stub"))) {
    EXPECT_TRUE(bus_.registerVirtualObject(NotificationsPath, this));
    EXPECT_TRUE(bus_.registerService(Notifications));
  }
  ~NotificationsStub() override {
    bus_.unregisterService(Notifications);
    bus_.unregisterObject(NotificationsPath);
    QDBusConnection::disconnectFromBus(QStringLiteral("stub"));
  }
  void tell(const char* signal, const QVariantList& arguments) {
    QDBusMessage message =
        QDBusMessage::createSignal(NotificationsPath, Notifications, QString::fromLatin1(signal));
    message.setArguments(arguments);
    bus_.send(message);
  }
  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    if (message.member() == QStringLiteral("GetCapabilities")) {
      bus.send(message.createReply(capabilities_));
    } else if (message.member() == QStringLiteral("Notify")) {
      shown.push_back(message.arguments());
      bus.send(message.createReply(static_cast<uint>(100 + shown.size())));
    }
    return true;
  }

  std::vector<QVariantList> shown;

 private:
  QStringList capabilities_;
  QDBusConnection bus_;
};

class NoticesTest : public ServiceTest {};

TEST_F(NoticesTest, answersClicksOnItsOwnNoticesOnly) {
  NotificationsStub stub({QStringLiteral("actions"), QStringLiteral("body-markup")});
  DesktopWorkspace workspace(log_);
  int clicks = 0;
  workspace.show({"Title <a>", "a <b> & c", true, 7}, [&] { clicks += 1; });
  workspace.show({"Second", "text"}, [&] { clicks += 10; });
  ASSERT_TRUE(waitFor([&] { return stub.shown.size() == 2; }));
  const QVariantList first = stub.shown.front();
  EXPECT_EQ(first.at(1).toUInt(), 7u);
  EXPECT_EQ(first.at(3).toString(), QStringLiteral("Title <a>"));
  EXPECT_EQ(first.at(4).toString(), QStringLiteral("a &lt;b&gt; &amp; c"));
  EXPECT_EQ(first.at(5).toStringList().value(0), QStringLiteral("default"));
  const struct {
    const char* signal;
    uint id;
    QVariant argument;
    int expected;
  } rows[] = {{"ActionInvoked", 999, QStringLiteral("default"), 0},  // another program's
              {"ActionInvoked", 101, QStringLiteral("other"), 0},
              {"ActionInvoked", 101, QStringLiteral("default"), 1},
              {"NotificationClosed", 102, 2u, 1},
              {"ActionInvoked", 102, QStringLiteral("default"), 1},
              {"ActionInvoked", 101, QStringLiteral("default"), 2}};
  for (const auto& row : rows) {
    stub.tell(row.signal, {row.id, row.argument});
    runFor(0.05);
    EXPECT_EQ(clicks, row.expected) << row.signal << " " << row.id;
  }
}

TEST_F(NoticesTest, fitsAPlainServiceAndDoesWithoutAny) {
  DesktopWorkspace workspace(log_);
  workspace.show({"Lost", "nobody answers"}, nullptr);
  runFor(0.1);
  NotificationsStub stub({});
  workspace.show({"Title", "a < b"}, [] {});
  ASSERT_TRUE(waitFor([&] { return stub.shown.size() == 1; }));
  EXPECT_EQ(stub.shown.front().at(4).toString(), QStringLiteral("a < b"));
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
  EXPECT_NE(content().find("\nExec=\"/usr/bin/zolvar-desktop\"\n"), std::string::npos);
  ASSERT_TRUE(entry.enable("/opt/a \"b\" $c\\100%/zolvar"));
  EXPECT_NE(content().find("\nExec=\"/opt/a \\\\\"b\\\\\" \\\\$c\\\\\\\\100%%/zolvar\"\n"),
            std::string::npos)
      << content();
  ASSERT_TRUE(entry.disable());
  ASSERT_TRUE(entry.disable());
  EXPECT_FALSE(std::filesystem::exists(entry.path()));
}

}  // namespace
}  // namespace zolvar
