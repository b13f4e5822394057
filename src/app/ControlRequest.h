#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "util/Failure.h"

namespace zolvar {

inline constexpr std::size_t LongestControlLine = 1U << 20;  ///< bytes

enum class ControlCommand {
  Share,
  Subscribe,
  Unsubscribe,
  Remove,
  Password,
  List,
  Participants,
  Missing,
  Conflicts,
  Tree,
  Use,
  Drop,
  Fetch,
  Sync,
  Question,
  Answer,
  Get,
  Set,
  Status,
  Watch,
  Quit,
  Versions,
  Restore,
  GiveUp,
  Ignore,
  Pause,
  Resume,
};

/// One request of the control protocol, checked: the command is known, its required fields are
/// there, every field is known and of its type. A value; docs/control-protocol.md has the grammar.
class ControlRequest {
 public:
  /// Reads one line. Fails (Refused) with one sentence.
  static Result<ControlRequest> parse(std::string_view line);

  [[nodiscard]] ControlCommand command() const { return command_; }
  [[nodiscard]] bool has(const char* field) const { return fields_.contains(field); }
  /// "" when absent.
  [[nodiscard]] std::string text(const char* field) const { return fields_.value(field, ""); }
  /// False when absent.
  [[nodiscard]] bool flag(const char* field) const { return fields_.value(field, false); }

 private:
  ControlRequest(ControlCommand command, nlohmann::json fields)
      : command_(command), fields_(std::move(fields)) {}

  ControlCommand command_;
  nlohmann::json fields_;
};

}  // namespace zolvar
