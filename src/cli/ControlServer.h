#pragma once

#include <QLocalServer>
#include <QObject>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "util/Failure.h"

class QLocalSocket;

namespace zolvar {

class Application;
class ControlProtocol;
class Operations;

/// The control socket: one ControlProtocol a connection. Only this user can connect (the folder is
/// 0700, the socket 0600). A client that does not read what it asked for is cut off. Application
/// and operations outlive endConversations(). Main thread.
class ControlServer : public QObject {
 public:
  ControlServer(Application& application, Operations& operations, std::function<void()> quit);
  ~ControlServer() override;

  /// Begins to listen; a socket that nobody answers on is replaced. Fails: Refused (somebody
  /// answers), Transient.
  Result<> listen(const std::string& path);
  /// Ends all conversations and takes no new ones. Clients see the connection's end only when this
  /// object goes, so one that waits for it knows that the program has ended.
  void endConversations();

 private:
  void acceptAll();
  void readFrom(QLocalSocket* socket);
  void cutOff(QLocalSocket* socket);

  Application& application_;
  Operations& operations_;
  std::function<void()> quit_;
  QLocalServer server_;
  std::map<QLocalSocket*, std::unique_ptr<ControlProtocol>> conversations_;
};

}  // namespace zolvar
