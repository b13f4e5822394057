#include "platform/qt/ProcessGroupActivity.h"

#include <fmt/format.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace zolvar {

namespace {

namespace fs = std::filesystem;

/// Inode numbers of the sockets in /proc/PID/net/TABLE that have sent their SYN and got no answer.
void addUnansweredSockets(pid_t pid, const char* table, std::set<std::string>& inodes) {
  std::ifstream file(fmt::format("/proc/{}/net/{}", pid, table));
  std::string line;
  std::getline(file, line);  // the headings
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string slot, local, remote, state, queues, timer, retransmits, user, timeout, inode;
    fields >> slot >> local >> remote >> state >> queues >> timer >> retransmits >> user >>
        timeout >> inode;
    if (state == "02") inodes.insert(inode);
  }
}

}  // namespace

std::optional<std::vector<pid_t>> ProcessGroupActivity::members() const {
  std::vector<pid_t> found = {leader_};
  for (std::size_t next = 0; next < found.size(); ++next) {
    std::ifstream children(fmt::format("/proc/{0}/task/{0}/children", found[next]));
    // The transfer tool's bytes pass through a child of the leader: without it, nothing is known.
    if (!children) return std::nullopt;
    for (pid_t child = 0; children >> child;) found.push_back(child);
  }
  return found;
}

std::optional<ProcessGroupActivity::Bytes> ProcessGroupActivity::bytes() const {
  std::optional<Bytes> sum;
  const auto pids = members();
  if (!pids) return sum;
  for (const pid_t pid : *pids) {
    std::ifstream file(fmt::format("/proc/{}/io", pid));
    std::string name;
    for (std::uint64_t value = 0; file >> name >> value;) {
      if (!sum) sum.emplace();
      if (name == "rchar:") sum->read += value;
      if (name == "wchar:") sum->written += value;
    }
  }
  return sum;
}

bool ProcessGroupActivity::isConnecting() const {
  std::set<std::string> inodes;
  addUnansweredSockets(leader_, "tcp", inodes);
  addUnansweredSockets(leader_, "tcp6", inodes);
  const auto pids = members();
  if (inodes.empty() || !pids) return false;
  for (const pid_t pid : *pids) {
    std::error_code ignored;
    for (fs::directory_iterator file(fmt::format("/proc/{}/fd", pid), ignored), end; file != end;
         file.increment(ignored)) {
      const std::string target =
          fs::read_symlink(file->path(), ignored).string();  // "socket:[123]"
      if (target.starts_with("socket:[") && inodes.contains(target.substr(8, target.size() - 9))) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace zolvar
