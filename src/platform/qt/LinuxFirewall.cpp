#include "platform/qt/LinuxFirewall.h"

#include <optional>
#include <utility>

#include "platform/qt/FirewalldQuery.h"
#include "platform/qt/UfwRules.h"

namespace zolvar {

LinuxFirewall::LinuxFirewall(RunLoop& runLoop) : runLoop_(runLoop) {}

LinuxFirewall::~LinuxFirewall() = default;

void LinuxFirewall::ask(unsigned tcpPort, std::function<void(FirewallAnswer)> answer) {
  const std::uint64_t number = ++lastQuery_;
  const auto ufw = ufwAnswer(UfwFiles::read(), tcpPort);
  auto answered = [this, number, ufw, weak = std::weak_ptr(alive_),
                   answer = std::move(answer)](std::optional<FirewallAnswer> firewalld) {
    // The query is still at work: it goes on the next turn, and then the caller hears.
    runLoop_.post([this, number, ufw, firewalld, weak, answer] {
      if (weak.expired()) return;
      queries_.erase(number);
      if (ufw && firewalld) return answer(joinedAnswer(*ufw, *firewalld));
      answer(firewalld.value_or(ufw.value_or(FirewallAnswer::CannotTell)));
    });
  };
  const QDBusConnection bus = QDBusConnection::systemBus();
  if (!bus.isConnected()) return answered(std::nullopt);  // calls over it would never end
  queries_[number] =
      std::make_unique<FirewalldQuery>(bus, localNetworkInterfaces(), tcpPort, std::move(answered));
}

}  // namespace zolvar
