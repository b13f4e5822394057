#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVirtualObject>

#include "ServiceTest.h"
#include "platform/qt/FirewalldQuery.h"
#include "platform/qt/LinuxFirewall.h"
#include "platform/qt/UfwRules.h"

namespace zolvar {
namespace {

using Ports = QList<QPair<QString, QString>>;
using ActiveZones = QMap<QString, QMap<QString, QStringList>>;

TEST(UfwRules, lookForTheFirstRuleThatFits) {
  const std::string drop = "IPV6=yes\nDEFAULT_INPUT_POLICY=\"DROP\"\n";
  const std::string accept = "DEFAULT_INPUT_POLICY=\"ACCEPT\"\n";
  const auto tuple = [](const std::string& rule) { return "### tuple ### " + rule + "\n-A x\n"; };
  constexpr auto Open = FirewallAnswer::Open;
  constexpr auto Blocked = FirewallAnswer::Blocked;
  const struct {
    std::string defaults;
    std::string rules;
    FirewallAnswer expected;
  } rows[] = {
      {drop, "", Blocked},
      {accept, "", Open},
      {"", "", FirewallAnswer::CannotTell},
      {drop, tuple("allow tcp 49999 0.0.0.0/0 any 0.0.0.0/0 in"), Open},
      {drop, tuple("allow any 49999 0.0.0.0/0 any 192.168.0.0/16 in"), Open},
      {drop, tuple("limit tcp 1:60000 0.0.0.0/0 any 0.0.0.0/0 in"), Open},
      {drop, tuple("allow_log tcp 22,49990:49999 0.0.0.0/0 any 0.0.0.0/0 in_eth0"), Open},
      {drop, tuple("allow udp 49999 0.0.0.0/0 any 0.0.0.0/0 in"), Blocked},
      {drop, tuple("allow tcp 49998 0.0.0.0/0 any 0.0.0.0/0 in"), Blocked},
      {drop, tuple("allow tcp 49999 0.0.0.0/0 any 0.0.0.0/0 out"), Blocked},
      {drop, tuple("route:allow tcp 49999 0.0.0.0/0 any 0.0.0.0/0 in"), Blocked},
      {drop, tuple("allow any any 0.0.0.0/0 any 10.0.0.0/8 in"), Open},
      {accept, tuple("deny tcp 49999 0.0.0.0/0 any 0.0.0.0/0 in"), Blocked},
      {accept, tuple("reject tcp 49999 0.0.0.0/0 any 10.1.1.1 in"), Open},
      {drop,
       tuple("deny tcp 49999 0.0.0.0/0 any 0.0.0.0/0 in") +
           tuple("allow tcp 49999 0.0.0.0/0 any 0.0.0.0/0 in"),
       Blocked},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ufwAnswer({"# x\nENABLED=yes\n", row.defaults, row.rules}, 49999), row.expected)
        << row.defaults << row.rules;
  }
  EXPECT_EQ(ufwAnswer({"ENABLED=yes\n", drop, std::nullopt}, 49999), FirewallAnswer::CannotTell);
  EXPECT_FALSE(ufwAnswer({"ENABLED=no\n", drop, ""}, 49999));
  EXPECT_FALSE(ufwAnswer({std::nullopt, drop, ""}, 49999));
}

TEST(FirewalldRules, joinZones) {
  EXPECT_TRUE(isVirtualInterface("docker0"));
  EXPECT_FALSE(isVirtualInterface("br0"));
  const auto open = FirewallAnswer::Open;
  EXPECT_EQ(joinedAnswer(open, FirewallAnswer::Blocked), FirewallAnswer::Blocked);
  EXPECT_EQ(joinedAnswer(FirewallAnswer::CannotTell, open), FirewallAnswer::CannotTell);
  EXPECT_EQ(joinedAnswer(open, open), open);
}

/// A firewalld with the zones "home" (eth0) and "trusted" (docker0), and the default zone "public".
class FirewalldStub : public QDBusVirtualObject {
 public:
  FirewalldStub() : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, Name)) {
    qDBusRegisterMetaType<Ports>();
    qDBusRegisterMetaType<QPair<QString, QString>>();
    qDBusRegisterMetaType<QMap<QString, QStringList>>();
    qDBusRegisterMetaType<ActiveZones>();
    EXPECT_TRUE(bus_.registerVirtualObject("/org/fedoraproject/FirewallD1", this));
    EXPECT_TRUE(bus_.registerService("org.fedoraproject.FirewallD1"));
    zones["trusted"]["target"] = "ACCEPT";
    zones["public"]["target"] = "default";
    zones["home"] = zones["public"];
  }
  ~FirewalldStub() override {
    bus_.unregisterService("org.fedoraproject.FirewallD1");
    QDBusConnection::disconnectFromBus(Name);
  }
  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    asked.append(message.member());
    const QString argument = message.arguments().value(0).toString();
    if (isMute || (refuses == message.member())) {
      if (!isMute) bus.send(message.createErrorReply(QDBusError::AccessDenied, QString()));
    } else if (message.member() == "getActiveZones") {
      const auto named = [](const char* interface) {
        return QMap<QString, QStringList>{{"interfaces", {interface}}};
      };
      bus.send(message.createReply(QVariant::fromValue(
          ActiveZones{{"home", named("eth0")}, {"trusted", named("docker0")}})));
    } else if (message.member() == "getDefaultZone") {
      bus.send(message.createReply("public"));
    } else if (message.member() == "getZoneSettings2") {
      bus.send(message.createReply(zones[argument]));
    } else if (message.member() == "getServiceSettings2") {
      bus.send(message.createReply(services[argument]));
    }
    return true;
  }

  QMap<QString, QVariantMap> zones;
  QMap<QString, QVariantMap> services;
  QStringList asked;
  QString refuses;  ///< a method
  bool isMute = false;

 private:
  inline static const QString Name = "firewalld";
  QDBusConnection bus_;
};

/// A polkit that lets nobody look at the settings without a password.
class PolkitStub : public QDBusVirtualObject {
 public:
  PolkitStub() : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, Name)) {
    EXPECT_TRUE(bus_.registerVirtualObject("/org/freedesktop/PolicyKit1/Authority", this));
    EXPECT_TRUE(bus_.registerService("org.freedesktop.PolicyKit1"));
  }
  ~PolkitStub() override {
    bus_.unregisterService("org.freedesktop.PolicyKit1");
    QDBusConnection::disconnectFromBus(Name);
  }
  [[nodiscard]] QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    signature = message.signature();
    flags = message.arguments().value(3).toUInt();
    QDBusArgument result;
    result.beginStructure();
    result << isAllowed << !isAllowed;
    result.beginMap(QMetaType(QMetaType::QString), QMetaType(QMetaType::QString));
    result.endMap();
    result.endStructure();
    bus.send(message.createReply(QVariant::fromValue(result)));
    return true;
  }

  bool isAllowed = false;
  QString signature;
  uint flags = 99;

 private:
  inline static const QString Name = "polkit";
  QDBusConnection bus_;
};

class FirewallServiceTest : public ServiceTest {
 protected:
  /// None: firewalld does not run.
  std::optional<FirewallAnswer> ask(std::set<std::string> interfaces) {
    bool isAnswered = false;
    std::optional<FirewallAnswer> result;
    const FirewalldQuery query(QDBusConnection::sessionBus(), std::move(interfaces), 49999,
                               [&](auto answer) {
                                 EXPECT_FALSE(std::exchange(isAnswered, true));
                                 result = answer;
                               });
    EXPECT_FALSE(isAnswered);
    EXPECT_TRUE(runUntil([&] { return isAnswered; }));
    return result;
  }
};

TEST_F(FirewallServiceTest, asksTheZonesOfTheLocalNetwork) {
  EXPECT_FALSE(ask({"eth0"}));
  FirewalldStub stub;
  const auto home = QString("home");
  const auto ports = QString("ports");
  const auto opened = [](const char* range, const char* protocol) {
    return QVariant::fromValue(Ports{{range, protocol}});
  };
  EXPECT_EQ(ask({"eth0"}), FirewallAnswer::Blocked);
  EXPECT_EQ(ask({"docker0"}), FirewallAnswer::Open);
  const std::pair<QVariant, FirewallAnswer> rows[] = {
      {opened("49999", "tcp"), FirewallAnswer::Open},
      {opened("49000-50000", "tcp"), FirewallAnswer::Open},
      {opened("49999", "udp"), FirewallAnswer::Blocked},
      {opened("50000-50010", "tcp"), FirewallAnswer::Blocked},
  };
  for (const auto& [value, expected] : rows) {
    stub.zones[home][ports] = value;
    EXPECT_EQ(ask({"eth0"}), expected);
  }
  // wlan0 is in no zone of its own, so the default one holds for it.
  stub.zones[home][ports] = opened("49999", "tcp");
  EXPECT_EQ(ask({"eth0", "wlan0"}), FirewallAnswer::Blocked);
  stub.zones["public"]["services"] = QStringList{"ssh", "zolvar"};
  stub.services["zolvar"][ports] = opened("49999", "tcp");
  EXPECT_EQ(ask({"eth0", "wlan0"}), FirewallAnswer::Open);
  stub.refuses = "getServiceSettings2";
  EXPECT_EQ(ask({"eth0", "wlan0"}), FirewallAnswer::CannotTell);
  stub.refuses = "getActiveZones";
  EXPECT_EQ(ask({"eth0"}), FirewallAnswer::CannotTell);
  stub.refuses.clear();
  stub.zones[home] = {{"rules_str", QStringList{"rule accept"}}};
  EXPECT_EQ(ask({"eth0"}), FirewallAnswer::CannotTell);
}

TEST_F(FirewallServiceTest, neverHasAPasswordAskedFor) {
  FirewalldStub stub;
  PolkitStub polkit;
  EXPECT_EQ(ask({"eth0"}), FirewallAnswer::CannotTell);
  EXPECT_FALSE(stub.asked.contains("getZoneSettings2"));
  EXPECT_EQ(polkit.signature, "(sa{sv})sa{ss}us");
  EXPECT_EQ(polkit.flags, 0U);
  polkit.isAllowed = true;
  EXPECT_EQ(ask({"eth0"}), FirewallAnswer::Blocked);
}

TEST_F(FirewallServiceTest, waitsForNobody) {
  FirewalldStub stub;
  stub.isMute = true;
  {
    const FirewalldQuery query(QDBusConnection::sessionBus(), {"eth0"}, 49999,
                               [](auto) { ADD_FAILURE() << "answered"; });
    runFor(0.05);
  }
  runFor(0.05);
  // The real one, with no firewalld on this system bus.
  LinuxFirewall firewall(loop_);
  std::optional<FirewallAnswer> answer;
  firewall.ask(49999, [&](FirewallAnswer given) { answer = given; });
  EXPECT_FALSE(answer);
  EXPECT_TRUE(runUntil([&] { return answer.has_value(); }));
}

}  // namespace
}  // namespace zolvar
