#include <sys/stat.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <fstream>

#include "ServiceTest.h"
#include "platform/qt/SecretFile.h"
#include "platform/qt/SecretServiceStore.h"

namespace zolvar {
namespace {

using Found = std::optional<std::string>;

class SecretFileTest : public AdapterTest {
 protected:
  const std::string path_ = folder_.path() + "/secrets";
};

TEST_F(SecretFileTest, keepsAnyTextForItsUserAlone) {
  const std::pair<std::string, std::string> rows[] = {
      {"plain", "secret"}, {"tab\tname", "line\nfeed"}, {"back\\slash", "\\n\\"}, {"", ""}};
  for (const auto& [account, password] : rows) {
    ASSERT_TRUE(SecretFile(path_, log_).set("Zolvar", account, password));
  }
  ASSERT_TRUE(SecretFile(path_, log_).set("Zolvar", "plain", "changed"));
  ASSERT_EQ(::chmod(path_.c_str(), 0644), 0);
  SecretFile file(path_, log_);
  EXPECT_EQ(file.find("Zolvar", "plain").value(), Found("changed"));
  EXPECT_EQ(file.find("Other", "plain").value(), Found());
  for (const auto& [account, password] : rows) {
    if (account != "plain") {
      EXPECT_EQ(file.find("Zolvar", account).value(), Found(password)) << account;
    }
  }
  struct stat status {};
  ASSERT_EQ(::stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_TRUE(log_.contains("Others could read"));
  ASSERT_TRUE(file.remove("Zolvar", "plain"));
  ASSERT_TRUE(file.remove("Zolvar", "plain"));  // absent is fine
  EXPECT_EQ(file.find("Zolvar", "plain").value(), Found());
}

TEST_F(SecretFileTest, losesOnlyTheDamagedLine) {
  std::ofstream(path_) << "Zolvar\ta\t1\nZolvar\tb\nZolvar\tc\t\\x\n\xff\nZolvar\td\t4";
  SecretFile file(path_, log_);
  EXPECT_EQ(file.find("Zolvar", "a").value(), Found("1"));
  EXPECT_EQ(file.find("Zolvar", "c").value(), Found());
  EXPECT_EQ(file.find("Zolvar", "d").value(), Found("4"));
}

class SecretFallbackTest : public AdapterTest {};

TEST_F(SecretFallbackTest, keepsPasswordsInAFileWhereNoKeyringAnswers) {
  if (std::getenv("ZOLVAR_TEST_SERVICES") != nullptr) GTEST_SKIP() << "a keyring answers here";
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  SecretServiceStore store(folder_.path(), log_);
  EXPECT_EQ(store.find("Zolvar", "name").value(), Found());
  ASSERT_TRUE(store.set("Zolvar", "name", "secret"));
  EXPECT_EQ(SecretServiceStore(folder_.path(), log_).find("Zolvar", "name").value(),
            Found("secret"));
  ASSERT_TRUE(store.remove("Zolvar", "name"));
  EXPECT_EQ(store.find("Zolvar", "name").value(), Found());
  EXPECT_EQ(log_.count("No keyring answers"), 2u);  // once a store
}

class SecretServiceTest : public ServiceTest {
 protected:
  void SetUp() override {
    ServiceTest::SetUp();
    if (std::getenv("ZOLVAR_TEST_KEYRING") == nullptr) GTEST_SKIP() << "needs gnome-keyring";
  }
  static bool lockKeyring() {
    QDBusMessage message =
        QDBusMessage::createMethodCall("org.freedesktop.secrets", "/org/freedesktop/secrets",
                                       "org.freedesktop.Secret.Service", "Lock");
    const QList<QDBusObjectPath> collections{
        QDBusObjectPath("/org/freedesktop/secrets/collection/login")};
    message << QVariant::fromValue(collections);
    return QDBusConnection::sessionBus().call(message).type() == QDBusMessage::ReplyMessage;
  }
  SecretServiceStore store_{folder_.path(), log_};
};

TEST_F(SecretServiceTest, keepsPasswordsInTheKeyring) {
  EXPECT_EQ(store_.find("Zolvar", "name").value(), Found());
  ASSERT_TRUE(store_.set("Zolvar", "name", "secret"));
  ASSERT_TRUE(store_.set("Zolvar", "name", "chänged"));
  ASSERT_TRUE(store_.set("Zolvar", "other", "else"));
  EXPECT_EQ(store_.find("Zolvar", "name").value(), Found("chänged"));
  ASSERT_TRUE(store_.remove("Zolvar", "name"));
  ASSERT_TRUE(store_.remove("Zolvar", "name"));
  EXPECT_EQ(store_.find("Zolvar", "name").value(), Found());
  EXPECT_EQ(store_.find("Zolvar", "other").value(), Found("else"));
  EXPECT_FALSE(folder_.exists("secrets"));
}

TEST_F(SecretServiceTest, movesWhatWasKeptWithoutAKeyring) {
  ASSERT_TRUE(store_.set("Zolvar", "moved", "old"));
  SecretFile file(folder_.path() + "/secrets", log_);
  ASSERT_TRUE(file.set("Zolvar", "moved", "new"));  // later, while no keyring answered
  EXPECT_EQ(store_.find("Zolvar", "moved").value(), Found("new"));
  EXPECT_EQ(file.find("Zolvar", "moved").value(), Found());
  EXPECT_EQ(store_.find("Zolvar", "moved").value(), Found("new"));
}

// Comes last: nobody is there to unlock the keyring again.
TEST_F(SecretServiceTest, staysClosedWhileTheKeyringIsLocked) {
  ASSERT_TRUE(store_.set("Zolvar", "locked", "secret"));
  ASSERT_TRUE(lockKeyring());
  const auto found = store_.find("Zolvar", "locked");
  ASSERT_FALSE(found);
  EXPECT_EQ(found.error().kind, FailureKind::Refused) << found.error().message();
  const auto stored = store_.set("Zolvar", "locked", "other");
  ASSERT_FALSE(stored);
  EXPECT_EQ(stored.error().kind, FailureKind::Refused) << stored.error().message();
  const auto removed = store_.remove("Zolvar", "locked");
  ASSERT_FALSE(removed);
  EXPECT_EQ(removed.error().kind, FailureKind::Refused) << removed.error().message();
  EXPECT_FALSE(folder_.exists("secrets"));
}

}  // namespace
}  // namespace zolvar
