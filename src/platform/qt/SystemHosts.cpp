#include "platform/qt/SystemHosts.h"

#include <avahi-client/client.h>
#include <avahi-common/simple-watch.h>
#include <netdb.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>

#include "platform/qt/ThreadedServiceDirectory.h"

namespace zolvar {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds PatienceAtStart{2};

struct AddressListDeleter {
  void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, AddressListDeleter>;

Result<AddressList> resolve(const std::string& host, int family, int flags) {
  addrinfo hints{};
  hints.ai_family = family;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* list = nullptr;
  if (const int error = getaddrinfo(host.c_str(), nullptr, &hints, &list); error != 0) {
    return fail(FailureKind::Absent, "find the computer", host, gai_strerror(error));
  }
  return AddressList(list);
}

std::string hostName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string canonicalName() {
  const std::string host = hostName();
  if (host.empty()) return {};
  const auto list = resolve(host, AF_UNSPEC, AI_CANONNAME);
  return list && (*list)->ai_canonname != nullptr ? (*list)->ai_canonname : "";
}

/// Asks the service daemon over a connection of its own; empty when it does not answer in time.
std::string serviceName() {
  struct Deleter {
    void operator()(AvahiSimplePoll* poll) const { avahi_simple_poll_free(poll); }
    void operator()(AvahiClient* client) const { avahi_client_free(client); }
  };
  const auto end = steady_clock::now() + PatienceAtStart;
  const std::unique_ptr<AvahiSimplePoll, Deleter> poll(avahi_simple_poll_new());
  if (!poll) return {};
  const std::unique_ptr<AvahiClient, Deleter> client(avahi_client_new(
      avahi_simple_poll_get(poll.get()), AVAHI_CLIENT_NO_FAIL,
      [](AvahiClient*, AvahiClientState, void*) {}, nullptr, nullptr));
  if (!client) return {};
  while (avahi_client_get_state(client.get()) != AVAHI_CLIENT_S_RUNNING) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - steady_clock::now());
    if (left.count() <= 0 || avahi_client_get_state(client.get()) == AVAHI_CLIENT_FAILURE ||
        avahi_simple_poll_iterate(poll.get(), static_cast<int>(left.count())) != 0) {
      return {};
    }
  }
  const char* const name = avahi_client_get_host_name_fqdn(client.get());
  return name != nullptr ? name : "";
}

}  // namespace

SystemHosts::SystemHosts(const ThreadedServiceDirectory& services, Log& log)
    : services_(services), answers_(std::make_shared<Answers>()) {
  // The threads may outlive us: a resolver without a network takes longer than our patience.
  const auto ask = [this](std::string (*question)(), std::string Answers::*answer) {
    std::promise<void> promise;
    auto answered = promise.get_future();
    std::thread([answers = answers_, question, answer, promise = std::move(promise)]() mutable {
      std::string text = question();
      {
        const std::lock_guard lock(answers->mutex);
        answers.get()->*answer = std::move(text);
      }
      promise.set_value();
    }).detach();
    return answered;
  };
  const auto deadline = steady_clock::now() + PatienceAtStart;
  const auto service = ask(serviceName, &Answers::serviceName);
  const auto canonical = ask(canonicalName, &Answers::canonicalName);
  service.wait_until(deadline);
  {
    const std::lock_guard lock(answers_->mutex);
    if (!answers_->serviceName.empty()) return;
  }
  log.debug("The service daemon does not tell this computer's name.");
  // Only a substitute, so it is waited for only now.
  canonical.wait_until(deadline);
}

std::vector<std::string> SystemHosts::names() const {
  std::vector<std::string> names;
  const auto add = [&names](const std::string& name) {
    if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) {
      names.push_back(name);
    }
  };
  const std::string current = services_.hostNameFqdn();
  {
    const std::lock_guard lock(answers_->mutex);
    if (!current.empty()) answers_->serviceName = current;
    add(answers_->serviceName);
    add(answers_->canonicalName);
  }
  add(hostName());
  return names;
}

std::string SystemHosts::userName() const {
  std::array<char, 4096> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
    return found->pw_name;
  }
  const char* const name = std::getenv("LOGNAME");
  return name != nullptr && *name != '\0' ? name : std::to_string(getuid());
}

Result<std::string> SystemHosts::lookUp(const std::string& host) {
  // IPv4 first: the transfer daemons listen there.
  auto list = resolve(host, AF_INET, 0);
  if (!list) list = resolve(host, AF_UNSPEC, 0);
  if (!list) return tl::unexpected(list.error());
  std::array<char, NI_MAXHOST> address{};
  const int error = getnameinfo((*list)->ai_addr, (*list)->ai_addrlen, address.data(),
                                address.size(), nullptr, 0, NI_NUMERICHOST);
  if (error != 0) return fail(FailureKind::Absent, "find the computer", host, gai_strerror(error));
  return std::string(address.data());
}

}  // namespace zolvar
