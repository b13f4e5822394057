#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "util/Failure.h"

namespace zolvar {

class Application;
class ControlRequest;
class Operations;
class WatchEvents;

/// One conversation over the control socket, without the socket: takes requests as lines and
/// answers each with one object, {"ok": true, "data": ...} or {"ok": false, "error": SENTENCE};
/// objects with "event" may come before the answer of a long command, and follow without end after
/// "watch". Requests are answered one by one: hand in the next line only when not busy. Application
/// and operations outlive it; answers that come after its end are dropped. Main thread.
class ControlProtocol {
 public:
  struct Callbacks {
    std::function<void(const nlohmann::json&)> send;
    std::function<void()> idle;  ///< an answer was sent later than its request came; may be empty
    std::function<void()> quit;  ///< end the program
  };

  ControlProtocol(Application& application, Operations& operations, Callbacks callbacks);
  ~ControlProtocol();

  /// Requires: not busy ("!isBusy()").
  void handleLine(std::string_view line);
  [[nodiscard]] bool isBusy() const { return isBusy_; }
  /// Says that a request was longer than LongestControlLine; nothing follows.
  void refuseLongLine();

 private:
  void dispatch(const ControlRequest& request);
  void dispatchFolder(const ControlRequest& request);
  void dispatchListing(const ControlRequest& request);
  void dispatchVersion(const ControlRequest& request);
  void listVersions(const ControlRequest& request);
  void dispatchPause(const ControlRequest& request);
  void dispatchProgram(const ControlRequest& request);
  void dispatchSync(const ControlRequest& request);
  void listMissing(const ControlRequest& request);
  void watch();

  void reply(const Result<>& result);
  void replyData(nlohmann::json data);
  void replyRefusal(const std::string& sentence);
  void send(const nlohmann::json& answer);
  /// A callback that answers with its outcome, if this conversation is still there.
  std::function<void(Result<>)> replyLater();
  template <class Value, class View>
  void replyWith(const Result<Value>& result, const View& view);

  Application& application_;
  Operations& operations_;
  Callbacks callbacks_;
  std::unique_ptr<WatchEvents> watching_;
  bool isBusy_ = false;
  bool isInCall_ = false;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< callbacks hold it weakly
};

}  // namespace zolvar
