#include "sim/RealTool.h"

#include <arpa/inet.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zolvar {
namespace {

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char character : text)
    result += character == '\'' ? "'\\''" : std::string(1, character);
  return result + "'";
}

std::string fileContent(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

/// A socket bound (port 0: to a free port) or connected on the loopback device.
unsigned tryPort(unsigned port, bool connects) {
  const int handle = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  const int result = connects ? ::connect(handle, generic, size) : ::bind(handle, generic, size);
  if (result == 0 && !connects) ::getsockname(handle, generic, &size);
  ::close(handle);
  return result == 0 ? ntohs(address.sin_port) : 0;
}

}  // namespace

bool RealTool::isInstalled() { return std::system("command -v rsync >/dev/null 2>&1") == 0; }

RealTool::RealTool(const std::string& modules) {
  std::string pattern = (std::filesystem::temp_directory_path() / "zolvar-tool-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = pattern;
  port_ = tryPort(0, false);
  std::string text = "use chroot = no\n";
  if (::getuid() == 0) text += "uid = 0\ngid = 0\n";
  text += modules;
  for (auto at = text.find("FOLDER"); at != std::string::npos; at = text.find("FOLDER")) {
    text.replace(at, 6, folder_);
  }
  std::ofstream(folder_ + "/config") << text;
  daemon_ = ::fork();
  if (daemon_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // a test that dies leaves no daemon behind
    const std::string port = "--port=" + std::to_string(port_);
    const std::string config = "--config=" + folder_ + "/config";
    const std::string log = "--log-file=" + folder_ + "/log";
    ::execlp("rsync", "rsync", "--daemon", "--no-detach", "--address=127.0.0.1", port.c_str(),
             config.c_str(), log.c_str(), nullptr);
    ::_exit(127);
  }
  for (int tries = 0; tryPort(port_, true) == 0; ++tries) {
    if (tries > 500) throw std::runtime_error("the daemon does not answer");
    ::usleep(10'000);
  }
}

RealTool::~RealTool() {
  if (daemon_ > 0) {
    ::kill(daemon_, SIGTERM);
    ::waitpid(daemon_, nullptr, 0);
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

RealTool::Ended RealTool::run(const std::vector<std::string>& arguments, const std::string& input,
                              const std::string& password) const {
  std::ofstream(folder_ + "/input", std::ios::binary) << input;
  std::string command = "LC_ALL=C.UTF-8 RSYNC_PASSWORD=" + quoted(password) + " rsync";
  for (const std::string& argument : arguments) command += " " + quoted(argument);
  command += " <" + quoted(folder_ + "/input") + " >" + quoted(folder_ + "/output") + " 2>" +
             quoted(folder_ + "/errors");
  const int ended = std::system(command.c_str());
  return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, fileContent(folder_ + "/output"),
          fileContent(folder_ + "/errors")};
}

}  // namespace zolvar
