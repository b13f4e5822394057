#pragma once

#include <QByteArray>
#include <string>

class QHeaderView;
class QSplitter;

namespace zolvar {

class UserDefaults;

/// What the window remembers over its end: split positions, columns, geometry, the selected tab and
/// folder, each under "MasterDetail-" and its name. Damaged memories are left out. The defaults
/// outlive it. Main thread.
class WindowMemory {
 public:
  explicit WindowMemory(UserDefaults& defaults) : defaults_(defaults) {}

  [[nodiscard]] QByteArray recall(const std::string& name) const;  ///< empty: nothing
  void keep(const std::string& name, const QByteArray& state);
  [[nodiscard]] std::string recallText(const std::string& name) const;
  void keepText(const std::string& name, const std::string& text);

  void restore(const std::string& name, QSplitter& splitter) const;
  void save(const std::string& name, const QSplitter& splitter);
  /// False when there was nothing fitting: the caller sets widths of its own.
  bool restore(const std::string& name, QHeaderView& header) const;
  void save(const std::string& name, const QHeaderView& header);

 private:
  UserDefaults& defaults_;
};

}  // namespace zolvar
