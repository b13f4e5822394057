#include <gtest/gtest.h>

#include "net/KDBonjour.h"
#include "net/KDParticipants.h"
#include "net/KDPeer.h"
#include "net/ScriptedProcesses.h"
#include "util/InconsistencyError.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

class PeerTest : public testing::Test {
 protected:
  PeerTest() {
    KDPeer::Settings settings;
    settings.basePath = "/home/anna/Public/Zolvar";
    settings.owner = std::nullopt;
    peer = *KDPeer::make(settings, host.platform, center, bonjour);
    bonjour.startNetServiceBrowser();
    observations.push_back(center.observe<KDPoolWarning>(
        [this](const auto& warning) { warnings.push_back(warning.text); }));
    observations.push_back(center.observe<KDOwnIdElsewhere>(
        [this](const auto& told) { twins.push_back(told.serviceName); }));
    run();
  }
  ~PeerTest() override { run(); }

  void run() { world.loop.runUntilIdle(); }
  KDFilePool& add(const std::string& path) {
    auto pool = peer->addPoolWithPath(path, {});
    run();
    return **pool;
  }
  KDFilePool& addActive(const std::string& path) {
    KDFilePool& pool = add(path);
    activate(pool);
    return pool;
  }
  void activate(KDFilePool& pool) {
    EXPECT_TRUE(pool.startLocalLog());
    pool.activate([](const Result<>& done) { EXPECT_TRUE(done); });
    run();
    EXPECT_TRUE(pool.isActive()) << host.log.text();
  }
  std::set<std::string> announced() {
    world.loop.advance(1);
    std::set<std::string> names;
    for (const auto& [name, record] : host.services.published()) {
      names.insert(fullServiceName(record) + ":" + std::to_string(parseServiceName(name)->port));
    }
    return names;
  }
  /// What beta announces as `user`, on beta's own port.
  std::unique_ptr<Publication> announceElsewhere(const std::string& userId, unsigned port,
                                                 bool needsPassword = false) {
    TxtRecord record{{"fsn", "Docs"}, {"logcs", std::string(16, 'x')}};
    encodeUnsignedIntValue(record, txt::Version, ProtocolVersion);
    if (needsPassword) encodeUnsignedIntValue(record, txt::Password, ProtocolVersion);
    const auto name = makeServiceName(userId, port, hexHash("Docs"));
    auto published =
        beta.services.publish(name, ServiceType, static_cast<std::uint16_t>(port), record, {});
    world.loop.advance(1);
    return std::move(*published);
  }
  using Names = std::set<std::string>;

  SimulatedWorld world;
  ScriptedHost host{world, "alpha", "anna"};
  SimulatedPlatform beta{world, "beta", "ben"};
  NotificationCenter center;
  std::vector<NotificationCenter::Observation> observations;
  std::vector<std::string> warnings;
  std::vector<std::string> twins;
  KDBonjour bonjour{host.platform, center};
  KDParticipants participants{"anna@alpha.local", host.log};
  std::unique_ptr<KDPeer> peer;
};

TEST_F(PeerTest, servesAndAnnouncesActivePools) {
  KDFilePool& docs = addActive("/home/anna/Docs");
  add("/home/anna/Later");
  EXPECT_THROW(peer->announcePool("Docs"), InconsistencyError);
  EXPECT_THROW((void)peer->serverPort(), InconsistencyError);
  host.processes.takenPorts = {49999};
  host.defaults.setString("BWLimitOut", "5");
  host.defaults.setString("BWLimitIn", "250");
  EXPECT_EQ(peer->clientBandwidthLimit(), 250U);
  peer->startServer();
  run();
  EXPECT_EQ(peer->serverPort(), 50000U);
  EXPECT_EQ(host.processes.launches.back()[0], "--bwlimit=10");
  EXPECT_EQ(announced(), Names{"Docs:50000"});
  const std::string& served = host.processes.configurations.back();
  EXPECT_NE(served.find("[Docs]\npath = /home/anna/Docs/\n"), std::string::npos);
  EXPECT_EQ(served.find("[Later]"), std::string::npos);

  activate(*peer->poolNamed("Later"));
  EXPECT_EQ(host.processes.launches.size(), 2U);
  EXPECT_NE(host.processes.configurations.back().find("[Later]"), std::string::npos);
  EXPECT_EQ(announced(), (Names{"Docs:50000", "Later:50000"}));

  docs.deactivate();
  run();
  EXPECT_EQ(host.processes.configurations.back().find("[Docs]"), std::string::npos);
  EXPECT_EQ(announced(), Names{"Later:50000"});

  host.networkWatch.change();
  run();
  EXPECT_EQ(host.processes.launches.size(), 4U);
  peer.reset();
  run();
  EXPECT_TRUE(host.processes.running.empty());
  EXPECT_TRUE(host.files.isFolder("/home/anna/Docs"));
}

TEST_F(PeerTest, announcesExactlyWhatPeersNeed) {
  KDFilePool& docs = addActive("/home/anna/Docs");
  peer->startServer();
  run();
  const auto record = [this] {
    world.loop.advance(1);
    return host.services.published().at(
        makeServiceName("anna@alpha.local", 49999, hexHash("Docs")));
  };
  const TxtRecord first = record();
  EXPECT_EQ(first.size(), 3U);
  EXPECT_EQ(first.at("v"), std::string("\0\0\0\2", 4));
  EXPECT_EQ(first.at("fsn"), "Docs");
  EXPECT_EQ(first.at("logcs"), docs.snapshot()->logFilesHash);
  EXPECT_EQ(first.at("logcs").size(), 16U);

  docs.setPassword("secret", [](const Result<>&) {});
  run();
  EXPECT_EQ(record().at("pw"), std::string("\0\0\0\2", 4));
  EXPECT_EQ(host.files.readAll(peer->passwordFilePath()), peer->passwordFileContent());
  EXPECT_NE(peer->passwordFileContent().find("\n" + hexHash("Docs") + ":secret\n"),
            std::string::npos);
  EXPECT_EQ(peer->configFileContent().find("secret\n"), std::string::npos);
  EXPECT_NE(peer->configFileContent().find("auth users = " + hexHash("Docs") + "\nsecrets file"),
            std::string::npos);

  host.files.write("/home/anna/Docs/new.txt", "words", 1'700'000'000);
  world.loop.advance(20);  // scan, debounce
  EXPECT_NE(record().at("logcs"), first.at("logcs"));
  EXPECT_EQ(record().at("logcs"), docs.snapshot()->logFilesHash);
}

TEST_F(PeerTest, doesNotServeAPoolWhosePasswordCannotBeRead) {
  host.defaults.setString("HasPassword-Docs", "1");
  host.secrets.isLocked = true;
  addActive("/home/anna/Docs");
  addActive("/home/anna/Open");
  peer->startServer();
  run();
  peer->reannounceAllPools();
  EXPECT_EQ(announced(), Names{"Open:49999"});
  EXPECT_EQ(host.processes.configurations.back().find("[Docs]"), std::string::npos);
  EXPECT_EQ(std::count_if(warnings.begin(), warnings.end(),
                          [](const auto& text) {
                            return text.find("password cannot be read") != std::string::npos;
                          }),
            1);
}

TEST_F(PeerTest, servesOnlyOneOfTwoNamesThatTheDaemonConfuses) {
  addActive("/home/anna/My Docs");
  peer->startServer();
  run();
  addActive("/home/anna/My docs");
  addActive("/home/anna/a/MyDocs");
  EXPECT_EQ(announced(), Names{"My Docs:49999"});
  EXPECT_EQ(warnings.size(), 2U);
  EXPECT_EQ(host.processes.configurations.back().find("MyDocs"), std::string::npos);
}

TEST_F(PeerTest, withdrawsWhileTheDaemonCannotRunAndComesBack) {
  addActive("/home/anna/Docs");
  peer->startServer();
  run();
  EXPECT_EQ(announced(), Names{"Docs:49999"});
  host.processes.exitStatus = 4;
  host.networkWatch.change();
  run();
  EXPECT_FALSE(peer->isServerRunning());
  EXPECT_EQ(announced(), Names{});
  host.processes.exitStatus = 0;
  host.processes.takenPorts = {49999};
  world.loop.advance(31);
  EXPECT_EQ(announced(), Names{"Docs:50000"});
}

TEST_F(PeerTest, noticesItsOwnIdElsewhere) {
  addActive("/home/anna/Docs");
  peer->startServer();
  run();
  auto passing = announceElsewhere("anna@alpha.local", 50001);
  world.loop.advance(5);
  passing.reset();  // an earlier run of ours, gone by now
  world.loop.advance(30);
  EXPECT_TRUE(twins.empty());
  const auto stranger = announceElsewhere("ben@beta.local", 49999);
  const auto twin = announceElsewhere("anna@alpha.local", 50001);
  world.loop.advance(30);
  EXPECT_EQ(twins,
            std::vector<std::string>{makeServiceName("anna@alpha.local", 50001, hexHash("Docs"))});
  EXPECT_EQ(warnings.size(), 1U);
}

TEST_F(PeerTest, noticesATwinThatHasTheSameServiceName) {
  const auto twin = announceElsewhere("anna@alpha.local", 49999);
  addActive("/home/anna/Docs");
  peer->startServer();
  world.loop.advance(2);
  EXPECT_TRUE(twins.empty());  // may be a leftover on the network
  world.loop.advance(60);
  EXPECT_EQ(twins.size(), 1U);
}

TEST_F(PeerTest, believesAChangedPasswordFlag) {
  KDFilePool& docs = add("/home/anna/Docs");
  const auto anna = participants.participant({"ben", "beta.local", 49999, "Docs"});
  KDPoolPresence* presence = peer->presence(docs);
  EXPECT_TRUE(presence->addParticipant(anna));
  EXPECT_FALSE(presence->addParticipant(anna));
  EXPECT_FALSE(presence->passwordRequiredByAnyParticipant());
  const auto theirs = announceElsewhere("ben@beta.local", 49999, true);
  EXPECT_TRUE(presence->passwordRequiredByAnyParticipant());
}

TEST_F(PeerTest, countsRemoteParticipantsAndDecidesToSync) {
  KDFilePool& docs = add("/home/anna/Docs");
  KDPoolPresence& presence = *peer->presence("Docs");
  EXPECT_FALSE(presence.hasRemoteParticipants());
  const auto ben = participants.participant({"ben", "beta.local", 49999, "Docs"});
  presence.addParticipant(ben);
  EXPECT_EQ(presence.numberOfRemoteParticipants(), 1U);
  activate(docs);
  EXPECT_FALSE(presence.hasRemoteParticipants());
  EXPECT_EQ(presence.numberOfRemoteParticipants(), std::nullopt);
  presence.addParticipant(participants.participant({"anna", "alpha.local", 49999, "Docs"}));
  EXPECT_EQ(presence.numberOfRemoteParticipants(), 1U);

  TxtRecord theirs = presence.announcementDictionary();
  EXPECT_FALSE(presence.needsToSync(theirs, *ben));
  theirs["logcs"][0] ^= 1;
  EXPECT_TRUE(presence.needsToSync(theirs, *ben));
  encodeUnsignedIntValue(theirs, txt::Version, 3);
  EXPECT_FALSE(presence.needsToSync(theirs, *ben));
  EXPECT_TRUE(
      host.log.contains("Warning: Sync with ben@beta.local (in Docs) skipped due to "
                        "different protocol versions."));
}

TEST_F(PeerTest, addsAndRemovesPools) {
  KDFilePool& docs = addActive("/home/anna/Docs");
  // The duplicate test looks the whole path up: a folder of a known name replaces the pool, the
  // bare name is refused, and this form does not say why.
  const auto refused = peer->addPoolWithPath("Docs", {});
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().reason, "");
  const auto make = [this](const std::string& path, const KDFilePool::Options& options) {
    return KDFilePool::make(path, options, host.platform, center, nullptr);
  };
  EXPECT_EQ(peer->addPoolWithPathUsingPoolClass("Docs", make, {}).error().reason,
            "There is already a Sync Folder with the same name present");
  EXPECT_FALSE(peer->addPoolWithPathUsingPoolClass("/home/anna/a:b", make, {}));
  EXPECT_THROW(peer->removePool(docs), InconsistencyError);

  KDFilePool& kept = add("/home/anna/Kept");
  peer->presence(kept)->addParticipant(participants.participant({"b", "beta.local", 2000, "Kept"}));
  docs.deactivate();
  bool removed = false;
  peer->removePool(docs, [&removed](const Result<>& done) { removed = done.has_value(); });
  run();
  EXPECT_TRUE(removed);
  EXPECT_FALSE(host.files.isFolder("/home/anna/Docs"));
  EXPECT_EQ(peer->poolNamed("Docs"), nullptr);
  EXPECT_NE(peer->poolNamed("Kept"), nullptr);  // its folder is gone, its participants are not
}

TEST_F(PeerTest, loadsPicturesThatAreNotTooLarge) {
  const auto ben = participants.participant({"ben", "beta.local", 49999, "Docs"});
  add("/home/anna/Docs");
  const std::string file = "/home/anna/Docs/.Zolvar/ben@beta.local.tiff";
  std::vector<bool> found;
  const auto load = [&] {
    peer->loadPicture(ben, [&found](bool is) { found.push_back(is); });
    run();
  };
  load();
  host.files.write(file, std::string((1 << 20) + 1, 'x'));
  load();
  host.files.write(file, "tiff");
  load();
  EXPECT_EQ(found, (std::vector<bool>{false, false, true}));
  EXPECT_EQ(ben->pictureData(), "tiff");
}

TEST_F(PeerTest, releasesByStoppingAndTrashing) {
  addActive("/home/anna/Docs");
  peer->startServer();
  run();
  peer->release();
  run();
  EXPECT_TRUE(host.processes.running.empty());
  EXPECT_FALSE(host.files.isFolder("/home/anna/Docs"));
  EXPECT_TRUE(peer->filePoolsByName().empty());
}

}  // namespace
}  // namespace zolvar
