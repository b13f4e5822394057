#include "app/UserPicture.h"

#include "addressbook/PersonProperties.h"
#include "platform/FileSystem.h"
#include "platform/Hosts.h"
#include "platform/Lanes.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/KDFilePool.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr std::uint64_t LargestPicture = 1U << 20U;  // bytes; larger ones are not kept by others
constexpr std::uint32_t FileMode = 0644;
constexpr const char* AccountPictures = "/var/lib/AccountsService/icons";

std::string readPicture(FileSystem& fileSystem, const std::string& folder,
                        const std::string& name) {
  const auto opened = fileSystem.open(folder);
  return opened ? (*opened)->read(name, 0, LargestPicture).value_or("") : std::string();
}

std::string accountPicture(FileSystem& fileSystem, const std::string& userName) {
  for (const char* name : {".face", ".face.icon"}) {  // either may be a link to the other
    std::string picture = readPicture(fileSystem, fileSystem.homeFolder(), name);
    if (!picture.empty()) return picture;
  }
  return readPicture(fileSystem, AccountPictures, userName);
}

}  // namespace

UserPicture::UserPicture(Platform& platform, std::shared_ptr<Lane> lane, AddressBook* book)
    : platform_(platform), lane_(std::move(lane)), book_(book) {}

void UserPicture::writeUserPicture(const KDFilePool& pool) {
  std::string own;
  if (book_ != nullptr) {
    const auto me = book_->me();
    if (me && *me) own = image(**me);
  }
  lane_->post([&fileSystem = platform_.fileSystem, &log = platform_.log, own = std::move(own),
               folder = pool.folderPath(), user = platform_.hosts.userName(),
               file = joinPath(MetadataFolderName, pool.userId() + ".tiff")] {
    const std::string picture = own.empty() ? accountPicture(fileSystem, user) : own;
    if (picture.empty() || picture.size() > LargestPicture) return;
    const auto opened = fileSystem.open(folder);
    if (!opened || (*opened)->read(file, 0, LargestPicture).value_or("") == picture) return;
    if (const auto written = (*opened)->replace(file, picture, FileMode); !written) {
      log.debug("{}", written.error().message());
    }
  });
}

}  // namespace zolvar
