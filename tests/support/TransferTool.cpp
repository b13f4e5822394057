#include "support/TransferTool.h"

#include <cstdio>
#include <ctime>
#include <stdexcept>

namespace zolvar {
namespace {

constexpr std::uint32_t Umask = 022;

[[noreturn]] void refuse(const std::vector<std::string>& arguments) {
  std::string joined;
  for (const std::string& argument : arguments) joined += " " + argument;
  throw std::logic_error("The transfer tool is not called like this:" + joined);
}

std::string modeText(const SimulatedNode& node) {
  static constexpr char Kinds[] = {'-', 'd', 'l', 's'};
  std::string text(1, Kinds[static_cast<int>(node.kind)]);
  for (int bit = 8; bit >= 0; --bit) {
    text += (node.mode >> static_cast<unsigned>(bit) & 1U) != 0 ? "xwr"[bit % 3] : '-';
  }
  return text;
}

std::string withSeparators(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (int at = static_cast<int>(text.size()) - 3; at > 0; at -= 3) {
    text.insert(static_cast<std::size_t>(at), ",");
  }
  return text;
}

/// Length of the valid UTF-8 sequence at `at`; 0 when there is none.
std::size_t sequenceLength(const std::string& text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : lead >= 0xc2 ? 2 : 0;
  for (std::size_t i = 1; i < length; ++i) {
    if (at + i >= text.size() || (static_cast<unsigned char>(text[at + i]) & 0xc0U) != 0x80U)
      return 0;
  }
  return length;
}

std::string escaped(const std::string& name, bool escapesUtf8) {
  std::string result;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const auto byte = static_cast<unsigned char>(name[at]);
    const auto isDigit = [&](std::size_t i) {
      return i < name.size() && std::isdigit(name[i]) != 0;
    };
    const bool looksEscaped =
        name.compare(at, 2, "\\#") == 0 && isDigit(at + 2) && isDigit(at + 3) && isDigit(at + 4);
    if (const std::size_t length = byte >= 0x80 && !escapesUtf8 ? sequenceLength(name, at) : 0;
        length > 0) {
      result += name.substr(at, length);
      at += length - 1;
    } else if (byte >= 0x80 || (byte < 0x20 && byte != '\t') || byte == 0x7f || looksEscaped) {
      char text[8];
      std::snprintf(text, sizeof text, "\\#%03o", static_cast<unsigned>(byte));
      result += text;
    } else {
      result += name[at];
    }
  }
  return result;
}

void list(const SimulatedTree::Node& node, const std::string& name, bool escapesUtf8,
          std::string& text) {
  char time[32];
  const std::time_t seconds = node->modTime;
  std::tm parts{};
  localtime_r(&seconds, &parts);
  std::strftime(time, sizeof time, "%Y/%m/%d %H:%M:%S", &parts);
  char line[64];
  std::snprintf(line, sizeof line, "%s %14s %s ", modeText(*node).c_str(),
                withSeparators(node->attributes().size).c_str(), time);
  text += line + escaped(name, escapesUtf8) + "\n";
  for (const auto& [child, childNode] : node->children) {
    list(childNode, name == "." ? child : name + "/" + child, escapesUtf8, text);
  }
}

/// Whether a link leads out of the transferred tree.
bool isUnsafeLink(const std::string& target, const std::string& path) {
  if (target.empty() || target.starts_with('/')) return true;
  int depth = 0;
  for (const char character : path) depth += character == '/' ? 1 : 0;
  bool wentDown = false;
  for (std::size_t at = 0; at < target.size();) {
    const std::size_t end = std::min(target.find('/', at), target.size());
    const std::string step = target.substr(at, end - at);
    if (step == "..") {
      if (wentDown || --depth < 0) return true;  // ".." behind a name is distrusted
    } else if (!step.empty() && step != ".") {
      wentDown = true;
    }
    at = end + 1;
  }
  return false;
}

}  // namespace

TransferOrder TransferOrder::parse(const std::vector<std::string>& arguments) {
  TransferOrder order;
  std::size_t at = 0;
  const auto take = [&](const char* wanted) {
    if (at >= arguments.size() || arguments[at] != wanted) return false;
    ++at;
    return true;
  };
  const auto takeValue = [&](const std::string& option) -> std::optional<std::string> {
    if (at >= arguments.size() || !arguments[at].starts_with(option)) return std::nullopt;
    return arguments[at++].substr(option.size());
  };
  bool wantsDestination = true;
  if (take("--recursive")) {
    wantsDestination = false;
  } else if (take("-r")) {
    order.kind = Kind::LogLoad;
    if (!take("--times") || !take("--exclude")) refuse(arguments);
    const auto ownLog = takeValue("/");
    if (!ownLog || !ownLog->ends_with(".fplog") || !take("--include") || !take("*.fplog") ||
        !take("--update")) {
      refuse(arguments);
    }
    order.updatesOnly = true;
  } else {
    order.kind = Kind::Copy;
    (void)takeValue("--bwlimit=");
    for (const char* fixed : {"--files-from", "-", "--times", "--links", "--safe-links", "-E"}) {
      if (!take(fixed)) refuse(arguments);
    }
    order.updatesOnly = take("--update");
    if (take("--backup")) {
      const auto folder = takeValue("--backup-dir=");
      if (!folder || !folder->starts_with('/')) refuse(arguments);
      order.backupFolder = *folder;
    }
  }
  const auto url = takeValue("rsync://");
  if (!url) refuse(arguments);
  const auto signAt = url->find('@');
  const auto colon = url->find(':', signAt);
  const auto slash = url->find('/', signAt);
  if (signAt != 8 || colon == std::string::npos || slash == std::string::npos || colon > slash) {
    refuse(arguments);
  }
  order.user = url->substr(0, signAt);
  order.host = url->substr(signAt + 1, colon - signAt - 1);
  order.port = static_cast<unsigned>(std::stoul(url->substr(colon + 1, slash - colon - 1)));
  order.module = url->substr(slash + 1);
  if (order.module.ends_with("/.Zolvar")) {
    order.isMetadataOnly = true;
    order.module.resize(order.module.size() - 8);
  }
  const bool fits =
      order.kind == Kind::Listing || order.isMetadataOnly == (order.kind == Kind::LogLoad);
  if (!fits || order.module.empty() || order.module.find('/') != std::string::npos)
    refuse(arguments);
  if (wantsDestination) {
    const auto destination = takeValue("/");
    if (!destination) refuse(arguments);
    order.destination = "/" + *destination;
  }
  if (at != arguments.size()) refuse(arguments);
  return order;
}

std::string listingText(const SimulatedTree::Node& folder, const std::string& name,
                        bool escapesUtf8) {
  std::string text;
  list(folder, name, escapesUtf8, text);
  return text;
}

TransferReceiver::TransferReceiver(SimulatedTree& tree, const TransferOrder& order,
                                   TransferTroubles& troubles)
    : tree_(tree), order_(order), troubles_(troubles) {}

int TransferReceiver::openDestination() {
  const auto found = tree_.resolve(order_.destination);
  if (found && (*found)->isDirectory()) {
    root_ = *found;
    return 0;
  }
  // The tool makes the last component only. With one file to bring it would make it a file: the
  // engine must see to it that the folder is there.
  const auto parent = tree_.resolve(order_.destination.substr(0, order_.destination.rfind('/')));
  if (found || !parent || !(*parent)->isDirectory()) {
    errors += "rsync: mkdir \"" + order_.destination + "\" failed\n";
    return 11;
  }
  root_ =
      *tree_.makeDirectories(*parent, order_.destination.substr(order_.destination.rfind('/') + 1));
  return 0;
}

TransferReceiver::Outcome TransferReceiver::failed(const std::string& path,
                                                   const std::string& reason) {
  errors += "rsync: \"" + path + "\": " + reason + "\n";
  return Outcome::Failed;
}

TransferReceiver::Outcome TransferReceiver::receive(const std::string& path,
                                                    const SimulatedTree::Node& source) {
  switch (source->kind) {
    case FileKind::Directory:
      return receiveDirectory(path, *source);
    case FileKind::Link:
      return order_.kind == TransferOrder::Kind::Copy ? receiveLink(path, *source)
                                                      : Outcome::Skipped;
    case FileKind::Regular:
      return receiveFile(path, *source);
    default:
      return Outcome::Skipped;
  }
}

void TransferReceiver::backUp(const SimulatedTree::Place& place, const std::string& path) {
  if (order_.backupFolder.empty()) return;
  const std::string target = order_.backupFolder + "/" + path;
  const auto folder = tree_.makeDirectories(tree_.root(), target.substr(1, target.rfind('/') - 1));
  if (!folder) throw std::logic_error("The backup folder cannot be made: " + target);
  (void)tree_.rename(place, {*folder, target.substr(target.rfind('/') + 1)}, true);
}

bool TransferReceiver::makeRoom(const SimulatedTree::Place& place, const std::string& path) {
  const auto found = place.directory->children.find(place.name);
  if (found == place.directory->children.end()) return true;
  const SimulatedTree::Node old = found->second;
  if (old->isDirectory()) {
    if (!old->children.empty()) return false;
  } else if (old->kind == FileKind::Regular || !isUnsafeLink(old->content, path)) {
    backUp(place, path);
  }
  (void)tree_.detach(place);
  return true;
}

TransferReceiver::Outcome TransferReceiver::receiveDirectory(const std::string& path,
                                                             const SimulatedNode& source) {
  const auto place = tree_.place(root_, path);
  if (!place) return failed(path, "mkdir failed");
  const auto found = place->directory->children.find(place->name);
  if (found == place->directory->children.end() || !found->second->isDirectory()) {
    makeRoom(*place, path);
    const auto made = tree_.makeDirectories(place->directory, place->name);
    if (!made) return failed(path, "mkdir failed");
    (*made)->mode = source.mode & ~Umask;
  }
  directoryTimes_[path] = source.modTime;
  return Outcome::Skipped;
}

TransferReceiver::Outcome TransferReceiver::receiveLink(const std::string& path,
                                                        const SimulatedNode& source) {
  if (isUnsafeLink(source.content, path)) return Outcome::Skipped;
  const auto place = tree_.place(root_, path);
  if (!place) return failed(path, "symlink failed");
  const auto found = place->directory->children.find(place->name);
  if (found != place->directory->children.end() && found->second->kind == FileKind::Link &&
      found->second->content == source.content) {
    found->second->modTime = source.modTime;
    return Outcome::Skipped;
  }
  if (!makeRoom(*place, path)) return failed(path, "cannot delete non-empty directory");
  const auto link = tree_.make(FileKind::Link, place->directory);
  link->content = source.content;
  link->modTime = source.modTime;
  tree_.insert(*place, link);
  tree_.tell(FileEvent::Type::CreateFile, tree_.pathOf(*place));
  return Outcome::Transferred;
}

TransferReceiver::Outcome TransferReceiver::receiveFile(const std::string& path,
                                                        const SimulatedNode& source) {
  const auto place = tree_.place(root_, path);
  if (!place) return failed(path, "mkstemp failed");
  const auto local = [&]() -> SimulatedTree::Node {
    const auto found = place->directory->children.find(place->name);
    return found == place->directory->children.end() ? nullptr : found->second;
  };
  if (const auto old = local(); old != nullptr && old->kind == FileKind::Regular) {
    if (order_.updatesOnly && old->modTime > source.modTime) return Outcome::Skipped;
    if (old->modTime == source.modTime && old->content.size() == source.content.size()) {
      return Outcome::Skipped;  // the tool compares no contents
    }
  } else if (!makeRoom(*place, path)) {
    return failed(path, "cannot delete non-empty directory");
  }
  const std::string content = source.content;
  if (troubles_.killAfterFiles == 0U) {
    troubles_.killAfterFiles.reset();
    std::string name = place->name.starts_with('.') ? place->name : "." + place->name;
    name = name.substr(0, 255 - 7) + ".aB3xYz";
    const auto rest = tree_.replaceFile({place->directory, name},
                                        content.substr(0, content.size() / 2), 0600, false);
    if (!rest) return failed(path, "mkstemp failed");
    return Outcome::Killed;
  }
  if (troubles_.duringFile) {
    const auto hook = troubles_.duringFile;
    hook(path);
  }
  std::uint32_t mode = source.mode & ~Umask;
  if (const auto old = local(); old != nullptr) {
    if (old->isDirectory()) return failed(path, "rename failed");
    const bool isExecutable = (source.mode & 0111U) != 0;
    mode = isExecutable ? old->mode | ((old->mode & 0444U) >> 2U) : old->mode & ~0111U;
    if (order_.kind == TransferOrder::Kind::LogLoad) mode = old->mode;
    backUp(*place, path);
  }
  const auto written = tree_.replaceFile(*place, content, mode, false);
  if (!written) return failed(path, "rename failed");
  (*written)->modTime = source.modTime;
  return Outcome::Transferred;
}

void TransferReceiver::finish() {
  for (const auto& [path, time] : directoryTimes_) {
    if (const auto node = tree_.find(root_, path); node && (*node)->isDirectory()) {
      (*node)->modTime = time;
    }
  }
}

}  // namespace zolvar
