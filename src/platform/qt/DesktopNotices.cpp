#include "platform/qt/DesktopNotices.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QStringList>
#include <QVariantMap>
#include <algorithm>
#include <utility>
#include <vector>

namespace zolvar {

namespace {

const QString Service = QStringLiteral("org.freedesktop.Notifications");
const QString Path = QStringLiteral("/org/freedesktop/Notifications");
const QString DefaultAction = QStringLiteral("default");
constexpr int ServicesOwnTimeout = -1;
constexpr int NeverExpires = 0;

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
    slots_.clear();
    byKey_.clear();
  });
}

DesktopNotices::~DesktopNotices() {
  constexpr int LongestGoodbye = 500;  // milliseconds
  const QDBusConnection bus = QDBusConnection::sessionBus();
  std::optional<QDBusMessage> last;
  for (const auto& [slotId, slot] : slots_) {
    if (!slot.isSticky || slot.id == 0) continue;
    if (last) bus.send(*last);
    last = method("CloseNotification") << slot.id;
  }
  // The answer to the last says that all have left this process.
  if (last) bus.call(*last, QDBus::Block, LongestGoodbye);
}

void DesktopNotices::show(const Notice& notice, OnClick onClick) {
  if (!QDBusConnection::sessionBus().isConnected()) return;
  const auto known = notice.key.empty() ? byKey_.end() : byKey_.find(notice.key);
  const SlotId slotId = known != byKey_.end() ? known->second : ++lastSlot_;
  Slot& slot = slots_[slotId];
  slot.key = notice.key;
  slot.next = notice;
  slot.onClick = std::move(onClick);
  if (!notice.key.empty()) byKey_[notice.key] = slotId;
  if (!capabilities_) return askCapabilities();
  if (!slot.isCalling) send(slotId);
}

void DesktopNotices::withdraw(const std::string& key) {
  const auto known = byKey_.find(key);
  if (known == byKey_.end()) return;
  const auto found = slots_.find(known->second);
  byKey_.erase(known);
  Slot& slot = found->second;
  slot.next.reset();
  slot.onClick = nullptr;
  slot.isWithdrawn = true;
  if (slot.isCalling) return;
  if (slot.id != 0) closeAtService(slot.id);
  slots_.erase(found);
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
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
      slots_.clear();
      byKey_.clear();
      return;
    }
    const QStringList list = reply.arguments().constFirst().toStringList();
    capabilities_.emplace(list.begin(), list.end());
    std::vector<SlotId> waiting;
    for (const auto& [slotId, slot] : slots_) {
      if (slot.next) waiting.push_back(slotId);
    }
    for (const SlotId slotId : waiting) send(slotId);
  });
}

void DesktopNotices::send(SlotId slotId) {
  Slot& slot = slots_.at(slotId);
  const Notice notice = *std::exchange(slot.next, std::nullopt);
  const QString text = QString::fromStdString(notice.text);
  const bool isMarkup = capabilities_->contains(QStringLiteral("body-markup"));
  const bool canClick = slot.onClick && capabilities_->contains(QStringLiteral("actions"));
  QDBusMessage message = method("Notify");
  message << QStringLiteral("Zolvar") << slot.id << QStringLiteral("zolvar")
          << QString::fromStdString(notice.title) << (isMarkup ? text.toHtmlEscaped() : text)
          << (canClick ? QStringList{DefaultAction, tr("Open")} : QStringList())
          << QVariantMap{{QStringLiteral("urgency"),
                          QVariant::fromValue(static_cast<uchar>(notice.urgency))},
                         {QStringLiteral("desktop-entry"), QStringLiteral("zolvar")}}
          << (notice.isSticky ? NeverExpires : ServicesOwnTimeout);
  slot.isSticky = notice.isSticky;
  slot.isCalling = true;
  call(message, [this, slotId](const QDBusMessage& reply) { answered(slotId, reply); });
}

void DesktopNotices::answered(SlotId slotId, const QDBusMessage& reply) {
  const bool isShown = reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
  const uint id = isShown ? reply.arguments().constFirst().toUInt() : 0;
  const auto found = slots_.find(slotId);
  if (found == slots_.end()) return;  // of a service that is gone
  Slot& slot = found->second;
  slot.isCalling = false;
  slot.id = id;
  if (slot.isWithdrawn || (!isShown && !slot.next)) {
    if (id != 0) closeAtService(id);
    if (!slot.isWithdrawn) byKey_.erase(slot.key);
    slots_.erase(found);
  } else if (slot.next && capabilities_) {
    send(slotId);
  }
}

void DesktopNotices::closeAtService(uint id) {
  QDBusMessage message = method("CloseNotification");
  message << id;
  call(message, [](const QDBusMessage&) {});
}

std::map<DesktopNotices::SlotId, DesktopNotices::Slot>::iterator DesktopNotices::slotWithId(
    uint id) {
  return std::find_if(slots_.begin(), slots_.end(),
                      [id](const auto& one) { return one.second.id == id; });
}

void DesktopNotices::actionInvoked(uint id, const QString& action) {
  const auto found = slotWithId(id);
  if (id == 0 || found == slots_.end() || action != DefaultAction) return;
  const OnClick onClick = found->second.onClick;  // may show a notice itself
  if (onClick) onClick();
}

void DesktopNotices::closed(uint id, uint) {
  const auto found = slotWithId(id);
  if (id == 0 || found == slots_.end()) return;
  if (found->second.isCalling) {
    found->second.id = 0;  // the service shows the replacement under a new id
    return;
  }
  if (!found->second.isWithdrawn) byKey_.erase(found->second.key);
  slots_.erase(found);
}

}  // namespace zolvar
