#include "app/AddressFolders.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "addressbook/KDAddressPool.h"
#include "app/Application.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "util/PathRules.h"

namespace zolvar {

AddressFolders::AddressFolders(Application& application, const AddressBookMaker& maker)
    : application_(application),
      book_(maker(application.platform(), application.center())),
      memory_(std::make_shared<AddressMemory>(application.platform().fileSystem,
                                              application.platform().log)),
      observation_(application.center().observe<KDAddressMergeNeeded>(
          [this](const KDAddressMergeNeeded& needed) { mergeNeeded(needed); })) {
  (void)book_->groups();  // begins to read it
}

AddressFolders::~AddressFolders() = default;

KDPeer::PoolClass AddressFolders::poolClass(KDFilePoolDelegate* delegate) {
  return [this, delegate](const std::string& path, const KDFilePool::Options& options) {
    return KDAddressPool::make(path, options, application_.platform(), application_.center(),
                               delegate, *book_, *memory_);
  };
}

Result<std::vector<std::string>> AddressFolders::groups() {
  const auto groups = book_->groups();
  if (!groups) return tl::unexpected(groups.error());
  std::vector<std::string> names;
  for (const ABGroup& group : *groups) names.push_back(group.name);
  std::sort(names.begin(), names.end());
  return names;
}

std::string AddressFolders::folderOf(const std::string& group) const {
  return joinPath(application_.peer().basePath(), group + std::string(KDAddressPool::Extension));
}

void AddressFolders::mergeNeeded(const KDAddressMergeNeeded& needed) {
  std::vector<std::string> paths;
  std::vector<std::string> people;
  for (const std::string& file : needed.files) {
    paths.push_back(joinPath(needed.pool->folderPath(), file));
    const std::string own = book_->addressToOpen(memory_->uniqueIdForFilename(file));
    if (!own.empty()) paths.push_back(own);
    people.push_back(needed.pool->descriptionForFile(file));
  }
  const std::string name = needed.pool->name();
  Notice notice;
  notice.key = "merge/" + name;
  notice.title = fmt::format("Merge Contacts in '{}'?", needed.pool->displayName());
  notice.text = fmt::format(
      "Others have contacts whose names are like those of people in your address book ({}). Click "
      "to open them there, and merge those that are the same.",
      fmt::join(people, "; "));
  notice.isSticky = true;
  application_.platform().workspace.showNotice(
      notice, [&workspace = application_.platform().workspace, paths] {
        for (const std::string& path : paths) workspace.open(path);
      });
  application_.warn(name, notice.text);
}

}  // namespace zolvar
