#include <avahi-common/strlst.h>

#include <algorithm>
#include <vector>

#include "ServiceTest.h"
#include "platform/qt/AvahiTxt.h"
#include "platform/qt/SystemHosts.h"
#include "platform/qt/ThreadedServiceDirectory.h"

namespace zolvar {
namespace {

constexpr auto Type = "_zolvar._tcp";

TEST(AvahiTxt, keepsAnyBytesOfAValue) {
  const TxtRecord txt{{"v", std::string("\0\0\0\2", 4)}, {"fsn", "Büro=1"}, {"pw", ""}};
  const auto list = encodeTxt(txt);
  ASSERT_TRUE(list);
  std::string bytes(100, '\0');
  bytes.resize(avahi_string_list_serialize(list->get(), bytes.data(), bytes.size()));
  EXPECT_EQ(decodeTxt(bytes.data(), bytes.size()), txt);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    // A cut record is none, or what was whole of it.
    if (const auto part = decodeTxt(bytes.data(), size)) {
      for (const auto& [key, value] : *part) EXPECT_EQ(txt.at(key), value) << size;
    }
  }
}

TEST(AvahiTxt, readsStrangeRecords) {
  const struct {
    std::string description, bytes;
    TxtRecord expected;
  } rows[] = {{"empty", std::string(1, '\0'), {}},
              {"the first of two", "\3a=1\3a=2", {{"a", "1"}}},
              {"without a value", "\1a", {{"a", ""}}},
              {"without a key", "\2=1\3b=2", {{"b", "2"}}},
              {"key with control characters", "\4\1b=2", {}}};
  for (const auto& row : rows) {
    EXPECT_EQ(decodeTxt(row.bytes.data(), row.bytes.size()), row.expected) << row.description;
  }
}

class AnnouncementTest : public AdapterTest {};

TEST_F(AnnouncementTest, refusesWhatCannotBeAnnounced) {
  ThreadedServiceDirectory directory(loop_, log_);
  const struct {
    std::string description, name, type;
    TxtRecord txt;
    bool isAccepted;
  } rows[] = {{"longest name", std::string(63, 'n'), Type, {}, true},
              {"name too long", std::string(64, 'n'), Type, {}, false},
              {"no name", "", Type, {}, false},
              {"name with a NUL", std::string("a\0b", 3), Type, {}, false},
              {"name not UTF-8", "a\xff", Type, {}, false},
              {"bad type", "a", "zolvar", {}, false},
              {"longest pair", "a", Type, {{"k", std::string(253, 'v')}}, true},
              {"pair too long", "a", Type, {{"k", std::string(254, 'v')}}, false},
              {"bad key", "a", Type, {{"k=", "v"}}, false}};
  for (const auto& row : rows) {
    const auto result = directory.publish(row.name, row.type, 49999, row.txt, {});
    EXPECT_EQ(result.has_value(), row.isAccepted) << row.description;
    if (!result) {
      EXPECT_EQ(result.error().kind, FailureKind::Refused) << row.description;
    }
  }
}

class ServiceDirectoryTest : public ServiceTest {
 protected:
  std::unique_ptr<Publication> publish(const std::string& name, const TxtRecord& txt,
                                       const std::string& tag = "") {
    auto result =
        directory_.publish(name, Type, 49999, txt,
                           {[this, name, tag] { events_.push_back("established " + name + tag); },
                            [this, name, tag](const Failure& failure) {
                              EXPECT_EQ(failure.kind, FailureKind::Refused);
                              events_.push_back("failed " + name + tag);
                            }});
    EXPECT_TRUE(result);
    return std::move(*result);
  }
  std::unique_ptr<ServiceBrowser> browse() {
    return directory_.browse(
        Type, {[this](const std::string& name, const TxtRecord& txt) {
                 const auto text = txt.find("t");
                 events_.push_back("txt " + name + " " + (text == txt.end() ? "" : text->second));
               },
               [this](const std::string& name) { events_.push_back("lost " + name); }});
  }
  /// Waits for the event and forgets it and all before it.
  bool arrives(const std::string& event, double seconds = 10) {
    const auto find = [&] { return std::find(events_.begin(), events_.end(), event); };
    if (!runUntil([&] { return find() != events_.end(); }, seconds)) {
      ADD_FAILURE() << "no \"" << event << "\" but " << testing::PrintToString(events_);
      return false;
    }
    events_.erase(events_.begin(), find() + 1);
    return true;
  }

  ThreadedServiceDirectory directory_{loop_, log_};
  std::vector<std::string> events_;
};

TEST_F(ServiceDirectoryTest, followsOneServiceThroughItsLife) {
  const auto browser = browse();
  const std::string binary("\0\xff=", 3);
  auto publication = publish("life", {{"t", "never seen"}});
  ASSERT_TRUE(publication->updateTxt({{"t", binary}, {"v", "2"}}));  // before there is a service
  ASSERT_TRUE(arrives("established life"));
  ASSERT_TRUE(arrives("txt life " + binary));
  runFor(1.5);  // the same service on lo and on the network, and what else there is to settle
  EXPECT_TRUE(events_.empty()) << testing::PrintToString(events_);

  ASSERT_TRUE(publication->updateTxt({{"t", "b"}}));
  EXPECT_TRUE(events_.empty());
  ASSERT_TRUE(arrives("txt life b"));
  // There and back again: the daemon reports only that the second record ended.
  ASSERT_TRUE(publication->updateTxt({{"t", "c"}}));
  runFor(0.3);
  ASSERT_TRUE(publication->updateTxt({{"t", "b"}}));
  ASSERT_TRUE(arrives("txt life b"));
  EXPECT_FALSE(publication->updateTxt({{"t", std::string(300, 'x')}}));

  publication.reset();
  ASSERT_TRUE(arrives("lost life"));
  publication = publish("life", {{"t", "anew"}});
  EXPECT_TRUE(events_.empty());  // nothing from inside the call
  ASSERT_TRUE(arrives("txt life anew"));
}

TEST_F(ServiceDirectoryTest, survivesARestartOfTheDaemon) {
  const auto browser = browse();
  const auto publication = publish("steady", {{"t", "a"}});
  ASSERT_TRUE(arrives("txt steady a"));
  // The daemon renumbers itself when it takes an echo of the last one for another host.
  EXPECT_TRUE(directory_.hostNameFqdn().starts_with("servicetest")) << directory_.hostNameFqdn();
  const std::string daemon =
      "avahi-daemon --no-drop-root --no-chroot --no-rlimits -f $ZOLVAR_TEST_AVAHI ";
  ASSERT_TRUE(run(daemon + "-k"));
  ASSERT_TRUE(arrives("lost steady"));
  EXPECT_EQ(directory_.hostNameFqdn(), "");
  ASSERT_TRUE(publication->updateTxt({{"t", "b"}}));
  ASSERT_TRUE(run(daemon + "-D"));
  ASSERT_TRUE(arrives("established steady"));
  ASSERT_TRUE(arrives("txt steady b"));
}

TEST_F(ServiceDirectoryTest, triesATakenNameAgainWhenTheHostIsRenamed) {
  auto first = publish("taken", {{"t", "1"}}, " first");
  ASSERT_TRUE(arrives("established taken first"));
  const auto second = publish("taken", {{"t", "2"}}, " second");
  ASSERT_TRUE(arrives("failed taken second"));
  first.reset();
  const auto rename = [](const std::string& name) {
    return run(
        "dbus-send --system --print-reply --dest=org.freedesktop.Avahi / "
        "org.freedesktop.Avahi.Server.SetHostName string:" +
        name);
  };
  ASSERT_TRUE(rename("renamed"));
  ASSERT_TRUE(arrives("established taken second"));
  EXPECT_EQ(directory_.hostNameFqdn(), "renamed.local");
  ASSERT_TRUE(rename("servicetest"));
  ASSERT_TRUE(arrives("established taken second"));
}

TEST_F(ServiceDirectoryTest, endsInsideItsOwnEvents) {
  std::unique_ptr<Publication> publication;
  std::unique_ptr<ServiceBrowser> browser;
  int calls = 0;
  publication = std::move(*directory_.publish("brief", Type, 1, {},
                                              {[&] {
                                                 publication.reset();
                                                 ++calls;
                                               },
                                               nullptr}));
  const auto other = publish("other", {});
  browser = directory_.browse(Type, {[&](const std::string&, const TxtRecord&) {
                                       browser.reset();
                                       ++calls;
                                     },
                                     nullptr});
  ASSERT_TRUE(runUntil([&] { return calls == 2; }));
  ASSERT_TRUE(arrives("established other"));
  runFor(0.1);
  EXPECT_EQ(calls, 2);
}

TEST_F(ServiceDirectoryTest, waitsForNoDaemonThatHangs) {
  const auto browser = browse();
  const auto publication = publish("patient", {{"t", "a"}});
  ASSERT_TRUE(arrives("txt patient a"));
  const auto signal = [](const std::string& name) {
    return run("kill -" + name + " $(cat /run/avahi-daemon/pid)");
  };
  ASSERT_TRUE(signal("STOP"));
  const auto start = std::chrono::steady_clock::now();
  for (const char* text : {"b", "c", "d"}) {
    ASSERT_TRUE(publication->updateTxt({{"t", text}}));
    publish(std::string("brief ") + text, {});  // and withdrawn at once
  }
  const auto other = publish("other", {{"t", "x"}});
  EXPECT_EQ(directory_.hostNameFqdn().empty(), false);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
  runFor(0.2);  // what avahi-daemon had told before it stopped may still come
  for (const std::string& event : events_) EXPECT_FALSE(event.starts_with("txt")) << event;
  ASSERT_TRUE(signal("CONT"));
  ASSERT_TRUE(arrives("txt patient d"));
  ASSERT_TRUE(arrives("txt other x"));
}

TEST_F(ServiceDirectoryTest, namesThisMachineFromTheStart) {
  SystemHosts hosts(directory_, log_);
  auto names = hosts.names();
  ASSERT_FALSE(names.empty());
  EXPECT_EQ(names.front(), "servicetest.local");  // the directory is not connected yet
  std::sort(names.begin(), names.end());
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
  EXPECT_EQ(hosts.userName(), "root");
  EXPECT_EQ(hosts.lookUp("localhost"), "127.0.0.1");
  const auto unknown = hosts.lookUp("no-such-host.invalid");
  ASSERT_FALSE(unknown);
  EXPECT_EQ(unknown.error().kind, FailureKind::Absent);
}

}  // namespace
}  // namespace zolvar
