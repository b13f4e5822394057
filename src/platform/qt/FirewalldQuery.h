#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "platform/Firewall.h"
#include "platform/qt/FirewalldRules.h"

namespace zolvar {

/// Asks firewalld once what it does with a TCP port on the networks of this computer: the zones in
/// force there, their settings, and the ports of their services, each with a call that nothing
/// waits for. Its owner destroys it after the answer, which ends what is still under way. Main
/// thread. Whatever cannot be learnt makes the answer CannotTell; none when firewalld does not run.
///
/// Where a zone's settings are for administrators only, firewalld would have its caller's password
/// asked for, out of the blue. So polkit is asked first whether we may without.
class FirewalldQuery final : public QObject {
 public:
  using Answered = std::function<void(std::optional<FirewallAnswer>)>;

  /// `interfaces`: those by which others reach us; `bus` is connected. `answered` comes on a later
  /// turn, once.
  FirewalldQuery(QDBusConnection bus, std::set<std::string> interfaces, unsigned tcpPort,
                 Answered answered);

 private:
  using Reply = std::function<void(const QDBusMessage& reply)>;

  void call(const char* interface, const char* method, const QVariantList& arguments, Reply reply);
  void send(const QDBusMessage& message, Reply reply);
  void askPermission(Reply reply);
  void readDefaultZone(const QDBusMessage& activeZones);
  void readZones();
  void readZone(const QString& zone);
  void readService(const QString& zone, const QString& service);
  void noteAnswer();
  void finish(std::optional<FirewallAnswer> answer);

  QDBusConnection bus_;
  const std::set<std::string> interfaces_;
  const unsigned tcpPort_;
  Answered answered_;
  std::map<QString, FirewalldZone> zones_;
  int unanswered_ = 0;  ///< calls about zones and services
};

}  // namespace zolvar
