#include "sim/SimulatedPeer.h"

#include <gtest/gtest.h>

#include "pool/LogGuard.h"

namespace zolvar {
namespace {

constexpr double LongestAnswer = 120;  ///< seconds until a person's wish is done
constexpr double LongestFinish = 20;   ///< seconds until what a program left on its lanes is done
constexpr double LongestSettling = 3 * 3600;
constexpr double QuietTime = 300;
constexpr double Step = 10;

std::string folderOf(const std::string& path) { return path.substr(0, path.find('/')); }
std::string restOf(const std::string& path) { return path.substr(path.find('/') + 1); }

}  // namespace

SimulatedPeer::SimulatedPeer(SimulatedWorld& world, const std::string& name) : host(world, name) {
  host.files.makeFolder(host.files.homeFolder());
}

SimulatedPeer::~SimulatedPeer() {
  if (isRunning()) crash();
}

void SimulatedPeer::start() {
  Application::Settings settings;
  settings.version = "test";
  settings.asksPeople = true;
  settings.pace = pace;
  auto made = Application::make(settings, host.platform());
  ASSERT_TRUE(made.has_value()) << made.error().message();
  application_ = std::move(*made);
  operations_ = std::make_unique<Operations>(*application_);
  application_->start();
  EXPECT_TRUE(host.loop.runUntil([this] { return application_->isStarted(); }, LongestAnswer))
      << name() << " does not start";
}

void SimulatedPeer::quit() {
  bool isDone = false;
  application_->shutDown([&] { isDone = true; });
  EXPECT_TRUE(host.loop.runUntil([&] { return isDone; }, LongestAnswer)) << name() << " hangs";
  operations_.reset();
  application_.reset();
  if (!host.loop.runUntil([this] { return host.lanes.areIdle(); }, LongestFinish)) {
    crash();  // a program that takes too long to end is ended
  }
}

void SimulatedPeer::crash() {
  host.files.faults.freeze();
  host.processes.faults.freeze();
  host.loop.dropAll();
  host.lanes.abandonAll();
  operations_.reset();
  application_.reset();
  host.loop.dropAll();
  host.lanes.abandonAll();
  host.files.dropLocks();
  host.files.faults.clear();
  host.processes.faults.clear();
  host.clock.restart();
}

void SimulatedPeer::setIsOn(bool isOn) {
  if (!isOn) {
    if (isRunning()) crash();
    host.processes.killAll();
  }
  host.world.network.setUp(name(), isOn);
  if (isOn) start();
}

std::shared_ptr<const PoolSnapshot> SimulatedPeer::snapshot(const std::string& folder) {
  const auto pool = application_->peer().poolNamed(folder);
  return pool ? pool->snapshot() : std::make_shared<PoolSnapshot>();
}

void SimulatedPeer::ask(const std::string& what, const Start& start) {
  auto outcome = std::make_shared<std::optional<Result<>>>();
  start([outcome](Result<> result) { *outcome = std::move(result); });
  EXPECT_TRUE(host.loop.runUntil([&] { return outcome->has_value(); }, LongestAnswer))
      << name() << " gets no answer: " << what;
  if (*outcome && !**outcome) {
    ADD_FAILURE() << name() << ", " << what << ": " << refusalText((**outcome).error());
  }
}

void SimulatedPeer::share(const std::string& folder, const std::string& password) {
  ASSERT_TRUE(host.files.makeFolder(path(folder)));
  ask("share " + folder, [&](Operations::Done done) {
    operations_->share(path(folder), password.empty() ? std::nullopt : std::optional(password),
                       std::move(done));
  });
}

void SimulatedPeer::subscribe(const std::string& folder, const std::string& password) {
  EXPECT_TRUE(host.loop.runUntil([&] { return application_->peer().presence(folder) != nullptr; },
                                 LongestAnswer))
      << name() << " sees no folder " << folder;
  ask("subscribe to " + folder, [&](Operations::Done done) {
    operations_->subscribe(folder, path(folder),
                           password.empty() ? std::nullopt : std::optional(password),
                           std::move(done));
  });
}

void SimulatedPeer::unsubscribe(const std::string& folder) {
  const auto left = operations_->unsubscribe(folder);
  EXPECT_TRUE(left.has_value()) << refusalText(left.error());
}

void SimulatedPeer::setPassword(const std::string& folder, const std::string& password) {
  ask("change the password of " + folder,
      [&](Operations::Done done) { operations_->setPassword(folder, password, std::move(done)); });
}

void SimulatedPeer::answer(const std::string& folder, bool deletes) {
  ask("answer",
      [&](Operations::Done done) { operations_->answer(folder, deletes, std::move(done)); });
}

std::string SimulatedPeer::versionBy(const std::string& folder, const std::string& path,
                                     const SimulatedPeer& author) {
  for (const Conflict& conflict : *snapshot(folder)->conflicts) {
    if (conflict.path != path) continue;
    for (const ConflictVersion& version : conflict.versions) {
      if (version.id.userId == author.userId()) return version.id.text();
    }
  }
  ADD_FAILURE() << name() << " has no version of " << path << " by " << author.name();
  return {};
}

void SimulatedPeer::use(const std::string& path, const SimulatedPeer& author) {
  const std::string folder = folderOf(path);
  const std::string version = versionBy(folder, restOf(path), author);
  ask("use " + path, [&](Operations::Done done) {
    operations_->useVersion(folder, restOf(path), version, std::move(done));
  });
}

void SimulatedPeer::drop(const std::string& path, const SimulatedPeer& author) {
  const std::string folder = folderOf(path);
  const std::string version = versionBy(folder, restOf(path), author);
  ask("drop " + path, [&](Operations::Done done) {
    operations_->dropVersion(folder, restOf(path), version, std::move(done));
  });
}

std::vector<std::string> SimulatedPeer::conflicts(const std::string& folder) {
  std::vector<std::string> paths;
  const auto now = snapshot(folder);
  if (now->conflicts) {
    for (const Conflict& conflict : *now->conflicts) paths.push_back(conflict.path);
  }
  return paths;
}

std::vector<std::string> SimulatedPeer::missing(const std::string& folder) {
  const auto now = snapshot(folder);
  return now->missing ? *now->missing : std::vector<std::string>();
}

std::vector<std::string> SimulatedPeer::questioned(const std::string& folder) {
  const auto now = snapshot(folder);
  return now->question ? now->question->paths : std::vector<std::string>();
}

void SimulatedPeer::write(const std::string& file, const std::string& content) {
  host.files.write(path(file), content);
}
void SimulatedPeer::save(const std::string& file, const std::string& content) {
  host.files.save(path(file), content);
}
void SimulatedPeer::erase(const std::string& file) { host.files.remove(path(file)); }
void SimulatedPeer::move(const std::string& from, const std::string& to) {
  host.files.move(path(from), path(to));
}
std::string SimulatedPeer::read(const std::string& file) const {
  return host.files.readAll(path(file)).value_or("(none)");
}

std::map<std::string, std::string> SimulatedPeer::contents(const std::string& folder) const {
  if (!host.files.exists(path(folder))) return {};
  return host.files.contents(path(folder));
}

std::string SimulatedPeer::path(const std::string& file) const {
  return host.files.homeFolder() + "/" + file;
}

std::string SimulatedPeer::logPath(const std::string& folder, const SimulatedPeer& author) const {
  return path(folder) + "/.Zolvar/" + author.userId() + ".fplog";
}

std::string SimulatedPeer::fingerprint() {
  if (!isRunning()) return "off";
  std::string text;
  for (const auto& pool : application_->peer().filePools()) {
    const auto now = pool->snapshot();
    text += pool->name() + phaseName(now->phase);
    for (const auto& [log, size] : now->logSizes) text += log + std::to_string(size) + ";";
    for (const std::string& one : missing(pool->name())) text += "!" + one;
    for (const std::string& one : conflicts(pool->name())) text += "?" + one;
    for (const std::string& one : questioned(pool->name())) text += "*" + one;
    for (const auto& [file, content] : contents(pool->name())) {
      if (!file.starts_with(LogGuard::AsideFolder)) text += "\n" + file + "=" + content;
    }
  }
  return text;
}

SimulatedPeer& Net::peer(const std::string& name) {
  auto& peer = peers_[name];
  if (peer == nullptr) {
    peer = std::make_unique<SimulatedPeer>(world, name);
    peer->pace = pace;
    peer->start();
  }
  return *peer;
}

std::vector<SimulatedPeer*> Net::peers() const {
  std::vector<SimulatedPeer*> all;
  for (const auto& [name, peer] : peers_) all.push_back(peer.get());
  return all;
}

void Net::share(SimulatedPeer& owner, const std::string& folder,
                const std::map<std::string, std::string>& files,
                const std::vector<SimulatedPeer*>& subscribers) {
  for (const auto& [path, content] : files) owner.write(folder + "/" + path, content);
  advance(60);
  owner.share(folder);
  for (SimulatedPeer* peer : subscribers) peer->subscribe(folder);
  settle();
}

void Net::settle() {
  std::string last;
  double quiet = 0;
  for (double passed = 0; passed < LongestSettling; passed += Step) {
    world.loop.advance(Step);
    std::string now;
    for (SimulatedPeer* peer : peers()) now += peer->fingerprint() + "\n--\n";
    quiet = now == last ? quiet + Step : 0;
    last = std::move(now);
    if (quiet >= QuietTime) return;
  }
  ADD_FAILURE() << "It never settles:\n" << last;
}

void Net::expectSame(const std::string& folder,
                     const std::map<std::string, std::string>& contents) {
  settle();
  for (SimulatedPeer* peer : peers()) {
    if (!peer->isRunning()) continue;
    EXPECT_EQ(peer->contents(folder), contents) << "at " << peer->name();
    EXPECT_EQ(peer->missing(folder), std::vector<std::string>()) << "at " << peer->name();
    EXPECT_EQ(peer->conflicts(folder), std::vector<std::string>()) << "at " << peer->name();
    EXPECT_EQ(peer->snapshot(folder)->trouble, "") << "at " << peer->name();
  }
}

}  // namespace zolvar
