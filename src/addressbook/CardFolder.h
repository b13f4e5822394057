#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "addressbook/CardFiles.h"
#include "addressbook/CardSource.h"
#include "platform/RunLoop.h"

namespace zolvar {

class Lane;
struct Platform;

/// A folder of .vcf files as the place where cards are kept (CardFiles says how). It is read and
/// written on a lane; what other programs change is noticed by observing it, or by looking every
/// minute where that is not possible. The folder is made when it was never seen before; one that
/// was there once and is missing, or has turned empty on another disk, counts as not to be reached,
/// never as empty. Platform outlives it.
class CardFolder : public CardSource {
 public:
  /// The setting "AddressBookFolder", or "contacts" beside the support folder
  /// (~/.local/share/contacts).
  static std::string pathFor(Platform& platform);

  CardFolder(Platform& platform, std::string path);
  ~CardFolder() override;
  CardFolder(const CardFolder&) = delete;
  CardFolder& operator=(const CardFolder&) = delete;

  void start(Events events) override;
  void write(std::vector<CardWrite> writes) override;
  [[nodiscard]] std::string identity() const override { return "folder " + path_; }
  /// The setting is a file's name here; without it the file is "me.vcf".
  [[nodiscard]] std::string ownCard(const std::string& setting) const override;

 private:
  struct Inside;   ///< the lane's
  struct Outcome;  ///< what a job of the lane brings about

  void post(std::function<Outcome(Inside&)> job);
  void open();
  void look();
  void writeQueued();
  void take(Outcome outcome);
  void observe();
  void remember(const Outcome& outcome);
  void after(double seconds, RunLoop::Id& timer, void (CardFolder::*task)());

  Platform& platform_;
  const std::string path_;
  Events events_;
  bool isOpen_ = false;
  bool isUnmade_ = false;
  bool isTold_ = false;  ///< the folder's being away
  std::set<std::string> suspects_;
  std::map<std::string, std::string> idsByFile_;
  std::unique_ptr<FolderObservation> observation_;
  bool isPolling_ = false;
  RunLoop::Id openTimer_ = 0;
  RunLoop::Id lookTimer_ = 0;
  RunLoop::Id writeTimer_ = 0;
  const std::shared_ptr<Lane> lane_;
  const std::shared_ptr<Inside> inside_;
  const std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace zolvar
