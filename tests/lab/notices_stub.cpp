// A notification service for the lab: it shows nothing and writes one JSON object a line to
// standard output for each notice that it is sent or told to close. Calling the method
// "zolvar.lab.Click" with a notice's id is a person's click on it.

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

namespace {

const QString Name = QStringLiteral("org.freedesktop.Notifications");
const QString Path = QStringLiteral("/org/freedesktop/Notifications");

class NoticesStub : public QDBusVirtualObject {
 public:
  [[nodiscard]] QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    const QVariantList arguments = message.arguments();
    if (message.member() == QStringLiteral("GetCapabilities")) {
      bus.send(message.createReply(QStringList{QStringLiteral("actions"), QStringLiteral("body"),
                                               QStringLiteral("body-markup")}));
    } else if (message.member() == QStringLiteral("Notify")) {
      const uint replaced = arguments.value(1).toUInt();
      const uint id = replaced != 0 ? replaced : ++lastId_;
      const auto hints = qdbus_cast<QVariantMap>(arguments.value(6));
      write({{"id", static_cast<int>(id)},
             {"replaces", static_cast<int>(replaced)},
             {"title", arguments.value(3).toString()},
             {"text", arguments.value(4).toString()},
             {"actions", arguments.value(5).toStringList().join(QLatin1Char(' '))},
             {"urgency", hints.value(QStringLiteral("urgency")).toInt()},
             {"timeout", arguments.value(7).toInt()}});
      bus.send(message.createReply(id));
    } else if (message.member() == QStringLiteral("CloseNotification")) {
      write({{"closed", arguments.value(0).toInt()}});
      bus.send(message.createReply());
      tell("NotificationClosed", {arguments.value(0), 3U}, bus);
    } else if (message.member() == QStringLiteral("Click")) {
      bus.send(message.createReply());
      tell("ActionInvoked", {arguments.value(0), QStringLiteral("default")}, bus);
    } else {
      return false;
    }
    return true;
  }

 private:
  static void write(const QJsonObject& object) {
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
  }
  static void tell(const char* signal, const QVariantList& arguments, const QDBusConnection& bus) {
    QDBusMessage message = QDBusMessage::createSignal(Path, Name, QString::fromLatin1(signal));
    message.setArguments(arguments);
    bus.send(message);
  }

  uint lastId_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  QDBusConnection bus = QDBusConnection::sessionBus();
  NoticesStub stub;
  if (!bus.registerVirtualObject(Path, &stub) || !bus.registerService(Name)) return 1;
  return QCoreApplication::exec();
}
