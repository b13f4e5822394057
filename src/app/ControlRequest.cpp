#include "app/ControlRequest.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>

#include "app/Operations.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

using nlohmann::json;

enum class Kind { Text, OptionalText, OptionalFlag };

struct Field {
  const char* name;
  Kind kind;
};

struct Rule {
  const char* name;
  ControlCommand command;
  std::vector<Field> fields;
};

std::span<const Rule> rules() {
  using enum ControlCommand;
  using enum Kind;
  static const Field name{"name", Text};
  static const std::vector<Rule> all = {
      {"share",
       Share,
       {{"folder", OptionalText}, {"addresses", OptionalText}, {"password", OptionalText}}},
      {"subscribe", Subscribe, {name, {"folder", OptionalText}, {"password", OptionalText}}},
      {"unsubscribe", Unsubscribe, {name}},
      {"remove", Remove, {name, {"yes", OptionalFlag}}},
      {"password", Password, {name, {"password", Text}}},
      {"list", List, {}},
      {"participants", Participants, {name}},
      {"missing", Missing, {name, {"holders", OptionalFlag}}},
      {"conflicts", Conflicts, {name}},
      {"tree", Tree, {name, {"path", Text}}},
      {"use", Use, {name, {"path", Text}, {"version", Text}}},
      {"drop", Drop, {name, {"path", Text}, {"version", Text}}},
      {"fetch", Fetch, {name, {"path", Text}, {"version", Text}, {"to", Text}}},
      {"sync", Sync, {{"name", OptionalText}, {"wait", OptionalFlag}}},
      {"question", Question, {}},
      {"answer", Answer, {name, {"answer", Text}}},
      {"get", Get, {{"key", Text}}},
      {"set", Set, {{"key", Text}, {"value", Text}}},
      {"status", Status, {}},
      {"watch", Watch, {}},
      {"quit", Quit, {}},
      {"versions", Versions, {name, {"path", Text}}},
      {"restore", Restore, {name, {"path", Text}, {"when", Text}}},
      {"give-up", GiveUp, {name, {"path", OptionalText}}},
      {"ignore", Ignore, {name, {"user", Text}, {"undo", OptionalFlag}}},
      {"pause", Pause, {{"name", OptionalText}, {"for", OptionalText}}},
      {"resume", Resume, {{"name", OptionalText}}},
  };
  return all;
}

std::optional<std::string> fieldProblem(const Rule& rule, const json& request) {
  for (const Field& field : rule.fields) {
    if (!request.contains(field.name)) {
      if (field.kind != Kind::Text) continue;
      return fmt::format("The command '{}' needs the field '{}'.", rule.name, field.name);
    }
    const json& value = request[field.name];
    if (field.kind == Kind::OptionalFlag && !value.is_boolean()) {
      return fmt::format("The field '{}' must be true or false.", field.name);
    }
    if (field.kind != Kind::OptionalFlag && !value.is_string()) {
      return fmt::format("The field '{}' must be a text.", field.name);
    }
  }
  for (const auto& item : request.items()) {
    const std::string& key = item.key();
    const bool isKnown =
        key == "command" || std::any_of(rule.fields.begin(), rule.fields.end(),
                                        [&](const Field& field) { return key == field.name; });
    if (!isKnown) return fmt::format("The command '{}' has no field '{}'.", rule.name, key);
  }
  return std::nullopt;
}

}  // namespace

Result<ControlRequest> ControlRequest::parse(std::string_view line) {
  if (line.size() > LongestControlLine) return refusal("The request is too long.");
  if (!isValidUtf8(line)) return refusal("The request is no valid UTF-8.");
  // Nothing in a request is nested, so anything deeper than a field's value is left out unread.
  const json request = json::parse(
      line,
      [](int depth, json::parse_event_t event, const json&) {
        const bool opens =
            event == json::parse_event_t::object_start || event == json::parse_event_t::array_start;
        return !(opens && depth > 1);
      },
      false);
  if (request.is_discarded()) return refusal("The request is no JSON.");
  if (!request.is_object()) return refusal("The request must be a JSON object.");
  if (!request.contains("command") || !request["command"].is_string()) {
    return refusal("The request must have the field 'command', a text.");
  }
  const auto& name = request["command"].get_ref<const std::string&>();
  const auto known = rules();
  const auto rule =
      std::find_if(known.begin(), known.end(), [&](const Rule& each) { return name == each.name; });
  if (rule == known.end()) return refusal(fmt::format("There is no command '{}'.", name));
  if (const auto problem = fieldProblem(*rule, request)) return refusal(*problem);
  return ControlRequest(rule->command, request);
}

}  // namespace zolvar
