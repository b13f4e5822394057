#pragma once

#include <QWidget>
#include <memory>
#include <optional>
#include <string>

#include "pool/FileHistory.h"
#include "ui/WindowContext.h"

class QLabel;
class QStackedWidget;

namespace zolvar {

class VersionTreeView;

/// The collapsible pane below the tabs: the version tree of the selected file. Asks for the history
/// when the file changes or when it is told to; what comes too late for another file is dropped.
/// The context outlives it. Main thread.
class DetailsPane : public QWidget {
  Q_OBJECT

 public:
  DetailsPane(WindowContext& context, QWidget* parent);

  /// An empty path: no file is selected.
  void showFile(const std::string& poolName, const std::string& path,
                const std::optional<VersionId>& version = {});
  /// Asks anew for the shown file's history.
  void update();
  [[nodiscard]] VersionTreeView& tree() { return *tree_; }
  [[nodiscard]] const std::string& path() const { return path_; }

 Q_SIGNALS:
  /// The history of the file came; sizes and all.
  void historyKnown(const FileHistory& history);

 private:
  void took(const FileHistory& history);
  void say(const QString& words);

  WindowContext& context_;
  std::string poolName_;
  std::string path_;
  std::optional<VersionId> wanted_;  ///< to be the current one when the history has come
  QLabel* title_;
  QStackedWidget* stack_;
  QLabel* hint_;
  VersionTreeView* tree_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< answers look at it
};

}  // namespace zolvar
