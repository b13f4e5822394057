#include "platform/qt/SecretFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <sstream>
#include <vector>

namespace zolvar {

namespace {

/// Closes on every way out.
struct File {
  int descriptor;
  ~File() {
    if (descriptor >= 0) ::close(descriptor);
  }
};

std::string escaped(const std::string& text) {
  std::string result;
  for (const char character : text) {
    switch (character) {
      case '\\':
        result += "\\\\";
        break;
      case '\t':
        result += "\\t";
        break;
      case '\n':
        result += "\\n";
        break;
      default:
        result += character;
    }
  }
  return result;
}

/// The three fields of a line; none when it is damaged.
std::optional<std::array<std::string, 3>> fieldsOf(const std::string& line) {
  std::array<std::string, 3> fields;
  std::size_t field = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '\t') {
      if (++field == fields.size()) return std::nullopt;
    } else if (line[at] != '\\') {
      fields[field] += line[at];
    } else {
      const std::size_t kind = ++at < line.size() ? std::string("\\tn").find(line[at]) : line.npos;
      if (kind == line.npos) return std::nullopt;
      fields[field] += "\\\t\n"[kind];
    }
  }
  if (field + 1 != fields.size()) return std::nullopt;
  return fields;
}

}  // namespace

SecretFile::SecretFile(std::string path, Log& log) : path_(std::move(path)), log_(log) {}

Result<std::optional<std::string>> SecretFile::find(const std::string& service,
                                                    const std::string& account) {
  const std::lock_guard lock(mutex_);
  const auto entries = read();
  if (!entries) return tl::unexpected(entries.error());
  const auto found = entries->find({service, account});
  if (found == entries->end()) return std::nullopt;
  return found->second;
}

Result<> SecretFile::set(const std::string& service, const std::string& account,
                         const std::string& password) {
  const std::lock_guard lock(mutex_);
  auto entries = read();
  if (!entries) return tl::unexpected(entries.error());
  (*entries)[{service, account}] = password;
  return write(*entries);
}

Result<> SecretFile::remove(const std::string& service, const std::string& account) {
  const std::lock_guard lock(mutex_);
  auto entries = read();
  if (!entries) return tl::unexpected(entries.error());
  if (entries->erase({service, account}) == 0) return {};
  return write(*entries);
}

Result<SecretFile::Entries> SecretFile::read() {
  const File file{::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW)};
  if (file.descriptor < 0) {
    if (errno == ENOENT) return Entries();
    return tl::unexpected(failureFromErrno(errno, "read", path_));
  }
  struct stat status {};
  if (::fstat(file.descriptor, &status) == 0 && (status.st_mode & 077) != 0) {
    log_.warning("Others could read '{}'; its permissions are corrected.", path_);
    if (::fchmod(file.descriptor, 0600) != 0) {
      return tl::unexpected(failureFromErrno(errno, "protect", path_));
    }
  }
  std::string text;
  std::array<char, 4096> buffer{};
  while (true) {
    const ssize_t count = ::read(file.descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return tl::unexpected(failureFromErrno(errno, "read", path_));
    if (count == 0) break;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  Entries entries;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (auto fields = fieldsOf(line)) {
      entries[{std::move((*fields)[0]), std::move((*fields)[1])}] = std::move((*fields)[2]);
    } else {
      log_.warning("A line of '{}' is damaged: a password is lost.", path_);
    }
  }
  return entries;
}

/// Written aside, synced, renamed: an interruption leaves the old passwords.
Result<> SecretFile::write(const Entries& entries) {
  std::string text;
  for (const auto& [key, password] : entries) {
    text += escaped(key.first) + '\t' + escaped(key.second) + '\t' + escaped(password) + '\n';
  }
  const std::string aside = path_ + ".new";
  ::unlink(aside.c_str());
  const auto failed = [&aside, this] {
    const Failure failure = failureFromErrno(errno, "write", path_);
    ::unlink(aside.c_str());
    return tl::unexpected(failure);
  };
  {
    const File file{
        ::open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600)};
    if (file.descriptor < 0) return failed();
    for (std::size_t written = 0; written < text.size();) {
      const ssize_t count = ::write(file.descriptor, text.data() + written, text.size() - written);
      if (count < 0 && errno != EINTR) return failed();
      if (count > 0) written += static_cast<std::size_t>(count);
    }
    if (::fsync(file.descriptor) != 0) return failed();
  }
  if (::rename(aside.c_str(), path_.c_str()) != 0) return failed();
  const std::string folder = std::filesystem::path(path_).parent_path();
  const File directory{::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  if (directory.descriptor >= 0) ::fsync(directory.descriptor);
  return {};
}

}  // namespace zolvar
