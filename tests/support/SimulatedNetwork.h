#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/Hosts.h"
#include "platform/ServiceDirectory.h"
#include "support/Faults.h"
#include "support/SimulatedRandom.h"
#include "support/SimulatedRunLoop.h"

namespace zolvar {

class SimulatedProcesses;
class SimulatedServiceDirectory;

/// The cables between the hosts of one test: who is up, who reaches whom, and what is announced.
/// Differs from a real network: news reaches a browser as a whole state, `delay` seconds after a
/// change; a host that was cut off is only missed after `silence` seconds; lost news comes with the
/// next repetition. One thread.
class SimulatedNetwork {
 public:
  explicit SimulatedNetwork(SimulatedRunLoop& loop, std::uint64_t seed = 1)
      : loop_(loop), random_(seed) {}

  double delay = 0.2;        ///< seconds until a change of the announcements is seen
  double silence = 120;      ///< seconds until a cut-off host's services count as gone
  double loss = 0;           ///< probability that a piece of news is lost until repeated
  double repetition = 60;    ///< seconds until lost news come again
  bool repeatsNews = false;  ///< everything is told twice

  /// Hosts in different groups do not reach each other; a host that is in no group reaches none
  /// of those.
  void partition(std::vector<std::set<std::string>> groups);
  void heal() { partition({}); }
  void setUp(const std::string& host, bool isUp);
  [[nodiscard]] bool isUp(const std::string& host) const { return !down_.contains(host); }
  [[nodiscard]] bool canReach(const std::string& from, const std::string& to) const;

  /// The host's processes by any of its names ("alpha", "alpha.local", its address); null when
  /// unknown or out of reach from `from`.
  [[nodiscard]] SimulatedProcesses* reach(const std::string& from, const std::string& name) const;
  [[nodiscard]] std::string addressOf(const std::string& from, const std::string& name) const;
  void join(const std::string& host, SimulatedProcesses& processes);
  void leave(const std::string& host) { members_.erase(host); }

  [[nodiscard]] SimulatedRunLoop& loop() { return loop_; }

 private:
  friend class SimulatedServiceDirectory;
  struct Service {
    std::string name;
    std::string type;
    std::string host;
    std::uint16_t port = 0;
    TxtRecord txt;
    bool isEstablished = false;
  };
  struct Browser {
    std::string host;
    std::string type;
    ServiceEvents events;
    std::map<std::string, TxtRecord> known;
    std::map<std::string, double> missedSince;
    bool isDaemonRunning = true;
  };
  [[nodiscard]] static std::string bareName(const std::string& name);
  void noteChange();
  void tell(const std::weak_ptr<Browser>& browser);

  SimulatedRunLoop& loop_;
  SimulatedRandom random_;
  std::vector<std::set<std::string>> groups_;
  std::set<std::string> down_;
  std::map<std::string, SimulatedProcesses*> members_;
  std::vector<std::weak_ptr<Service>> services_;
  std::vector<std::weak_ptr<Browser>> browsers_;
};

/// One host's door to the announcements. Refuses names over 63 bytes and pairs over 255 bytes; a
/// name that another service has fails. Its service daemon can be stopped.
class SimulatedServiceDirectory : public ServiceDirectory {
 public:
  SimulatedServiceDirectory(SimulatedNetwork& network, std::string host)
      : network_(network), host_(std::move(host)) {}
  Result<std::unique_ptr<Publication>> publish(const std::string& name, const std::string& type,
                                               std::uint16_t port, const TxtRecord& txt,
                                               PublicationEvents events) override;
  std::unique_ptr<ServiceBrowser> browse(const std::string& type, ServiceEvents events) override;

  void setDaemonRunning(bool isRunning);
  /// What this host announces now: name → TXT record.
  [[nodiscard]] std::map<std::string, TxtRecord> published() const;
  Faults faults;

 private:
  struct Published;
  class SimulatedPublication;
  void establish(const std::weak_ptr<Published>& weak);
  [[nodiscard]] static Result<> check(const std::string& name, const TxtRecord& txt);

  SimulatedNetwork& network_;
  std::string host_;
  bool isDaemonRunning_ = true;
  std::vector<std::weak_ptr<Published>> published_;
};

/// One host's names and its look at others' through the network.
class SimulatedHosts : public Hosts {
 public:
  SimulatedHosts(SimulatedNetwork& network, std::string host, std::string user)
      : hostNames{host + ".local", host},
        network_(network),
        host_(std::move(host)),
        user_(std::move(user)) {}
  [[nodiscard]] std::vector<std::string> names() const override { return hostNames; }
  [[nodiscard]] std::string userName() const override { return user_; }
  Result<std::string> lookUp(const std::string& host) override {
    if (auto failure = faults.next("lookUp", host)) return tl::unexpected(*failure);
    const std::string address = network_.addressOf(host_, host);
    if (address.empty()) return fail(FailureKind::Absent, "find the host", host);
    return address;
  }

  std::vector<std::string> hostNames;
  Faults faults;

 private:
  SimulatedNetwork& network_;
  std::string host_;
  std::string user_;
};

}  // namespace zolvar
