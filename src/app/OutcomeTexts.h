#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zolvar {

// What people read about the outcome of a sync and what they are asked. Pure; texts are the keys of
// their translations.

/// Names of notices, as the switches of a notification service know them.
inline constexpr const char* SyncSuccessNotice = "SyncSuccessNotification";
inline constexpr const char* DeletionNotice = "DeletionNotification";
inline constexpr const char* ConflictNotice = "ConflictNotfication";  ///< misspelt for good
inline constexpr const char* SyncErrorNotice = "SyncErrorNotification";

/// The four names under "AllNotifications" and "DefaultNotifications".
std::map<std::string, std::vector<std::string>> registrationDictionary();

/// What a click on a notice refers to.
struct ClickContext {
  std::string type;  ///< ConflictNotice is the only one that leads anywhere
  std::string poolName;
  std::string fileName;  ///< path in the pool
};

struct OutcomeNotice {
  std::string name;  ///< one of the four
  std::string poolName;
  std::string title;
  std::string description;
  bool isSticky = false;
  std::optional<ClickContext> click;
};

/// A pool as texts name it.
struct PoolText {
  std::string name;
  std::string displayName;
  bool isAddressPool = false;
  std::function<std::string(const std::string& path)> describe;  ///< empty: the path itself
};
[[nodiscard]] bool isAddressPoolName(const std::string& poolName);

/// At most 15 lines, each with a line feed before it; "\n..." after them when there are more.
std::string fileList(const PoolText& pool, const std::vector<std::string>& files);

/// Counts and lists the visible ones of `loaded`.
OutcomeNotice successNotice(const PoolText& pool, const std::set<std::string>& loaded);
OutcomeNotice errorNotice(const PoolText& pool, const std::string& errorMessage);
OutcomeNotice deletionNotice(const PoolText& pool, const std::set<std::string>& deleted);
OutcomeNotice conflictNotice(const PoolText& pool, const std::string& path, std::size_t versions);

/// Something to answer by a button. The first button has the code 1000, the next 1001.
struct Alert {
  std::string title;
  std::string text;
  std::vector<std::string> buttons;
};
inline constexpr int FirstButton = 1000;
inline constexpr int SecondButton = 1001;
inline constexpr int ThirdButton = 1002;

/// The question about vanished files: first button "Re-Get", second "Delete Everywhere". Of more
/// than 14 files, the first 14, "..." and the last are listed.
/// Requires: files ("[deleteSet count] > 0"), sorted.
Alert deletionAlert(const std::string& poolName, const std::vector<std::string>& paths);
Alert pathsNotAccessibleAlert(const std::string& poolName, const std::string& folderPath);

/// What the panel about different passwords shows.
struct PasswordFailureText {
  std::string message;
  std::string informative;
  std::vector<std::string> resolutions;  ///< titles of the answers 0, 1 and 2
};
PasswordFailureText passwordFailureText(const std::string& poolName, const std::string& userId);

/// Asked before another version takes a file's place; `date` is already formatted.
std::string switchBranchWarning(const std::string& path, const std::string& userId,
                                const std::string& date);
std::string removePoolWarning(const std::string& poolName);

}  // namespace zolvar
