#include <QAction>
#include <QListWidget>
#include <QSignalSpy>

#include "addressbook/KDAddressPool.h"
#include "support/MemoryAddressBook.h"
#include "ui/FolderListModel.h"
#include "ui/MissingModel.h"
#include "ui/WindowStage.h"
#include "ui/sheets/ShareContactsSheet.h"

namespace zolvar {
namespace {

class ContactsTest : public WindowStage {
 protected:
  ContactsTest() {
    ann.stop();
    content.people["A1"] = MemoryAddressBook::person("Lee", "Young");
    content.people["A1"].uniqueId = "A1";
    content.people["A1"].vCardData = MemoryAddressBook::card(content, content.people["A1"]);
    content.groups = {{"Friends", {"A1"}}, {"Work", {}}};
    ann.addressBook = [this](Platform&, NotificationCenter& center) {
      return std::make_unique<MemoryAddressBook>(content, center);
    };
    ann.start();
    settle(20);
    openWindow();
  }
  ~ContactsTest() override {
    closeWindow();
    ann.stop();
  }

  AddressBookContent content{"A"};
};

TEST_F(ContactsTest, sharesAGroupAndNamesIt) {
  ShareContactsSheet sheet(*context, window.get());
  QSignalSpy shared(&sheet, &ShareContactsSheet::wasShared);
  auto* groups = sheet.findChild<QListWidget*>();
  ASSERT_EQ(groups->count(), 2);
  EXPECT_EQ(groups->item(1)->text(), "Work");
  groups->setCurrentRow(0);
  sheet.accept();
  const std::string name = "Friends" + std::string(KDAddressPool::Extension);
  ASSERT_TRUE(until([&] { return ann.isActive(name); })) << ann.platform.log.text();
  EXPECT_EQ(shared.size(), 1);

  FolderListModel model(*ann.app, *ann.operations);
  const QModelIndex row = model.indexOf(name);
  EXPECT_EQ(row.data().toString(), "Friends");
  EXPECT_EQ(row.data(FolderListModel::NameRole).toString().toStdString(), name);

  MissingModel missing;
  missing.setDescription(
      [&](const std::string& path) { return ann.operations->describe(name, path); });
  auto snapshot = std::make_shared<PoolSnapshot>(*ann.pool(name).snapshot());
  snapshot->missing =
      std::make_shared<const std::vector<std::string>>(std::vector<std::string>{"A1.vcf"});
  missing.setSnapshot(snapshot);
  EXPECT_EQ(missing.index(0, MissingModel::Path).data().toString(), "Lee Young");
}

}  // namespace
}  // namespace zolvar
