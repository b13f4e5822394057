#include "net/KDParticipant.h"

#include "net/KDParticipants.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {
constexpr std::string_view AddressPoolExtension = ".zolvaraddresses";
}

KDParticipant::KDParticipant(ParticipantAddress address, KDParticipants& table)
    : address_(std::move(address)), table_(table) {}

KDParticipant::~KDParticipant() = default;

std::string KDParticipant::userIdForDisplay() const {
  return std::string(withoutLocalSuffix(userId())) + (isIgnored() ? " (ignored)" : "");
}

std::string KDParticipant::displayPoolName() const {
  std::string name = poolName();
  if (name.ends_with(AddressPoolExtension)) name.resize(name.size() - AddressPoolExtension.size());
  return name;
}

std::string KDParticipant::description() const {
  return userId() + " (in " + displayPoolName() + ")";
}

bool KDParticipant::isLocalParticipant() const { return userId() == table_.localUserId(); }

bool KDParticipant::isIgnored() const { return table_.isIgnored(*this); }

void KDParticipant::setIsIgnored(bool ignored) { table_.setIgnored(*this, ignored); }

}  // namespace zolvar
