#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>

#include "cli/HumanOutput.h"

namespace zolvar {
namespace {

std::string absolutePath(const std::string& path) {
  std::error_code error;
  auto absolute = std::filesystem::absolute(path, error);
  if (error) return path;
  std::string text = absolute.lexically_normal().string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

/// Collects what the options write; each subcommand's callback makes the request of it.
struct Values {
  std::string name, path, folder, group, version, to, key, value, answer, when, user, duration;
  bool passwordStdin = false, json = false, yes = false, wait = false, undo = false;
};

class Builder {
 public:
  Builder(CLI::App& app, Values& values, Invocation& invocation)
      : app_(app), values_(values), invocation_(invocation) {}

  using Fill = std::function<void(nlohmann::json& request)>;

  CLI::App* add(const std::string& name, const std::string& help, Fill fill = {}) {
    CLI::App* command = app_.add_subcommand(name, help);
    command->callback([this, name, fill = std::move(fill)] {
      invocation_.request = {{"command", name}};
      if (fill) fill(invocation_.request);
      invocation_.json = values_.json;
      invocation_.readsPassword = values_.passwordStdin || name == "password";
    });
    return command;
  }
  CLI::App* listing(const std::string& name, const std::string& help, Fill fill = {}) {
    CLI::App* command = add(name, help, std::move(fill));
    command->add_flag("--json", values_.json, "Print the data as JSON");
    return command;
  }
  /// Commands about one shared folder.
  Fill named() {
    return [this](nlohmann::json& request) { request["name"] = values_.name; };
  }
  void nameOf(CLI::App* command) {
    command->add_option("NAME", values_.name, "Name of the shared folder")->required();
  }
  void passwordOf(CLI::App* command) {
    command->add_flag("--password-stdin", values_.passwordStdin,
                      "Read the folder's password from standard input");
  }

 private:
  CLI::App& app_;
  Values& values_;
  Invocation& invocation_;
};

void addFolderCommands(Builder& builder, Values& values) {
  auto* share = builder.add("share", "Share a folder on the local network", [&](auto& request) {
    if (values.folder.empty() && values.group.empty()) throw CLI::RequiredError("FOLDER");
    if (values.group.empty()) {
      request["folder"] = absolutePath(values.folder);
    } else {
      request["addresses"] = values.group;
    }
  });
  auto* folder = share->add_option("FOLDER", values.folder, "The folder; it must exist");
  auto* group = share->add_option("--addresses", values.group,
                                  "Share this group of the address book instead of a folder");
  group->type_name("GROUP")->excludes(folder);
  builder.passwordOf(share);

  auto* subscribe =
      builder.add("subscribe", "Subscribe to a folder that others share", [&](auto& request) {
        request["name"] = values.name;
        if (!values.folder.empty()) request["folder"] = absolutePath(values.folder);
      });
  builder.nameOf(subscribe);
  subscribe->add_option("FOLDER", values.folder,
                        "Where its files go; ~/Public/Zolvar/NAME when left out");
  builder.passwordOf(subscribe);

  builder.nameOf(
      builder.add("unsubscribe", "Stop keeping a folder in step; its files stay", builder.named()));
  auto* remove =
      builder.add("remove", "Put a folder and all its data into the Trash", [&](auto& request) {
        request["name"] = values.name;
        request["yes"] = true;
      });
  builder.nameOf(remove);
  remove->add_flag("--yes", values.yes, "Really do it")->required();

  builder.nameOf(builder.add("password",
                             "Set a folder's password from standard input; an empty one removes it",
                             builder.named()));
}

void addListings(Builder& builder, Values& values) {
  builder.listing("list", "All folders, shared here or announced by others");
  builder.nameOf(builder.listing("participants", "Who takes part in a folder", builder.named()));
  builder.nameOf(
      builder.listing("missing", "Files that are still to be fetched", [&](auto& request) {
        request["name"] = values.name;
        if (!values.json) request["holders"] = true;
      }));
  builder.nameOf(builder.listing("conflicts", "Files with more than one version", builder.named()));
  auto* tree = builder.listing("tree", "All versions of one file", [&](auto& request) {
    request["name"] = values.name;
    request["path"] = values.path;
  });
  builder.nameOf(tree);
  tree->add_option("PATH", values.path, "Path of the file in the folder")->required();
  builder.listing("question", "Open questions about vanished files");
  builder.listing("status", "How the running program is doing");
}

void addVersionCommands(Builder& builder, Values& values) {
  const auto add = [&](const char* name, const char* help, bool fetches) {
    auto* command = builder.add(name, help, [&values, fetches](auto& request) {
      request["name"] = values.name;
      request["path"] = values.path;
      request["version"] = values.version;
      if (fetches) request["to"] = absolutePath(values.to);
    });
    builder.nameOf(command);
    command->add_option("PATH", values.path, "Path of the file in the folder")->required();
    command->add_option("ID", values.version, "Id of the version, as `conflicts` shows it")
        ->required();
    if (fetches) {
      command->add_option("TO", values.to, "File to write; it must not exist")->required();
    }
  };
  add("use", "Choose a version of a file in conflict", false);
  add("drop", "Delete a version of a file in conflict", false);
  add("fetch", "Fetch one version of a file to another place", true);

  auto* answer =
      builder.add("answer", "Answer the question about vanished files", [&](auto& request) {
        request["name"] = values.name;
        request["answer"] = values.answer;
      });
  builder.nameOf(answer);
  answer
      ->add_option("ANSWER", values.answer,
                   "reget: fetch them again; delete: delete them on the network")
      ->required()
      ->check(CLI::IsMember({"reget", "delete"}));
}

void addKeptVersions(Builder& builder, Values& values) {
  auto* versions =
      builder.listing("versions", "Versions of a file that were replaced here", [&](auto& request) {
        request["name"] = values.name;
        request["path"] = values.path;
      });
  auto* restore = builder.add("restore", "Put such a version back in place, as a new change",
                              [&](auto& request) {
                                request["name"] = values.name;
                                request["path"] = values.path;
                                request["when"] = values.when;
                              });
  for (auto* command : {versions, restore}) {
    builder.nameOf(command);
    command->add_option("PATH", values.path, "Path of the file in the folder")->required();
  }
  restore->add_option("WHEN", values.when, "Its time or id, as `versions` shows them")->required();
}

void addDecisions(Builder& builder, Values& values) {
  auto* giveUp = builder.add("give-up", "Ask whether missing files are to be deleted everywhere",
                             [&](auto& request) {
                               request["name"] = values.name;
                               if (!values.path.empty()) request["path"] = values.path;
                             });
  builder.nameOf(giveUp);
  giveUp->add_option("PATH", values.path, "Only this file; all that are missing when left out");

  auto* ignore = builder.add("ignore", "Complain no more about the password of a participant",
                             [&](auto& request) {
                               request["name"] = values.name;
                               request["user"] = values.user;
                               if (values.undo) request["undo"] = true;
                             });
  builder.nameOf(ignore);
  ignore->add_option("USER", values.user, "User id, as `participants` shows it")->required();
  ignore->add_flag("--undo", values.undo, "Complain again");

  auto* pause = builder.add("pause", "Neither fetch nor serve for a while", [&](auto& request) {
    if (!values.name.empty()) request["name"] = values.name;
    if (!values.duration.empty()) request["for"] = values.duration;
  });
  pause->add_option("NAME", values.name, "Only this folder; everything when left out");
  pause->add_option("--for", values.duration, "How long: 90s, 15m, 1h, 1h30m, 2d");
  builder
      .add("resume", "End a pause",
           [&](auto& request) {
             if (!values.name.empty()) request["name"] = values.name;
           })
      ->add_option("NAME", values.name, "Only this folder; every pause when left out");
}

void addProgramCommands(Builder& builder, Values& values) {
  auto* sync = builder.add("sync", "Sync with all participants now", [&](auto& request) {
    if (values.wait && values.name.empty()) {
      throw CLI::ValidationError("--wait", "needs the NAME of a folder");
    }
    if (!values.name.empty()) request["name"] = values.name;
    if (values.wait) request["wait"] = true;
  });
  sync->add_option("NAME", values.name, "Only this folder");
  sync->add_flag("--wait", values.wait, "Wait until it has synced with everyone, show progress");
  auto* get = builder.listing("get", "Print a setting",
                              [&](auto& request) { request["key"] = values.key; });
  get->add_option("KEY", values.key, "The setting")->required();
  auto* set = builder.add("set", "Change a setting; an empty value removes it", [&](auto& request) {
    request["key"] = values.key;
    request["value"] = values.value;
  });
  set->add_option("KEY", values.key, "The setting")->required();
  set->add_option("VALUE", values.value, "Its new value")->required();
  builder.add("watch", "Print what happens as it happens, one JSON object a line");
  builder.add("quit", "End the running program");
}

/// Whether the first word is meant as a command and is none.
bool isWrongWord(const CLI::App& app, const std::string& word) {
  if (word.empty() || word.front() == '-') return false;
  const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
  return std::none_of(commands.begin(), commands.end(),
                      [&word](const CLI::App* command) { return command->get_name() == word; });
}

}  // namespace

std::variant<Invocation, EarlyExit> parseCommandLine(int argc, char** argv) {
  Invocation invocation;
  Values values;
  CLI::App app{"Keeps folders in step between the computers of one local network.", "zolvar"};
  app.set_version_flag("--version", "zolvar " ZOLVAR_VERSION);
  app.require_subcommand(1);
  app.footer("Exit status: 0 done; 1 refused; 2 wrong usage; 3 Zolvar is not running.");
  Builder builder(app, values, invocation);
  addFolderCommands(builder, values);
  addListings(builder, values);
  addVersionCommands(builder, values);
  addKeptVersions(builder, values);
  addDecisions(builder, values);
  addProgramCommands(builder, values);
  if (argc > 1 && isWrongWord(app, argv[1])) {
    std::cerr << "There is no command '" << printable(argv[1])
              << "'. Run with --help for more information.\n";
    return EarlyExit{2};
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return EarlyExit{app.exit(error) == 0 ? 0 : 2};
  }
  return invocation;
}

}  // namespace zolvar
