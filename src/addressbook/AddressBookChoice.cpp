#include "addressbook/AddressBookChoice.h"

#include <dlfcn.h>

#include <utility>

#include "addressbook/CardBook.h"
#include "addressbook/CardFolder.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "util/PathRules.h"

// A module of another version would not fit, so it says which one it is of.
#ifndef ZOLVAR_VERSION
#error "the build tells the version"
#endif

namespace zolvar {
namespace {

constexpr const char* ChoiceKey = "AddressBook";
constexpr const char* InUseKey = "AddressBookInUse";
constexpr const char* Server = "eds";
constexpr const char* InFolder = "folder";
constexpr const char* ModuleName = "zolvar-eds.so";

/// Chooses when it is started, and then stands for what was chosen.
class ChosenCards : public CardSource {
 public:
  ChosenCards(Platform& platform, std::string moduleFolder)
      : platform_(platform), moduleFolder_(std::move(moduleFolder)) {}
  ~ChosenCards() override { *isAlive_ = false; }

  void start(Events events) override {
    events_ = std::move(events);
    const std::string choice = platform_.defaults.string(ChoiceKey).value_or("");
    const std::string inUse = platform_.defaults.string(InUseKey).value_or("");
    const bool isFree = choice != Server && choice != InFolder && inUse.empty();
    const std::string& wanted = choice == Server || choice == InFolder ? choice : inUse;
    if (!isFree && wanted != Server) return startFolder();
    auto loaded = loadServerCards(platform_, moduleFolder_);
    if (loaded) return startServer(std::move(*loaded), isFree);
    platform_.log.debug("{}", loaded.error().message());
    if (isFree) return startFolder();
    platform_.log.warning("{}", loaded.error().message());
    platform_.runLoop.post([this, failure = loaded.error(), alive = std::weak_ptr(isAlive_)] {
      if (const auto is = alive.lock(); is && *is) events_.lost(failure);
    });
  }
  void write(std::vector<CardWrite> writes) override {
    if (chosen_) chosen_->write(std::move(writes));
  }
  [[nodiscard]] std::string identity() const override {
    return chosen_ ? chosen_->identity() : std::string();
  }
  [[nodiscard]] std::string ownCard(const std::string& setting) const override {
    return chosen_ ? chosen_->ownCard(setting) : std::string();
  }

 private:
  /// What is told goes on, and the first reading settles the choice.
  Events passedOn(const char* name) {
    Events events = events_;
    events.read = [this, name](KeptCards cards) {
      isSettled_ = true;
      isTold_ = false;
      if (platform_.defaults.string(InUseKey) != name) {
        platform_.defaults.setString(InUseKey, name);
      }
      events_.read(std::move(cards));
    };
    return events;
  }
  void startFolder() {
    chosen_ = std::make_unique<CardFolder>(platform_, CardFolder::pathFor(platform_));
    chosen_->start(passedOn(InFolder));
  }
  void startServer(std::unique_ptr<CardSource> server, bool isFree) {
    chosen_ = std::move(server);
    Events events = passedOn(Server);
    events.lost = [this, isFree](const Failure& failure) {
      if (isSettled_ || !isFree) return tellLost(failure);
      platform_.log.debug("{}", failure.message());
      isSettled_ = true;
      // Not inside the server's own call.
      platform_.runLoop.post([this, alive = std::weak_ptr(isAlive_)] {
        if (const auto is = alive.lock(); is && *is) startFolder();
      });
    };
    chosen_->start(std::move(events));
  }
  void tellLost(const Failure& failure) {
    if (!std::exchange(isTold_, true)) platform_.log.warning("{}", failure.message());
    events_.lost(failure);
  }

  Platform& platform_;
  const std::string moduleFolder_;
  Events events_;
  bool isSettled_ = false;
  bool isTold_ = false;  ///< that the server is away
  const std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
  std::unique_ptr<CardSource> chosen_;
};

}  // namespace

Result<std::unique_ptr<CardSource>> loadServerCards(Platform& platform,
                                                    const std::string& moduleFolder) {
  constexpr const char* Attempt = "load the module for the desktop's address book";
  const std::string path = joinPath(moduleFolder, ModuleName);
  void* const module = moduleFolder.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) {
    const char* reason = moduleFolder.empty() ? nullptr : dlerror();
    return fail(FailureKind::Absent, Attempt, path, reason ? reason : "it is not installed");
  }
  const auto* version = static_cast<const char* const*>(dlsym(module, CardModuleVersionName));
  const auto make = reinterpret_cast<MakeCardSource>(dlsym(module, MakeCardSourceName));
  if (!version || !make || std::string_view(*version) != ZOLVAR_VERSION) {
    return fail(FailureKind::Refused, Attempt, path, "it is of another version");
  }
  return std::unique_ptr<CardSource>(make(platform.runLoop, platform.log));
}

std::unique_ptr<AddressBook> makeAddressBook(Platform& platform, NotificationCenter& center,
                                             const std::string& moduleFolder) {
  return std::make_unique<CardBook>(std::make_unique<ChosenCards>(platform, moduleFolder), platform,
                                    center);
}

}  // namespace zolvar
