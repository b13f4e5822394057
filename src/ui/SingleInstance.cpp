#include "ui/SingleInstance.h"

#include <QLocalSocket>

namespace zolvar {
namespace {

constexpr const char* Request = "show\n";
constexpr const char* Answer = "shown\n";
constexpr int LongestWait = 2000;  // milliseconds

}  // namespace

bool SingleInstance::showOther() const {
  if (socketPath_.empty()) return false;
  QLocalSocket socket;
  socket.connectToServer(QString::fromStdString(socketPath_));
  if (!socket.waitForConnected(LongestWait)) return false;
  socket.write(Request);
  return socket.waitForReadyRead(LongestWait) && socket.readAll() == Answer;
}

void SingleInstance::listen(std::function<void()> show) {
  if (socketPath_.empty()) return;
  show_ = std::move(show);
  const QString path = QString::fromStdString(socketPath_);
  QLocalServer::removeServer(path);  // we hold the lock: nobody else listens
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
    QLocalSocket* socket = server_.nextPendingConnection();
    QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
      if (!socket->canReadLine() || socket->readLine() != Request) return;
      show_();
      socket->write(Answer);
    });
  });
  server_.listen(path);
}

}  // namespace zolvar
