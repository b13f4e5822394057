#include "app/Contacts.h"

#include "app/Application.h"
#include "net/KDParticipant.h"
#include "platform/Clock.h"
#include "platform/Platform.h"

namespace zolvar {
namespace {

constexpr int TooManyConnections = 5;
constexpr int AuthenticationFailed = 37;

}  // namespace

void Contacts::syncDidEnd(const SyncReport& report) {
  if (report.status == TooManyConnections) return;  // it answered, and is tried again
  Contact& contact = contacts_[report.pool.name()][report.participant.description()];
  contact.differsInPassword = report.status == AuthenticationFailed;
  if (report.isSuccess()) {
    contact.standing = Contact::Standing::Reachable;
    contact.reason.clear();
    contact.failures = 0;
    contact.lastExchange = application_.platform().clock.now();
    return;
  }
  contact.standing = Contact::Standing::Unreachable;
  ++contact.failures;
  contact.reason = contact.differsInPassword
                       ? "The passwords of the two sides differ, or one side has none."
                       : report.errorMessage;
}

void Contacts::poolDidChange(KDFilePool& pool) {
  const auto known = contacts_.find(pool.name());
  if (known == contacts_.end()) return;
  std::set<std::string> present;
  if (const auto* presence = application_.peer().presence(pool)) {
    for (const auto& participant : presence->participants()) {
      present.insert(participant->address().description());
    }
  }
  std::erase_if(known->second, [&](const auto& entry) { return !present.contains(entry.first); });
}

Contact Contacts::of(const KDParticipant& participant) const {
  Contact contact;
  if (const auto pool = contacts_.find(participant.poolName()); pool != contacts_.end()) {
    const auto found = pool->second.find(participant.address().description());
    if (found != pool->second.end()) contact = found->second;
  }
  if (!participant.speaksOurProtocol()) {
    contact.standing = Contact::Standing::Unreachable;
    contact.reason = "Its Zolvar speaks another version of the protocol.";
  }
  return contact;
}

}  // namespace zolvar
