#pragma once

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "platform/Log.h"
#include "platform/Workspace.h"

namespace zolvar {

/// Notices through org.freedesktop.Notifications on the session bus, without ever waiting for an
/// answer. Owned by the workspace. Main thread. Where nobody answers, notices are dropped, with a
/// debug line.
class DesktopNotices final : public QObject {
  Q_OBJECT

 public:
  explicit DesktopNotices(Log& log);

  void show(const Notice& notice, std::function<void()> clicked);

 private Q_SLOTS:
  // Broadcast by the notification service for the notices of every program.
  void actionInvoked(uint id, const QString& action);
  void closed(uint id, uint reason);

 private:
  using Answer = std::function<void(const QDBusMessage& reply)>;

  void call(const QDBusMessage& message, Answer answer);
  void askCapabilities();
  void send(const Notice& notice, std::function<void()> clicked);

  Log& log_;
  QDBusServiceWatcher service_;
  bool isAsking_ = false;
  /// Of the service that runs now; none until it was asked.
  std::optional<std::set<QString>> capabilities_;
  std::vector<std::pair<Notice, std::function<void()>>> waiting_;  ///< for the capabilities
  std::map<uint, std::function<void()>> clicked_;  ///< by id, of notices that are still shown
};

}  // namespace zolvar
