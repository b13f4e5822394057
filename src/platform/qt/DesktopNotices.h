#pragma once

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "platform/Log.h"
#include "platform/Workspace.h"

namespace zolvar {

/// Notices through org.freedesktop.Notifications on the session bus, without ever waiting for an
/// answer. Owned by the workspace. Main thread. Where nobody answers, notices are dropped, with a
/// debug line.
///
/// A notice is known by a slot from its showing until the service says that it is closed. The
/// service tells its id only in the reply; what is asked of a slot before that (a replacement, a
/// withdrawal) waits in the slot for the reply, so that a slow service shows one notice a key, and
/// the latest.
class DesktopNotices final : public QObject {
  Q_OBJECT

 public:
  using OnClick = std::function<void()>;

  explicit DesktopNotices(Log& log);
  /// Takes what would stay off the screen; a service that does not answer is waited for a moment.
  ~DesktopNotices() override;

  void show(const Notice& notice, OnClick onClick);
  void withdraw(const std::string& key);

 private Q_SLOTS:
  // Broadcast by the notification service for the notices of every program.
  void actionInvoked(uint id, const QString& action);
  void closed(uint id, uint reason);

 private:
  using SlotId = std::uint64_t;
  using Answer = std::function<void(const QDBusMessage& reply)>;

  struct Slot {
    std::string key;
    uint id = 0;                 ///< at the service; 0 before its first reply
    bool isSticky = false;       ///< of what was shown last
    bool isCalling = false;      ///< a Notify is unanswered
    bool isWithdrawn = false;    ///< to be closed when the reply is there
    std::optional<Notice> next;  ///< to be sent when the capabilities or the reply are there
    OnClick onClick;
  };

  void call(const QDBusMessage& message, Answer answer);
  void askCapabilities();
  void send(SlotId slotId);
  void answered(SlotId slotId, const QDBusMessage& reply);
  void closeAtService(uint id);
  [[nodiscard]] std::map<SlotId, Slot>::iterator slotWithId(uint id);

  Log& log_;
  QDBusServiceWatcher service_;
  bool isAsking_ = false;
  /// Of the service that runs now; none until it was asked.
  std::optional<std::set<QString>> capabilities_;
  SlotId lastSlot_ = 0;
  std::map<SlotId, Slot> slots_;
  std::map<std::string, SlotId> byKey_;  ///< without the withdrawn ones
};

}  // namespace zolvar
