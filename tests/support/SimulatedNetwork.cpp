#include "support/SimulatedNetwork.h"

#include <algorithm>
#include <utility>

namespace zolvar {

std::string SimulatedNetwork::bareName(const std::string& name) {
  for (const std::string_view suffix : {".local", ".lan"}) {
    if (name.ends_with(suffix)) return name.substr(0, name.size() - suffix.size());
  }
  return name;
}

void SimulatedNetwork::partition(std::vector<std::set<std::string>> groups) {
  groups_ = std::move(groups);
  noteChange();
}

void SimulatedNetwork::setUp(const std::string& host, bool isUp) {
  if (isUp) {
    down_.erase(host);
  } else {
    down_.insert(host);
  }
  noteChange();
}

bool SimulatedNetwork::canReach(const std::string& from, const std::string& to) const {
  if (from == to) return true;
  if (!isUp(from) || !isUp(to)) return false;
  const auto groupOf = [&](const std::string& host) {
    return std::find_if(groups_.begin(), groups_.end(),
                        [&](const auto& group) { return group.contains(host); });
  };
  return groups_.empty() || groupOf(from) == groupOf(to);
}

std::string SimulatedNetwork::addressOf(const std::string& from, const std::string& name) const {
  if (name == "localhost") return "127.0.0.1";
  const auto found = members_.find(bareName(name));
  if (found == members_.end() || !canReach(from, found->first)) return {};
  return "10.0.0." + std::to_string(1 + std::distance(members_.begin(), found));
}

SimulatedProcesses* SimulatedNetwork::reach(const std::string& from,
                                            const std::string& name) const {
  for (const auto& [host, processes] : members_) {
    const bool isNamed = host == bareName(name) || addressOf(from, host) == name ||
                         (host == from && (name == "localhost" || name == "127.0.0.1"));
    if (isNamed && canReach(from, host)) return processes;
  }
  return nullptr;
}

void SimulatedNetwork::join(const std::string& host, SimulatedProcesses& processes) {
  members_[host] = &processes;
}

void SimulatedNetwork::noteChange() {
  std::erase_if(browsers_, [](const auto& weak) { return weak.expired(); });
  std::erase_if(services_, [](const auto& weak) { return weak.expired(); });
  for (const auto& browser : browsers_) {
    const double wait = random_.uniform() < loss ? repetition : delay;
    loop_.after(wait, [this, browser] { tell(browser); });
    if (repeatsNews) loop_.after(wait + repetition, [this, browser] { tell(browser); });
  }
}

void SimulatedNetwork::tell(const std::weak_ptr<Browser>& weak) {
  const auto browser = weak.lock();
  if (browser == nullptr) return;
  std::map<std::string, std::string> hostOf;
  std::map<std::string, TxtRecord> seen;
  for (const auto& weakService : services_) {
    const auto service = weakService.lock();
    if (service == nullptr || !service->isEstablished || service->type != browser->type) continue;
    hostOf[service->name] = service->host;
    if (browser->isDaemonRunning && canReach(browser->host, service->host)) {
      seen[service->name] = service->txt;
    }
  }
  std::vector<std::string> lost;
  for (const auto& [name, txt] : browser->known) {
    if (seen.contains(name)) continue;
    // A service that was withdrawn says goodbye; a host out of reach is missed after a while.
    const double since = browser->missedSince.emplace(name, loop_.clock().now()).first->second;
    const double due = since + (hostOf.contains(name) && browser->isDaemonRunning ? silence : 0);
    if (due <= loop_.clock().now()) {
      lost.push_back(name);
    } else {
      loop_.after(due - loop_.clock().now() + 0.001, [this, weak] { tell(weak); });
    }
  }
  for (const std::string& name : lost) {
    browser->known.erase(name);
    browser->missedSince.erase(name);
    browser->events.lost(name);
  }
  for (const auto& [name, txt] : seen) {
    browser->missedSince.erase(name);
    const auto known = browser->known.find(name);
    if (known != browser->known.end() && known->second == txt && !repeatsNews) continue;
    browser->known[name] = txt;
    browser->events.txt(name, txt);
  }
}

struct SimulatedServiceDirectory::Published {
  std::shared_ptr<SimulatedNetwork::Service> service;
  PublicationEvents events;
};

class SimulatedServiceDirectory::SimulatedPublication : public Publication {
 public:
  SimulatedPublication(SimulatedServiceDirectory& directory, std::shared_ptr<Published> published)
      : directory_(directory), published_(std::move(published)) {}
  ~SimulatedPublication() override {
    published_.reset();
    directory_.network_.noteChange();
  }
  Result<> updateTxt(const TxtRecord& txt) override {
    const std::string& name = published_->service->name;
    if (auto failure = directory_.faults.next("updateTxt", name)) return tl::unexpected(*failure);
    if (const auto checked = check(name, txt); !checked) return checked;
    published_->service->txt = txt;
    directory_.network_.noteChange();
    return {};
  }

 private:
  SimulatedServiceDirectory& directory_;
  std::shared_ptr<Published> published_;
};

Result<> SimulatedServiceDirectory::check(const std::string& name, const TxtRecord& txt) {
  if (name.empty() || name.size() > 63) return fail(FailureKind::Refused, "announce", name);
  for (const auto& [key, value] : txt) {
    if (key.empty() || key.size() + 1 + value.size() > 255) {
      return fail(FailureKind::Refused, "announce", name, "pair too long: " + key);
    }
  }
  return {};
}

Result<std::unique_ptr<Publication>> SimulatedServiceDirectory::publish(const std::string& name,
                                                                        const std::string& type,
                                                                        std::uint16_t port,
                                                                        const TxtRecord& txt,
                                                                        PublicationEvents events) {
  if (auto failure = faults.next("publish", name)) return tl::unexpected(*failure);
  if (const auto checked = check(name, txt); !checked) return tl::unexpected(checked.error());
  auto service = std::make_shared<SimulatedNetwork::Service>(
      SimulatedNetwork::Service{name, type, host_, port, txt, false});
  auto published = std::make_shared<Published>(Published{std::move(service), std::move(events)});
  published_.push_back(published);
  if (isDaemonRunning_) {
    network_.loop_.after(network_.delay,
                         [this, weak = std::weak_ptr(published)] { establish(weak); });
  }
  return std::make_unique<SimulatedPublication>(*this, std::move(published));
}

void SimulatedServiceDirectory::establish(const std::weak_ptr<Published>& weak) {
  const auto published = weak.lock();
  if (published == nullptr || !isDaemonRunning_ || published->service->isEstablished) return;
  for (const auto& other : network_.services_) {
    const auto service = other.lock();
    if (service && service->isEstablished && service->name == published->service->name &&
        network_.canReach(host_, service->host)) {
      const Failure failure{FailureKind::Refused, "announce", service->name, "name taken"};
      if (published->events.failed) published->events.failed(failure);
      return;
    }
  }
  published->service->isEstablished = true;
  network_.services_.push_back(published->service);
  network_.noteChange();
  if (published->events.established) published->events.established();
}

std::unique_ptr<ServiceBrowser> SimulatedServiceDirectory::browse(const std::string& type,
                                                                  ServiceEvents events) {
  struct Handle : ServiceBrowser {
    std::shared_ptr<SimulatedNetwork::Browser> browser;
  };
  auto handle = std::make_unique<Handle>();
  handle->browser = std::make_shared<SimulatedNetwork::Browser>();
  handle->browser->host = host_;
  handle->browser->type = type;
  handle->browser->events = std::move(events);
  handle->browser->isDaemonRunning = isDaemonRunning_;
  network_.browsers_.push_back(handle->browser);
  network_.noteChange();
  return handle;
}

void SimulatedServiceDirectory::setDaemonRunning(bool isRunning) {
  isDaemonRunning_ = isRunning;
  for (const auto& weak : published_) {
    const auto published = weak.lock();
    if (published == nullptr) continue;
    if (isRunning) {
      network_.loop_.after(1.7, [this, weak] { establish(weak); });
    } else {
      published->service->isEstablished = false;
    }
  }
  for (const auto& weak : network_.browsers_) {
    if (const auto browser = weak.lock(); browser && browser->host == host_) {
      browser->isDaemonRunning = isRunning;
    }
  }
  network_.noteChange();
}

std::map<std::string, TxtRecord> SimulatedServiceDirectory::published() const {
  std::map<std::string, TxtRecord> found;
  for (const auto& weak : published_) {
    if (const auto published = weak.lock())
      found[published->service->name] = published->service->txt;
  }
  return found;
}

}  // namespace zolvar
