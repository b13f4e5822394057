#include <gtest/gtest.h>

#include "net/KDBonjour.h"
#include "support/SimulatedPlatform.h"
#include "util/NotificationCenter.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

TxtRecord record(const std::string& digest) {
  TxtRecord txt{{"fsn", "Docs"}, {"logcs", std::string(16, digest[0])}};
  encodeUnsignedIntValue(txt, txt::Version, ProtocolVersion);
  return txt;
}

class BonjourTest : public testing::Test {
 protected:
  BonjourTest() {
    observations.push_back(center.observe<NetServiceDidAddNotification>(
        [this](const auto& note) { events.push_back("add " + note.serviceName); }));
    observations.push_back(center.observe<NetServicesDidUpdateTXTRecordDataNotification>(
        [this](const auto& note) { events.push_back("update " + note.serviceName); }));
    observations.push_back(center.observe<NetServiceDidRemoveNotification>(
        [this](const auto& note) { events.push_back("remove " + note.serviceName); }));
    observations.push_back(center.observe<NetServiceErrorNotification>(
        [this](const auto& note) { events.push_back("error " + note.serviceName); }));
  }
  std::vector<std::string> eventsOf(const std::string& name) {
    world.loop.advance(5);
    std::vector<std::string> found;
    for (const auto& event : events) {
      if (event.ends_with(" " + name)) found.push_back(event.substr(0, event.find(' ')));
    }
    events.clear();
    return found;
  }
  using Events = std::vector<std::string>;

  SimulatedWorld world;
  SimulatedPlatform alpha{world, "alpha", "anna"};
  SimulatedPlatform beta{world, "beta", "ben"};
  NotificationCenter center;
  std::vector<NotificationCenter::Observation> observations;
  std::vector<std::string> events;
  const std::string name = makeServiceName("ben@beta.local", 49999, hexHash("Docs"));
};

TEST_F(BonjourTest, tellsAServiceFromItsFirstRecordToItsEnd) {
  KDBonjour here(alpha, center);
  here.startNetServiceBrowser();
  here.startNetServiceBrowser();
  auto publication = beta.services.publish(name, ServiceType, 49999, record("a"), {});
  ASSERT_TRUE(publication);
  EXPECT_EQ(eventsOf(name), (Events{"add", "update"}));
  EXPECT_EQ(*here.announcementInfo(name), record("a"));
  ASSERT_TRUE((*publication)->updateTxt(record("b")));
  EXPECT_EQ(eventsOf(name), Events{"update"});
  publication->reset();
  EXPECT_EQ(eventsOf(name), Events{"remove"});
  EXPECT_EQ(here.announcementInfo(name), nullptr);
}

TEST_F(BonjourTest, refusesLiesWithOneWarningAService) {
  KDBonjour here(alpha, center);
  here.startNetServiceBrowser();
  TxtRecord nameless = record("a");
  nameless.erase("fsn");
  auto first = beta.services.publish(name, ServiceType, 49999, nameless, {});
  const std::string privileged = makeServiceName("ben@beta.local", 22, hexHash("Docs"));
  auto second = beta.services.publish(privileged, ServiceType, 22, record("a"), {});
  EXPECT_EQ(eventsOf(name), Events{});
  ASSERT_TRUE((*second)->updateTxt(record("b")));
  nameless["logcs"] = std::string(16, 'z');
  ASSERT_TRUE((*first)->updateTxt(nameless));
  EXPECT_EQ(eventsOf(privileged), Events{});
  EXPECT_EQ(alpha.log.count("Warning, no full service name found. Ignoring announcement"), 1U);
  EXPECT_EQ(alpha.log.count("'" + privileged + "' refused"), 1U);
  first->reset();
  EXPECT_EQ(eventsOf(name), Events{});  // what was never added is not removed
}

TEST_F(BonjourTest, publishesOwnServicesAndTellsWhenTheNameIsTaken) {
  KDBonjour here(alpha, center);
  here.startNetServiceBrowser();
  const std::string own = makeServiceName("anna@alpha.local", 49999, hexHash("Docs"));
  auto service = here.startNetService(own, 49999, record("a"));
  ASSERT_TRUE(service);
  const auto seen = eventsOf(own);
  EXPECT_EQ(std::count(seen.begin(), seen.end(), "add"), 1);
  EXPECT_TRUE(here.isOwnService(own));
  (*service)->setAnnouncementInfo(record("b"));
  EXPECT_TRUE((*service)->announceInfo());
  EXPECT_EQ(alpha.services.published().at(own), record("b"));

  TxtRecord tooLong = record("c");
  tooLong["fsn"] = std::string(300, 'x');
  (*service)->setAnnouncementInfo(tooLong);
  EXPECT_FALSE((*service)->announceInfo());
  EXPECT_TRUE(alpha.log.contains("*** Invalid TXT record set: "));

  auto taken = beta.services.publish(name, ServiceType, 49999, record("a"), {});
  world.loop.advance(1);
  auto loser = here.startNetService(name, 49999, record("a"));
  const auto told = eventsOf(name);
  EXPECT_EQ(std::count(told.begin(), told.end(), "error"), 1);
  EXPECT_FALSE(here.startNetService(std::string(64, 'n'), 49999, record("a")));
}

}  // namespace
}  // namespace zolvar
