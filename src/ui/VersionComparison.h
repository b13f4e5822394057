#pragma once

#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pool/PoolSnapshot.h"
#include "ui/WindowContext.h"

class QWidget;

namespace zolvar {

/// Compares two versions of a file: fetches what is not here to a temporary place, then shows the
/// difference of texts, and of anything else opens both in the desktop's programs. What was fetched
/// goes when the program ends. The context and the window outlive it. Main thread; nothing waits.
class VersionComparison {
 public:
  /// `told` gets one sentence while it is fetching, and an empty one when that is over.
  VersionComparison(WindowContext& context, QWidget& window,
                    std::function<void(const QString&)> told);

  /// `folder`: where the pool lies.
  void compare(const std::string& poolName, const std::string& folder, const std::string& path,
               const ConflictVersion& left, const ConflictVersion& right);

 private:
  struct Side {
    ConflictVersion version;
    std::string file;  ///< absolute path of its content
    bool isThere = false;
  };
  struct Comparison {
    std::string poolName;
    std::string path;
    std::vector<Side> sides;
  };
  void fetch(const std::shared_ptr<Comparison>& comparison);
  void show(const Comparison& comparison);
  [[nodiscard]] QString title(const ConflictVersion& version) const;

  WindowContext& context_;
  QWidget& window_;
  std::function<void(const QString&)> told_;
  std::unique_ptr<QTemporaryDir> place_;
  unsigned number_ = 0;  ///< of the next fetched file's folder
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< fetches look at it
};

}  // namespace zolvar
