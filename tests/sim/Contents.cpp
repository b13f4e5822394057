#include "sim/Contents.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <unordered_set>

namespace zolvar {
namespace {

using Node = SimulatedTree::Node;

void eachFile(
    const Node& node, const std::string& path,
    const std::function<void(const std::string& path, const SimulatedNode& file)>& visit) {
  if (!node->isDirectory()) visit(path, *node);
  for (const auto& [name, child] : node->children) eachFile(child, path + "/" + name, visit);
}

std::vector<std::string> fieldsOf(const std::string& line) {
  std::vector<std::string> fields;
  for (std::size_t at = 1; at < line.size();) {
    const std::size_t end = std::min(line.find('"', at), line.size());
    fields.push_back(line.substr(at, end - at));
    at = end + 3;  // "," between quotes; the paths of schedules hold neither
  }
  return fields;
}

/// 0 where a power failure took the rest of the line.
double numberIn(const std::string& field) { return std::strtod(field.c_str(), nullptr); }

}  // namespace

std::string Contents::make(std::size_t size) {
  std::string content = "w" + std::to_string(++count_) + ".";
  content.resize(std::max(content.size(), size == 0 ? 10 + count_ : size), '.');
  return content;
}

void Contents::wrote(SimulatedPeer& author, const std::string& path, const std::string& content) {
  const auto attributes = author.host.files.attributesOf(author.path(path));
  if (!attributes || attributes->kind != FileKind::Regular) return;
  auto& past = history_[{author.name(), path}];
  const bool wasHere =
      std::find(past.begin(), past.end(), std::pair(content, attributes->modTime)) != past.end();
  const bool isThatVersion =
      wasHere && std::any_of(versions_.begin(), versions_.end(), [&](const auto& version) {
        return version.second == content && std::get<0>(version.first) == path &&
               std::get<1>(version.first) == author.userId();
      });
  if (isThatVersion) return;  // put back with its time: nothing new, and may be replaced as before
  written_[content] = {author.name(), path, attributes->modTime, false, false};
  past.emplace_back(content, attributes->modTime);
}

void Contents::moved(SimulatedPeer& peer, const std::string& path) {
  const auto content = peer.host.files.readAll(peer.path(path));
  if (!content) return;
  for (const auto& [version, held] : versions_) {
    if (held != *content || std::get<0>(version) != path) continue;
    written_[*content].isLogged = true;  // moved back
    return;
  }
  const Written before = written_[*content];
  wrote(peer, path, *content);
  Written& now = written_[*content];
  now.isReplaced = before.isReplaced;  // elsewhere
  // What came from another is safe there; a power failure may take the mover's copy.
  now.isLogged = before.isLogged && before.author != peer.name();
}

std::multiset<std::string> Contents::inFolder(SimulatedPeer& peer) const {
  std::multiset<std::string> found;
  if (const auto node = peer.host.files.tree().resolve(peer.path(folder_))) {
    eachFile(*node, {},
             [&](const auto&, const SimulatedNode& file) { found.insert(file.content); });
  }
  return found;
}

void Contents::willChange(SimulatedPeer& peer) { before_ = inFolder(peer); }

void Contents::changed(SimulatedPeer& peer) {
  const auto now = inFolder(peer);
  for (auto& [content, written] : written_) {
    if (before_.count(content) > now.count(content)) written.isReplaced = true;
  }
}

std::pair<std::string, std::int64_t> Contents::earlier(const SimulatedPeer& peer,
                                                       const std::string& path) const {
  const auto found = history_.find({peer.name(), path});
  if (found == history_.end()) return {};
  const auto& all = found->second;
  std::size_t chosen = all.size() / 2;
  // Of what was written within one second only the last was ever anybody's version.
  while (chosen + 1 < all.size() && all[chosen + 1].second == all[chosen].second) ++chosen;
  return all[chosen];
}

void Contents::noteLogged(const SimulatedPeer& peer) {
  const std::string log = peer.host.files.readAll(peer.logPath(folder_, peer)).value_or("");
  std::size_t& read = logRead_[peer.name()];
  if (log.size() <= read) return;
  std::istringstream lines(log.substr(read));
  read = log.size();
  for (std::string line; std::getline(lines, line);) {
    const auto fields = fieldsOf(line);
    if (fields.size() < 4 || fields[3] == "0") continue;
    const std::string path = folder_ + "/" + fields[2];
    const auto time = static_cast<std::int64_t>(numberIn(fields[3]));
    std::string& content = versions_[{path, peer.userId(), numberIn(fields[0])}];
    const auto attributes = peer.host.files.attributesOf(peer.path(path));
    if (attributes && attributes->kind == FileKind::Directory) {
      content = "/";
    } else if (attributes && attributes->modTime == time) {
      content = attributes->kind == FileKind::Link
                    ? "-> " + peer.host.files.linkTarget(peer.path(path))
                    : peer.read(path);
    }
    for (auto& [text, written] : written_) {
      // A file whose time was a known version's gets the next second.
      const bool isIt = text == content || (written.author == peer.name() && written.path == path &&
                                            (written.time == time || written.time + 1 == time));
      written.isLogged = written.isLogged || isIt;
    }
  }
}

bool Contents::isUnlogged(const std::string& author, const std::string& path,
                          std::int64_t time) const {
  return std::any_of(written_.begin(), written_.end(), [&](const auto& one) {
    const Written& written = one.second;
    return !written.isLogged && !written.isReplaced && written.author == author &&
           written.path == path && written.time == time;
  });
}

bool Contents::gaveWayTo(const std::string& content, const std::string& other) const {
  const auto before = written_.find(content);
  const auto after = written_.find(other);
  return before != written_.end() && after != written_.end() && before->second.isReplaced &&
         before->second.time == after->second.time;
}

std::size_t Contents::versionCount(const std::vector<std::pair<std::string, std::string>>& logs,
                                   const std::string& path, double modTime) {
  std::map<std::pair<std::string, double>, std::pair<std::string, double>> parents;
  for (const auto& [author, log] : logs) {
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
      const auto fields = fieldsOf(line);
      if (fields.size() < 4 || fields[2] != path || numberIn(fields[3]) != modTime) continue;
      const bool isOwn = fields.size() < 5 || fields[4].empty();
      parents[{author, numberIn(fields[0])}] = {isOwn ? author : fields[4], numberIn(fields[1])};
    }
  }
  // A line with its parent's time is a choice.
  return static_cast<std::size_t>(
      std::count_if(parents.begin(), parents.end(),
                    [&](const auto& one) { return !parents.contains(one.second); }));
}

void Contents::addLoggedPaths(const std::string& log, std::set<std::string>& paths) {
  std::istringstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    if (const auto fields = fieldsOf(line); fields.size() > 2) paths.insert(fields[2]);
  }
}

std::string Contents::ofVersion(const std::string& path, const VersionId& version) const {
  const auto found = versions_.find({folder_ + "/" + path, version.userId, version.logTime});
  return found == versions_.end() ? std::string() : found->second;
}

std::string Contents::losses(const std::vector<SimulatedPeer*>& peers) const {
  std::string text;
  std::map<std::string, std::unordered_set<std::string_view>> found;
  std::unordered_set<std::string_view> everywhere;
  std::unordered_set<std::string_view> kept;
  for (SimulatedPeer* peer : peers) {
    auto& here = found[peer->name()];
    const std::string home = peer->host.files.homeFolder();
    std::size_t precious = 0;
    eachFile(*peer->host.files.tree().resolve(home), {},
             [&](const std::string& path, const SimulatedNode& file) {
               // What a fetch replaced is kept for a while; that must not be needed to keep the
               // promise.
               const auto versions = path.find("/versions/");
               const bool isKept = versions != std::string::npos &&
                                   path.find(".open/", versions) == std::string::npos;
               (isKept ? kept : here).insert(file.content);
               if (path == "/other/x") precious += file.content == "precious" ? 1 : 2;
               const bool isOurs = path.starts_with("/" + folder_ + "/") ||
                                   path.starts_with("/.") || path == "/other/x";
               if (!isOurs) text += peer->name() + " has made " + path + "\n";
             });
    if (precious != 1) text += peer->name() + " has changed what lies outside of the folder\n";
    for (const auto& file : peer->host.files.trashed()) here.insert(file.content);
    everywhere.insert(here.begin(), here.end());
  }
  for (const auto& [content, written] : written_) {
    if (written.isReplaced) continue;
    // Others may have taken another file for it, and put theirs over it.
    if (isConfused(written.path, written.time) && kept.contains(content)) continue;
    const bool isHere =
        written.isLogged ? everywhere.contains(content) : found[written.author].contains(content);
    if (isHere) continue;
    text += content + (written.isLogged ? " is lost: " : ", not logged, is lost: ") +
            written.author + " wrote it to " + written.path + "\n";
  }
  return text;
}

}  // namespace zolvar
