#include "cli/ControlServer.h"

#include <sys/stat.h>

#include <QLocalSocket>
#include <cerrno>

#include "app/ControlProtocol.h"
#include "app/ControlRequest.h"
#include "cli/ControlClient.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr std::size_t MostConversations = 64;
constexpr qint64 MostUnread = 64 << 20;  // bytes that a client may leave unread

/// Makes the folder and what is missing above it; the folder itself is this user's alone.
Result<> makePrivateFolder(const std::string& path) {
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string part = path.substr(0, end);
    if (::mkdir(part.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
      return tl::unexpected(failureFromErrno(errno, "make the folder", part));
    }
    if (end == std::string::npos) break;
  }
  if (::chmod(path.c_str(), S_IRWXU) != 0) {
    return tl::unexpected(failureFromErrno(errno, "protect the folder", path));
  }
  return {};
}

QByteArray asLine(const nlohmann::json& answer) {
  const std::string text = answer.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return QByteArray(text.data(), static_cast<qsizetype>(text.size())) + '\n';
}

}  // namespace

ControlServer::ControlServer(Application& application, Operations& operations,
                             std::function<void()> quit)
    : application_(application), operations_(operations), quit_(std::move(quit)) {
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  connect(&server_, &QLocalServer::newConnection, this, [this] { acceptAll(); });
}

ControlServer::~ControlServer() { endConversations(); }

Result<> ControlServer::listen(const std::string& path) {
  if (path.empty()) {
    return fail(FailureKind::Refused, "make the control socket", {},
                "neither XDG_RUNTIME_DIR nor HOME is set");
  }
  if (auto made = makePrivateFolder(std::string(parentPath(path))); !made) return made;
  if (ControlClient().connect(path)) {
    return fail(FailureKind::Refused, "make the control socket", path,
                "another program answers there");
  }
  const QString name = QString::fromStdString(path);
  QLocalServer::removeServer(name);
  if (!server_.listen(name)) {
    return fail(FailureKind::Transient, "make the control socket", path,
                server_.errorString().toStdString());
  }
  if (::chmod(path.c_str(), S_IRUSR | S_IWUSR) != 0) {
    return tl::unexpected(failureFromErrno(errno, "protect the control socket", path));
  }
  return {};
}

void ControlServer::endConversations() {
  server_.close();
  for (auto& [socket, protocol] : conversations_) {
    socket->disconnect(this);
    socket->flush();
  }
  conversations_.clear();
}

void ControlServer::acceptAll() {
  while (QLocalSocket* socket = server_.nextPendingConnection()) {
    if (conversations_.size() >= MostConversations) {
      socket->abort();
      socket->deleteLater();
      continue;
    }
    socket->setParent(this);
    socket->setReadBufferSize(static_cast<qint64>(LongestControlLine) + 1);
    ControlProtocol::Callbacks callbacks;
    callbacks.send = [socket](const nlohmann::json& answer) {
      if (!socket->isOpen()) return;
      socket->write(asLine(answer));
      // That it is disconnected is heard later, outside of the conversation that this ends.
      if (socket->bytesToWrite() > MostUnread) socket->abort();
    };
    callbacks.idle = [this, socket] { readFrom(socket); };
    callbacks.quit = quit_;
    conversations_[socket] =
        std::make_unique<ControlProtocol>(application_, operations_, std::move(callbacks));
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readFrom(socket); });
    connect(
        socket, &QLocalSocket::disconnected, this, [this, socket] { cutOff(socket); },
        Qt::QueuedConnection);
    readFrom(socket);
  }
}

void ControlServer::readFrom(QLocalSocket* socket) {
  for (;;) {
    const auto found = conversations_.find(socket);
    if (found == conversations_.end() || found->second->isBusy()) return;
    if (!socket->canReadLine()) {
      if (socket->bytesAvailable() <= static_cast<qint64>(LongestControlLine)) return;
      found->second->refuseLongLine();
      socket->disconnectFromServer();
      return;
    }
    const QByteArray line = socket->readLine();
    found->second->handleLine({line.constData(), static_cast<std::size_t>(line.size()) - 1});
  }
}

void ControlServer::cutOff(QLocalSocket* socket) {
  if (conversations_.erase(socket) == 0) return;
  socket->disconnect(this);
  socket->deleteLater();
}

}  // namespace zolvar
