#include <gtest/gtest.h>

#include "net/KDParticipant.h"
#include "net/KDParticipants.h"
#include "net/ServiceName.h"
#include "net/TxtCodec.h"
#include "support/RecordingLog.h"
#include "util/InconsistencyError.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

class ParticipantTest : public testing::Test {
 protected:
  static TxtRecord announcement(bool needsPassword) {
    TxtRecord record{{"fsn", "Docs"}};
    encodeUnsignedIntValue(record, txt::Version, ProtocolVersion);
    if (needsPassword) encodeUnsignedIntValue(record, txt::Password, ProtocolVersion);
    return record;
  }
  std::shared_ptr<KDParticipant> fromService(unsigned port, bool needsPassword = false) {
    return table.fromService(makeServiceName("anna@beta.local", port, hexHash("Docs")),
                             announcement(needsPassword));
  }
  RecordingLog log;
  KDParticipants table{"me@alpha.local", log};
};

TEST_F(ParticipantTest, isOneObjectAnIdentity) {
  auto anna = fromService(49999);
  ASSERT_TRUE(anna);
  EXPECT_EQ(anna->address(), (ParticipantAddress{"anna", "beta.local", 49999, "Docs"}));
  EXPECT_EQ(fromService(49999), anna);
  EXPECT_NE(fromService(50000), anna);
  EXPECT_NE(table.participant({"anna", "beta.local", 49999, "Other"}), anna);
  EXPECT_FALSE(anna->isLocalParticipant());
  EXPECT_TRUE(table.participant({"me", "alpha.local", 1, "Docs"})->isLocalParticipant());

  anna->setLastSyncDate(17);
  EXPECT_EQ(fromService(49999)->lastSyncDate(), 17);
  anna.reset();  // nobody holds it: forgotten
  EXPECT_EQ(fromService(49999)->lastSyncDate(), 0);
}

TEST_F(ParticipantTest, takesThePasswordFlagOfItsFirstAnnouncement) {
  const auto anna = fromService(49999, true);
  EXPECT_TRUE(anna->passwordRequired());
  EXPECT_TRUE(fromService(49999, false)->passwordRequired());
  EXPECT_FALSE(fromService(50000, false)->passwordRequired());
}

TEST_F(ParticipantTest, staysIgnoredWhileNobodyHoldsIt) {
  const auto id = fromService(49999)->address();
  table.participant(id)->setIsIgnored(true);
  ASSERT_EQ(table.ignoredParticipants().size(), 1U);
  const auto anna = fromService(49999);
  EXPECT_TRUE(anna->isIgnored());
  EXPECT_EQ(anna->userIdForDisplay(), "anna@beta (ignored)");
  anna->setIsIgnored(false);
  EXPECT_EQ(anna->userIdForDisplay(), "anna@beta");
  EXPECT_TRUE(table.ignoredParticipants().empty());
}

TEST_F(ParticipantTest, showsAddressPoolsWithoutTheirExtension) {
  const auto one = table.participant({"u", "gamma", 1024, "Friends.zolvaraddresses"});
  EXPECT_EQ(one->displayPoolName(), "Friends");
  EXPECT_EQ(one->description(), "u@gamma (in Friends)");
}

TEST_F(ParticipantTest, isNotMadeFromRubbish) {
  EXPECT_EQ(table.fromService("@beta.local:49999/x", announcement(false)), nullptr);
  EXPECT_TRUE(
      log.contains("Warning - malformed service name '@beta.local:49999/x' encountered. Ignored."));
  EXPECT_EQ(fromService(80), nullptr);
  try {
    (void)table.participant({"u", "h", 1, ""});
    FAIL();
  } catch (const InconsistencyError& error) {
    EXPECT_STREQ(error.what(), "Invalid parameter not satisfying: aPoolName != nil");
    EXPECT_TRUE(log.contains("Grrrr."));
  }
}

}  // namespace
}  // namespace zolvar
