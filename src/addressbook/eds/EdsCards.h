#pragma once

#include <memory>
#include <string>

#include "addressbook/CardSource.h"

namespace zolvar {

/// The user's default address book of Evolution Data Server (the contacts of GNOME) as the place
/// where cards are kept. libebook has a thread of its own, since its calls wait for another
/// process; what is asked for is posted there, what happens is posted to the run loop. A server
/// that cannot be reached, or has ended, is tried again. Its end waits for the call in progress,
/// which is cancelled. Main thread; run loop and log outlive it.
class EdsCards : public CardSource {
 public:
  EdsCards(RunLoop& runLoop, Log& log);
  ~EdsCards() override;
  EdsCards(const EdsCards&) = delete;
  EdsCards& operator=(const EdsCards&) = delete;

  void start(Events events) override;
  void write(std::vector<CardWrite> writes) override;
  /// Of the book's source, which is the same over runs.
  [[nodiscard]] std::string identity() const override;
  /// What the desktop has marked as the user's own contact.
  [[nodiscard]] std::string ownCard(const std::string& setting) const override;

 private:
  struct Front;
  class Session;

  const std::shared_ptr<Front> front_;
  const std::unique_ptr<Session> session_;
};

}  // namespace zolvar
