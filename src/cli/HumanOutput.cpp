#include "cli/HumanOutput.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace zolvar {
namespace {

using nlohmann::json;

std::size_t columnsOf(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

/// Rows of cells under a heading, columns as wide as their widest cell.
class Table {
 public:
  explicit Table(std::vector<std::string> heading) : rows_{std::move(heading)} {}

  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

  [[nodiscard]] std::string text(std::string_view indent = "") const {
    std::vector<std::size_t> widths(rows_.front().size());
    for (const auto& row : rows_) {
      for (std::size_t i = 0; i < row.size(); ++i) {
        widths[i] = std::max(widths[i], columnsOf(row[i]));
      }
    }
    std::string text;
    for (const auto& row : rows_) {
      text += indent;
      for (std::size_t i = 0; i < row.size(); ++i) {
        text += row[i];
        if (i + 1 < row.size()) text.append(widths[i] - columnsOf(row[i]) + 2, ' ');
      }
      while (!text.empty() && text.back() == ' ') text.pop_back();
      text += '\n';
    }
    return text;
  }

 private:
  std::vector<std::vector<std::string>> rows_;
};

std::string yes(const json& value) { return value.get<bool>() ? "yes" : "-"; }

std::string cell(const json& value) {
  if (value.is_null()) return "-";
  return printable(value.is_string() ? value.get<std::string>() : value.dump());
}

std::string timeCell(const json& seconds) {
  const double value = seconds.is_number() ? seconds.get<double>() : 0;
  if (value <= 0) return "never";
  return fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::localtime(static_cast<std::time_t>(value)));
}

std::string bytesText(double bytes) {
  const char* units[] = {"B", "KB", "MB", "GB", "TB"};
  std::size_t unit = 0;
  while (bytes >= 1000 && unit + 1 < std::size(units)) {
    bytes /= 1000;
    ++unit;
  }
  return unit == 0 ? fmt::format("{:.0f} B", bytes) : fmt::format("{:.1f} {}", bytes, units[unit]);
}

/// The state in words, and how long a pause lasts.
std::string stateText(const json& pool) {
  std::string text = cell(pool.at("state"));
  const json until = pool.value("pausedUntil", json());
  if (until.is_number() && until.get<double>() > 0) text += " until " + timeCell(until);
  return text;
}

std::string listText(const json& pools) {
  if (pools.empty()) return "No folders yet. Share one with: zolvar share FOLDER\n";
  Table table({"NAME", "STATE", "PARTICIPANTS", "MISSING", "CONFLICTS", "PASSWORD", "FOLDER"});
  std::string troubles;
  for (const auto& pool : pools) {
    table.add({cell(pool.at("name")), stateText(pool), cell(pool.at("participants")),
               cell(pool.at("missing")), cell(pool.at("conflicts")),
               yes(pool.at("passwordRequired")), cell(pool.at("folder"))});
    if (const std::string trouble = pool.value("trouble", ""); !trouble.empty()) {
      troubles += fmt::format("{}: {}\n", cell(pool.at("name")), printable(trouble));
    }
  }
  return table.text() + troubles;
}

std::string participantsText(const json& participants) {
  Table table({"USER", "HOST", "PORT", "LAST SYNC", "PASSWORD", "CONTACT"});
  for (const auto& participant : participants) {
    std::string notes = cell(participant.at("contact"));
    if (const std::string reason = participant.value("reason", ""); !reason.empty()) {
      notes += ": " + printable(reason);
    }
    if (participant.at("local").get<bool>()) notes = "this computer";
    if (participant.at("ignored").get<bool>()) notes += " (ignored)";
    table.add({cell(participant.at("userId")), cell(participant.at("host")),
               cell(participant.at("port")), timeCell(participant.at("lastSync")),
               yes(participant.at("passwordRequired")), notes});
  }
  return participants.empty() ? "Nobody takes part now.\n" : table.text();
}

std::string joined(const json& names) {
  std::string text;
  for (const auto& name : names) text += (text.empty() ? "" : ", ") + cell(name);
  return text;
}

/// The path, which commands take, and behind it the contact that it is.
std::string fileText(const json& file) {
  const std::string path = cell(file.at("path"));
  const json description = file.value("description", json());
  if (!description.is_string() || description == file.at("path")) return path;
  return fmt::format("{} ({})", path, cell(description));
}

std::string missingText(const json& files) {
  if (files.empty()) return {};
  Table table({"FILE", "SEEN AT"});
  for (const auto& file : files) {
    table.add({fileText(file), joined(file.at("holders"))});
  }
  return table.text();
}

std::string conflictsText(const json& conflicts) {
  std::string text;
  for (const auto& conflict : conflicts) {
    text += fileText(conflict) + '\n';
    Table table({"ID", "FILE TIME", "LOGGED", "HERE", "CHOSEN BY"});
    for (const auto& version : conflict.at("versions")) {
      table.add({cell(version.at("id")), timeCell(version.at("modTime")),
                 timeCell(version.at("logTime")), yes(version.at("local")),
                 joined(version.at("selectedBy"))});
    }
    text += table.text("  ");
  }
  return text;
}

std::string versionsText(const json& versions) {
  if (versions.empty()) return "No version of this file was kept.\n";
  Table table({"WHEN", "FILE TIME", "SIZE", "ID"});
  for (const auto& version : versions) {
    table.add({cell(version.at("when")), timeCell(version.at("modTime")),
               bytesText(version.at("size").get<double>()), cell(version.at("id"))});
  }
  return table.text();
}

std::string questionText(const json& questions) {
  std::string text;
  for (const auto& question : questions) {
    const auto& paths = question.at("paths");
    text += fmt::format("{} files have been (re-)moved from '{}':\n", paths.size(),
                        cell(question.at("name")));
    std::size_t shown = 0;
    for (const auto& path : paths) {
      if (++shown > 15) {
        text += "  ...\n";
        break;
      }
      text += "  " + cell(path) + '\n';
    }
    text +=
        fmt::format("Answer with: zolvar answer '{}' reget|delete\n", cell(question.at("name")));
  }
  return text;
}

std::string progressText(const json& progress) {
  return fmt::format("{} of {} files, {} of {}, {}/s", cell(progress.at("filesDone")),
                     cell(progress.at("filesWanted")),
                     bytesText(progress.at("bytesDone").get<double>()),
                     bytesText(progress.at("bytesWanted").get<double>()),
                     bytesText(progress.at("bytesPerSecond").get<double>()));
}

std::string statusText(const json& status) {
  std::string text = fmt::format("User id:  {}\nVersion:  {}\n", cell(status.at("userId")),
                                 cell(status.at("version")));
  text += status.at("daemonRunning").get<bool>()
              ? fmt::format("Daemon:   running on port {}\n", cell(status.at("port")))
              : "Daemon:   not running\n";
  if (const json until = status.value("pausedUntil", json()); !until.is_null()) {
    text += until.get<double>() > 0 ? "Paused:   until " + timeCell(until) + '\n'
                                    : "Paused:   until resumed\n";
  }
  for (const auto& folder : status.value("folders", json::array())) {
    text += fmt::format("Folder:   '{}' {}\n", cell(folder.at("name")), cell(folder.at("state")));
  }
  const auto& syncing = status.at("syncing");
  if (syncing.is_null()) return text + "Sync:     none in progress\n";
  text += fmt::format("Sync:     '{}' with {}\n", cell(syncing.at("name")),
                      cell(syncing.at("participant")));
  if (!syncing.at("progress").is_null()) {
    text += "Progress: " + progressText(syncing.at("progress")) + '\n';
  }
  return text;
}

std::string syncText(const json& data) {
  if (!data.is_object()) return {};
  std::string text;
  for (const auto& failure : data.value("failed", json::array())) {
    text += fmt::format("{}: {}\n", cell(failure.at("participant")), cell(failure.at("error")));
  }
  return text;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool isC1 =
        byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if (byte < 0x20 || byte == 0x7F) {
      result += '?';
    } else if (isC1) {
      result += '?';
      ++i;
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string progressBar(const json& progress, unsigned columns) {
  const double wanted = progress.at("bytesWanted").get<double>();
  const double share =
      wanted > 0 ? std::clamp(progress.at("bytesDone").get<double>() / wanted, 0.0, 1.0) : 0;
  constexpr unsigned Width = 24;
  const auto filled = static_cast<unsigned>(share * Width);
  std::string bar = "[" + std::string(filled, '#') + std::string(Width - filled, ' ') + "]";
  std::string line = fmt::format("{} {:3.0f} %  {}", bar, share * 100, progressText(progress));
  if (line.size() > columns && columns > 0) line.resize(columns);
  return line;
}

std::string humanText(const std::string& command, const json& data) {
  if (command == "list") return listText(data);
  if (command == "participants") return participantsText(data);
  if (command == "missing") return missingText(data);
  if (command == "conflicts") return conflictsText(data);
  if (command == "question") return questionText(data);
  if (command == "status") return statusText(data);
  if (command == "sync") return syncText(data);
  if (command == "versions") return versionsText(data);
  if (command == "share" && data.is_object()) {
    return fmt::format("Note: {}\n", printable(data.value("warning", "")));
  }
  if (command == "tree" || command == "get") {
    std::string text = data.is_string() ? data.get<std::string>() : std::string();
    if (!text.empty() && text.back() != '\n') text += '\n';
    return text;
  }
  return {};
}

}  // namespace zolvar
