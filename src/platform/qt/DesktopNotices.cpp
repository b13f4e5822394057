#include "platform/qt/DesktopNotices.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QStringList>
#include <QVariantMap>

namespace zolvar {

namespace {

const QString Service = QStringLiteral("org.freedesktop.Notifications");
const QString Path = QStringLiteral("/org/freedesktop/Notifications");
const QString DefaultAction = QStringLiteral("default");

QDBusMessage method(const char* name) {
  return QDBusMessage::createMethodCall(Service, Path, Service, QString::fromLatin1(name));
}

}  // namespace

DesktopNotices::DesktopNotices(Log& log) : log_(log) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  bus.connect(Service, Path, Service, QStringLiteral("ActionInvoked"), this,
              SLOT(actionInvoked(uint, QString)));
  bus.connect(Service, Path, Service, QStringLiteral("NotificationClosed"), this,
              SLOT(closed(uint, uint)));
  service_.setConnection(bus);
  service_.addWatchedService(Service);
  // The next service may know other things, and numbers its notices anew.
  connect(&service_, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
    capabilities_.reset();
    clicked_.clear();
  });
}

void DesktopNotices::show(const Notice& notice, std::function<void()> clicked) {
  if (!QDBusConnection::sessionBus().isConnected()) return;
  if (capabilities_) return send(notice, std::move(clicked));
  waiting_.emplace_back(notice, std::move(clicked));
  askCapabilities();
}

void DesktopNotices::call(const QDBusMessage& message, Answer answer) {
  auto* const watcher =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this,
          [this, watcher, answer = std::move(answer)] {
            watcher->deleteLater();
            if (watcher->isError()) {
              log_.debug("The desktop shows no notices: {}",
                         watcher->error().message().toStdString());
            }
            answer(watcher->reply());
          });
}

void DesktopNotices::askCapabilities() {
  if (std::exchange(isAsking_, true)) return;
  call(method("GetCapabilities"), [this](const QDBusMessage& reply) {
    isAsking_ = false;
    const auto waiting = std::exchange(waiting_, {});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return;
    const QStringList list = reply.arguments().constFirst().toStringList();
    capabilities_.emplace(list.begin(), list.end());
    for (const auto& [notice, clicked] : waiting) send(notice, clicked);
  });
}

void DesktopNotices::send(const Notice& notice, std::function<void()> clicked) {
  const QString text = QString::fromStdString(notice.text);
  const bool isMarkup = capabilities_->contains(QStringLiteral("body-markup"));
  const bool canClick = clicked && capabilities_->contains(QStringLiteral("actions"));
  QDBusMessage message = method("Notify");
  message << QStringLiteral("Zolvar") << notice.replaces << QStringLiteral("zolvar")
          << QString::fromStdString(notice.title) << (isMarkup ? text.toHtmlEscaped() : text)
          << (canClick ? QStringList{DefaultAction, tr("Open")} : QStringList())
          << QVariantMap{{QStringLiteral("urgency"),
                          QVariant::fromValue<uchar>(notice.urgent ? 2 : 1)},
                         {QStringLiteral("desktop-entry"), QStringLiteral("zolvar")}}
          << -1;
  call(message, [this, clicked = std::move(clicked)](const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return;
    clicked_[reply.arguments().constFirst().toUInt()] = clicked;
  });
}

void DesktopNotices::actionInvoked(uint id, const QString& action) {
  const auto found = clicked_.find(id);
  if (found == clicked_.end() || action != DefaultAction || !found->second) return;
  const auto clicked = found->second;  // may show a notice itself
  clicked();
}

void DesktopNotices::closed(uint id, uint) { clicked_.erase(id); }

}  // namespace zolvar
