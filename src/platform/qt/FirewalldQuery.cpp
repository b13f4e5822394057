#include "platform/qt/FirewalldQuery.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QLatin1String>
#include <QList>
#include <QMap>
#include <QPair>
#include <QStringList>
#include <QVariantMap>
#include <algorithm>
#include <iterator>
#include <utility>

namespace zolvar {

namespace {

const QString Service = QStringLiteral("org.fedoraproject.FirewallD1");
const QString Path = QStringLiteral("/org/fedoraproject/FirewallD1");
constexpr const char* Main = "org.fedoraproject.FirewallD1";
constexpr const char* Zone = "org.fedoraproject.FirewallD1.zone";
/// What a bus says when the service does not run, or when there is no bus.
constexpr QLatin1String Absences[] = {
    QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"),
    QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown"),
    QLatin1String("org.freedesktop.DBus.Error.Disconnected"),
};
constexpr int Patience = 5000;  // milliseconds a call

using Ports = QList<QPair<QString, QString>>;
using ActiveZones = QMap<QString, QMap<QString, QStringList>>;
using Details = QMap<QString, QString>;

/// Whom polkit is asked about.
struct Subject {
  QString kind;
  QVariantMap details;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Subject& subject) {
  argument.beginStructure();
  argument << subject.kind << subject.details;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Subject& subject) {
  argument.beginStructure();
  argument >> subject.kind >> subject.details;
  argument.endStructure();
  return argument;
}

bool isAbsence(const QDBusMessage& reply) {
  return std::find(std::begin(Absences), std::end(Absences), reply.errorName()) !=
         std::end(Absences);
}

bool isAnswer(const QDBusMessage& reply) {
  return reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
}

QVariantMap settingsIn(const QDBusMessage& reply) {
  return qdbus_cast<QVariantMap>(reply.arguments().constFirst());
}

void addPorts(const QVariantMap& settings, FirewalldZone& zone) {
  for (const auto& [range, protocol] : qdbus_cast<Ports>(settings.value(QStringLiteral("ports")))) {
    zone.ports.emplace_back(range.toStdString(), protocol.toStdString());
  }
}

/// In polkit's answer.
bool isAuthorized(const QDBusMessage& reply) {
  const auto result = qvariant_cast<QDBusArgument>(reply.arguments().constFirst());
  bool isAuthorized = false;
  if (result.currentType() != QDBusArgument::StructureType) return false;
  result.beginStructure();
  result >> isAuthorized;
  result.endStructure();
  return isAuthorized;
}

QStringList listIn(const QVariantMap& settings, const char* key) {
  return qdbus_cast<QStringList>(settings.value(QString::fromLatin1(key)));
}

}  // namespace

FirewalldQuery::FirewalldQuery(QDBusConnection bus, std::set<std::string> interfaces,
                               unsigned tcpPort, Answered answered)
    : bus_(std::move(bus)),
      interfaces_(std::move(interfaces)),
      tcpPort_(tcpPort),
      answered_(std::move(answered)) {
  call(Zone, "getActiveZones", {}, [this](const QDBusMessage& reply) {
    if (isAnswer(reply)) return readDefaultZone(reply);
    finish(isAbsence(reply) ? std::nullopt : std::optional(FirewallAnswer::CannotTell));
  });
}

void FirewalldQuery::call(const char* interface, const char* method, const QVariantList& arguments,
                          Reply reply) {
  QDBusMessage message = QDBusMessage::createMethodCall(
      Service, Path, QString::fromLatin1(interface), QString::fromLatin1(method));
  message.setArguments(arguments);
  message.setAutoStartService(false);
  send(message, std::move(reply));
}

void FirewalldQuery::send(const QDBusMessage& message, Reply reply) {
  auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message, Patience), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, reply = std::move(reply)] {
    watcher->deleteLater();
    reply(watcher->reply());
  });
}

/// Interfaces that no zone names are in the default zone.
void FirewalldQuery::readDefaultZone(const QDBusMessage& activeZones) {
  std::set<std::string> unnamed = interfaces_;
  const auto active = qdbus_cast<ActiveZones>(activeZones.arguments().constFirst());
  for (auto zone = active.begin(); zone != active.end(); ++zone) {
    for (const QString& interface : zone->value(QStringLiteral("interfaces"))) {
      if (!interfaces_.contains(interface.toStdString())) continue;
      unnamed.erase(interface.toStdString());
      zones_[zone.key()];
    }
  }
  call(Main, "getDefaultZone", {}, [this, needed = !unnamed.empty()](const QDBusMessage& reply) {
    if (needed && !isAnswer(reply)) return finish(FirewallAnswer::CannotTell);
    if (needed) zones_[reply.arguments().constFirst().toString()];
    if (zones_.empty()) return finish(FirewallAnswer::CannotTell);
    askPermission([this](const QDBusMessage& answer) {
      // Without polkit, firewalld decides by user and asks nobody.
      const bool mayAsk = isAnswer(answer) ? isAuthorized(answer) : isAbsence(answer);
      if (!mayAsk) return finish(FirewallAnswer::CannotTell);
      readZones();
    });
  });
}

void FirewalldQuery::askPermission(Reply reply) {
  qDBusRegisterMetaType<Subject>();
  qDBusRegisterMetaType<Details>();
  const Subject subject{QStringLiteral("system-bus-name"),
                        {{QStringLiteral("name"), bus_.baseService()}}};
  constexpr uint AskNobody = 0;
  QDBusMessage message = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.PolicyKit1"),
      QStringLiteral("/org/freedesktop/PolicyKit1/Authority"),
      QStringLiteral("org.freedesktop.PolicyKit1.Authority"), QStringLiteral("CheckAuthorization"));
  message << QVariant::fromValue(subject)
          << QStringLiteral("org.fedoraproject.FirewallD1.config.info")
          << QVariant::fromValue(Details()) << AskNobody << QString();
  send(message, std::move(reply));
}

void FirewalldQuery::readZones() {
  unanswered_ = static_cast<int>(zones_.size());
  for (const auto& [zone, unused] : zones_) readZone(zone);
}

void FirewalldQuery::readZone(const QString& zone) {
  call(Zone, "getZoneSettings2", {zone}, [this, zone](const QDBusMessage& reply) {
    if (!isAnswer(reply)) return finish(FirewallAnswer::CannotTell);
    const QVariantMap settings = settingsIn(reply);
    FirewalldZone& known = zones_[zone];
    known.target = settings.value(QStringLiteral("target")).toString().toStdString();
    known.hasRichRules =
        !listIn(settings, "rules_str").isEmpty() || !listIn(settings, "rich_rules").isEmpty();
    addPorts(settings, known);
    for (const QString& service : listIn(settings, "services")) readService(zone, service);
    noteAnswer();
  });
}

void FirewalldQuery::readService(const QString& zone, const QString& service) {
  ++unanswered_;
  call(Main, "getServiceSettings2", {service}, [this, zone](const QDBusMessage& reply) {
    // What a service opens that cannot be read may be our port.
    if (isAnswer(reply)) {
      addPorts(settingsIn(reply), zones_[zone]);
    } else {
      zones_[zone].hasRichRules = true;
    }
    noteAnswer();
  });
}

void FirewalldQuery::noteAnswer() {
  if (--unanswered_ > 0) return;
  FirewallAnswer answer = FirewallAnswer::Open;
  for (const auto& [name, zone] : zones_) {
    answer = joinedAnswer(answer, firewalldAnswer(zone, tcpPort_));
  }
  finish(answer);
}

void FirewalldQuery::finish(std::optional<FirewallAnswer> answer) {
  if (const auto answered = std::exchange(answered_, nullptr)) answered(answer);
}

}  // namespace zolvar
