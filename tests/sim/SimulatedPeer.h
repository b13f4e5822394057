#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/Application.h"
#include "app/Operations.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {

/// One computer with the whole engine on it, on simulated services, and the person who uses it.
/// Paths begin with the folder's name ("Docs/x"); folders lie in the home folder. What the person
/// asks for is waited for in virtual time; a refusal or no answer fails the test.
class SimulatedPeer {
 public:
  SimulatedPeer(SimulatedWorld& world, const std::string& name);
  ~SimulatedPeer();

  // The program.
  void start();
  void quit();              ///< as a person does
  void crash();             ///< the process dies where it stands; its transfer daemon lives on
  void setIsOn(bool isOn);  ///< the computer with everything on it; on again, the program starts
  [[nodiscard]] bool isRunning() const { return application_ != nullptr; }
  [[nodiscard]] Application& application() { return *application_; }
  [[nodiscard]] Operations& operations() { return *operations_; }
  [[nodiscard]] std::shared_ptr<const PoolSnapshot> snapshot(const std::string& folder);

  // Folders.
  void share(const std::string& folder, const std::string& password = {});
  void subscribe(const std::string& folder, const std::string& password = {});
  void unsubscribe(const std::string& folder);
  void setPassword(const std::string& folder, const std::string& password);
  void answer(const std::string& folder, bool deletes);
  /// Chooses, or deletes, the version that the other's (or the own) user made.
  void use(const std::string& path, const SimulatedPeer& author);
  void drop(const std::string& path, const SimulatedPeer& author);
  [[nodiscard]] std::vector<std::string> conflicts(const std::string& folder);  ///< paths
  [[nodiscard]] std::vector<std::string> missing(const std::string& folder);
  [[nodiscard]] std::vector<std::string> questioned(const std::string& folder);

  // Files.
  void write(const std::string& path, const std::string& content);  ///< in place
  void save(const std::string& path, const std::string& content);   ///< aside and renamed
  void erase(const std::string& path);
  void move(const std::string& from, const std::string& to);
  [[nodiscard]] std::string read(const std::string& path) const;  ///< "(none)" when absent
  [[nodiscard]] std::map<std::string, std::string> contents(const std::string& folder) const;
  [[nodiscard]] std::string path(const std::string& path) const;  ///< absolute
  [[nodiscard]] std::string logPath(const std::string& folder, const SimulatedPeer& author) const;

  [[nodiscard]] const std::string& name() const { return host.hostName; }
  [[nodiscard]] std::string userId() const { return "user@" + name() + ".local"; }
  /// Everything that a test compares to see whether anything still changes.
  [[nodiscard]] std::string fingerprint();

  SimulatedPlatform host;
  std::optional<Pace> pace;  ///< of the next start

 private:
  using Start = std::function<void(Operations::Done)>;
  void ask(const std::string& what, const Start& start);
  [[nodiscard]] std::string versionBy(const std::string& folder, const std::string& path,
                                      const SimulatedPeer& author);

  std::unique_ptr<Application> application_;
  std::unique_ptr<Operations> operations_;
};

/// Computers on one network.
class Net {
 public:
  SimulatedWorld world;
  std::optional<Pace> pace;  ///< of computers made from now on

  /// The computer of that name; made, and its program started, at the first use.
  SimulatedPeer& peer(const std::string& name);
  [[nodiscard]] std::vector<SimulatedPeer*> peers() const;
  void advance(double seconds) { world.loop.advance(seconds); }
  /// The owner makes the files and shares the folder, the others subscribe; settled afterwards.
  void share(SimulatedPeer& owner, const std::string& folder,
             const std::map<std::string, std::string>& files,
             const std::vector<SimulatedPeer*>& subscribers);
  /// Lets time pass until no file, log, to-do or conflict has changed for a while. Fails the test
  /// when that does not happen.
  void settle();
  /// Settles, and expects every running peer to hold the same in the folder, with nothing missing
  /// and no conflict.
  void expectSame(const std::string& folder, const std::map<std::string, std::string>& contents);

 private:
  std::map<std::string, std::unique_ptr<SimulatedPeer>> peers_;
};

}  // namespace zolvar
