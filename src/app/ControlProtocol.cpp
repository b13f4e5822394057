#include "app/ControlProtocol.h"

#include <fmt/format.h>

#include <exception>

#include "app/Application.h"
#include "app/ControlRequest.h"
#include "app/ControlViews.h"
#include "app/Operations.h"
#include "app/Pauses.h"
#include "app/WatchEvents.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "util/InconsistencyError.h"

namespace zolvar {

using nlohmann::json;

ControlProtocol::ControlProtocol(Application& application, Operations& operations,
                                 Callbacks callbacks)
    : application_(application), operations_(operations), callbacks_(std::move(callbacks)) {}

ControlProtocol::~ControlProtocol() = default;

void ControlProtocol::handleLine(std::string_view line) {
  require(!isBusy_, "!isBusy()");
  isBusy_ = true;
  isInCall_ = true;
  const std::weak_ptr<bool> alive = alive_;
  try {
    if (const auto request = ControlRequest::parse(line)) {
      dispatch(*request);
    } else {
      replyRefusal(refusalText(request.error()));
    }
  } catch (const std::exception& error) {
    // Above us is the event loop, which an exception would end together with the program.
    application_.platform().log.error("A request failed: {}", error.what());
    if (alive.expired()) return;
    replyRefusal(fmt::format("The request failed within Zolvar: {}.", error.what()));
  }
  if (!alive.expired()) isInCall_ = false;
}

void ControlProtocol::refuseLongLine() {
  isBusy_ = true;  // for good: what follows on the line is no request
  callbacks_.send({{"ok", false}, {"error", "The request is too long."}});
}

void ControlProtocol::dispatch(const ControlRequest& request) {
  using enum ControlCommand;
  switch (request.command()) {
    case Share:
    case Subscribe:
    case Unsubscribe:
    case Remove:
    case Password:
      return dispatchFolder(request);
    case List:
    case Participants:
    case Missing:
    case Conflicts:
    case Question:
    case Status:
      return dispatchListing(request);
    case Tree:
    case Use:
    case Drop:
    case Fetch:
    case Versions:
    case Restore:
      return dispatchVersion(request);
    case Pause:
    case Resume:
      return dispatchPause(request);
    case Sync:
      return dispatchSync(request);
    case Answer:
    case GiveUp:
    case Ignore:
    case Get:
    case Set:
    case Watch:
    case Quit:
      return dispatchProgram(request);
  }
}

void ControlProtocol::dispatchFolder(const ControlRequest& request) {
  std::optional<std::string> password;
  if (request.has("password")) password = request.text("password");
  const std::string name = request.text("name");
  switch (request.command()) {
    case ControlCommand::Share:
      if (request.has("folder") == request.has("addresses")) {
        return replyRefusal("The command 'share' needs the field 'folder' or 'addresses'.");
      }
      if (request.has("addresses")) {
        return operations_.shareAddresses(request.text("addresses"), password, replyLater());
      }
      return operations_.share(request.text("folder"), password,
                               [this, alive = std::weak_ptr<bool>(alive_),
                                folder = request.text("folder")](const Result<>& shared) {
                                 if (alive.expired()) return;
                                 const auto warning = operations_.warningAbout(folder);
                                 if (!shared || !warning) return reply(shared);
                                 replyData({{"warning", *warning}});
                               });
    case ControlCommand::Subscribe: {
      const std::string folder = request.text("folder");
      if (!folder.empty() && !folder.starts_with('/')) {
        return replyRefusal("The folder's path must be a full one, beginning with '/'.");
      }
      return operations_.subscribe(name, folder, password, replyLater());
    }
    case ControlCommand::Unsubscribe:
      return reply(operations_.unsubscribe(name));
    case ControlCommand::Remove:
      if (!request.flag("yes")) {
        return replyRefusal("Removing puts the folder and all its data into the Trash; say yes.");
      }
      return operations_.remove(name, replyLater());
    default:
      return operations_.setPassword(name, *password, replyLater());
  }
}

void ControlProtocol::dispatchListing(const ControlRequest& request) {
  const std::string name = request.text("name");
  switch (request.command()) {
    case ControlCommand::List:
      return replyData(views::viewAll(operations_.list()));
    case ControlCommand::Participants:
      return replyWith(operations_.participants(name),
                       [](const auto& members) { return views::viewAll(members); });
    case ControlCommand::Missing:
      return listMissing(request);
    case ControlCommand::Conflicts:
      return replyWith(operations_.conflicts(name), [&](const auto& members) {
        json conflicts = views::viewAll(members);
        for (json& conflict : conflicts) {
          conflict["description"] = operations_.describe(name, conflict["path"]);
        }
        return conflicts;
      });
    case ControlCommand::Question:
      return replyData(views::viewAll(operations_.questions()));
    default:
      return replyData(views::view(operations_.status()));
  }
}

void ControlProtocol::listMissing(const ControlRequest& request) {
  const bool withHolders = request.flag("holders");
  replyWith(operations_.missing(request.text("name")), [&](const auto& files) {
    json array = json::array();
    for (const auto& file : files) {
      if (withHolders) {
        array.push_back({{"path", file.path},
                         {"description", file.description},
                         {"holders", file.holders},
                         {"size", file.size ? json(*file.size) : json()}});
      } else {
        array.push_back(file.path);
      }
    }
    return array;
  });
}

void ControlProtocol::dispatchVersion(const ControlRequest& request) {
  const std::string name = request.text("name");
  const std::string path = request.text("path");
  const std::string version = request.text("version");
  switch (request.command()) {
    case ControlCommand::Use:
      return operations_.useVersion(name, path, version, replyLater());
    case ControlCommand::Drop:
      return operations_.dropVersion(name, path, version, replyLater());
    case ControlCommand::Fetch:
      return operations_.fetchVersion(name, path, version, request.text("to"), replyLater());
    case ControlCommand::Versions:
      return listVersions(request);
    case ControlCommand::Restore:
      return operations_.restore(name, path, request.text("when"), replyLater());
    default:
      return operations_.tree(name, path,
                              [this, alive = std::weak_ptr<bool>(alive_)](const auto& tree) {
                                if (alive.expired()) return;
                                replyWith(tree, [](const auto& text) { return json(text); });
                              });
  }
}

void ControlProtocol::listVersions(const ControlRequest& request) {
  operations_.versions(request.text("name"), request.text("path"),
                       [this, alive = std::weak_ptr<bool>(alive_)](const auto& versions) {
                         if (alive.expired()) return;
                         replyWith(versions,
                                   [](const auto& members) { return views::viewAll(members); });
                       });
}

void ControlProtocol::dispatchPause(const ControlRequest& request) {
  std::optional<std::string> name;
  if (request.has("name")) name = request.text("name");
  if (request.command() == ControlCommand::Resume) return reply(operations_.resume(name));
  std::optional<double> seconds;
  if (request.has("for")) {
    seconds = Pauses::parseDuration(request.text("for"));
    if (!seconds) return replyRefusal("How long is told like 90s, 15m, 1h, 1h30m or 2d.");
  }
  reply(operations_.pause(name, seconds));
}

void ControlProtocol::dispatchSync(const ControlRequest& request) {
  std::optional<std::string> name;
  if (request.has("name")) name = request.text("name");
  if (!request.flag("wait")) return reply(operations_.sync(name));
  if (!name) return replyRefusal("Waiting for a sync needs the name of a folder.");
  const std::weak_ptr<bool> alive = alive_;
  const auto started = operations_.syncAndWait(
      *name,
      [this, alive, name](const TransferProgress& progress) {
        if (alive.expired()) return;
        callbacks_.send(
            {{"event", "progress"}, {"name", *name}, {"progress", views::view(progress)}});
      },
      [this, alive](const Result<SyncOutcome>& outcome) {
        if (alive.expired()) return;
        if (!outcome) return replyRefusal(refusalText(outcome.error()));
        if (outcome->synced.empty() && !outcome->failed.empty()) {
          const auto& first = outcome->failed.front();
          return replyRefusal("No sync worked. With " + first.participant + ": " + first.error);
        }
        replyData(views::view(*outcome));
      });
  if (!started) reply(tl::unexpected(started.error()));
}

void ControlProtocol::dispatchProgram(const ControlRequest& request) {
  switch (request.command()) {
    case ControlCommand::Answer: {
      const std::string answer = request.text("answer");
      if (answer != "reget" && answer != "delete") {
        return replyRefusal("The answer must be 'reget' or 'delete'.");
      }
      return operations_.answer(request.text("name"), answer == "delete", replyLater());
    }
    case ControlCommand::GiveUp: {
      std::vector<std::string> paths;
      if (request.has("path")) paths.push_back(request.text("path"));
      return reply(operations_.deleteQueuedFiles(request.text("name"), std::move(paths)));
    }
    case ControlCommand::Ignore:
      return reply(
          operations_.ignore(request.text("name"), request.text("user"), !request.flag("undo")));
    case ControlCommand::Get: {
      const auto value = operations_.setting(request.text("key"));
      return replyData(value ? json(*value) : json());
    }
    case ControlCommand::Set:
      return reply(operations_.set(request.text("key"), request.text("value")));
    case ControlCommand::Watch:
      return watch();
    default:
      replyData(json());
      callbacks_.quit();
  }
}

void ControlProtocol::watch() {
  replyData(json());
  watching_ = std::make_unique<WatchEvents>(application_, operations_, callbacks_.send);
  watching_->start();
}

// Answers.

template <class Value, class View>
void ControlProtocol::replyWith(const Result<Value>& result, const View& view) {
  if (result) {
    replyData(view(*result));
  } else {
    replyRefusal(refusalText(result.error()));
  }
}

std::function<void(Result<>)> ControlProtocol::replyLater() {
  return [this, alive = std::weak_ptr<bool>(alive_)](const Result<>& result) {
    if (!alive.expired()) reply(result);
  };
}

void ControlProtocol::reply(const Result<>& result) {
  if (result) {
    replyData(json());
  } else {
    replyRefusal(refusalText(result.error()));
  }
}

void ControlProtocol::replyData(json data) { send({{"ok", true}, {"data", std::move(data)}}); }

void ControlProtocol::replyRefusal(const std::string& sentence) {
  send({{"ok", false}, {"error", sentence}});
}

void ControlProtocol::send(const json& answer) {
  isBusy_ = false;
  callbacks_.send(answer);
  if (!isInCall_ && callbacks_.idle) callbacks_.idle();
}

}  // namespace zolvar
