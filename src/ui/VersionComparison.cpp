#include "ui/VersionComparison.h"

#include <QFile>
#include <algorithm>
#include <optional>

#include "app/Application.h"
#include "app/Operations.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "ui/DifferenceDialog.h"
#include "ui/Sheets.h"
#include "ui/Texts.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr qint64 LargestText = qint64{1} << 20;  // bytes

/// The content when it is a text that can be compared line by line.
std::optional<std::string> textIn(const std::string& path) {
  QFile file(toQt(path));
  if (!file.open(QIODevice::ReadOnly) || file.size() > LargestText) return std::nullopt;
  std::string bytes = file.readAll().toStdString();
  if (!isText(bytes)) return std::nullopt;
  return bytes;
}

}  // namespace

VersionComparison::VersionComparison(WindowContext& context, QWidget& window,
                                     std::function<void(const QString&)> told)
    : context_(context), window_(window), told_(std::move(told)) {}

QString VersionComparison::title(const ConflictVersion& version) const {
  const bool isOurs = version.id.userId == context_.application.peer().userId();
  const QString person = isOurs ? Zolvar::tr("You") : personText(version.id.userId);
  const QString line = Zolvar::tr("%1, %2").arg(person, dateText(version.modTime));
  return version.isLocal ? Zolvar::tr("%1 (this one is here)").arg(line) : line;
}

void VersionComparison::compare(const std::string& poolName, const std::string& folder,
                                const std::string& path, const ConflictVersion& left,
                                const ConflictVersion& right) {
  if (!place_) place_ = std::make_unique<QTemporaryDir>();
  auto comparison = std::make_shared<Comparison>();
  comparison->poolName = poolName;
  comparison->path = path;
  // A chosen version that is still to come is not what lies in its place.
  const auto pool = context_.application.peer().poolNamed(poolName);
  const auto missing = pool ? pool->snapshot()->missing : nullptr;
  const bool isToCome = missing && std::binary_search(missing->begin(), missing->end(), path);
  for (const auto* version : {&left, &right}) {
    Side side{*version, joinPath(folder, path), version->isLocal && !isToCome};
    if (!side.isThere) {
      // A folder each, so that the file keeps its name for the program that opens it.
      const QString own = place_->filePath(QString::number(++number_));
      static_cast<void>(context_.platform.fileSystem.makeFolder(own.toStdString()));
      side.file = joinPath(own.toStdString(), std::string(lastPathComponent(path)));
    }
    comparison->sides.push_back(std::move(side));
  }
  fetch(comparison);
}

void VersionComparison::fetch(const std::shared_ptr<Comparison>& comparison) {
  for (Side& side : comparison->sides) {
    if (side.isThere) continue;
    told_(Zolvar::tr("Fetching the version from %1…").arg(personText(side.version.id.userId)));
    return context_.operations.fetchVersion(
        comparison->poolName, comparison->path, side.version.id.text(), side.file,
        [this, alive = std::weak_ptr<bool>(alive_), comparison, &side](const Result<>& fetched) {
          if (alive.expired()) return;
          told_({});
          if (!fetched) {
            if (context_.sheets == nullptr) return;
            return context_.sheets->showProblem(Zolvar::tr("The version could not be fetched."),
                                                said(refusalText(fetched.error())));
          }
          side.isThere = true;
          fetch(comparison);
        });
  }
  show(*comparison);
}

void VersionComparison::show(const Comparison& comparison) {
  const Side& left = comparison.sides.front();
  const Side& right = comparison.sides.back();
  const auto openBoth = [&workspace = context_.platform.workspace, first = left.file,
                         second = right.file] {
    workspace.open(first);
    workspace.open(second);
  };
  const auto leftText = textIn(left.file);
  const auto rightText = textIn(right.file);
  const auto lines = leftText && rightText ? textDifference(*leftText, *rightText) : std::nullopt;
  if (!lines) return openBoth();
  auto* dialog = new DifferenceDialog(toQt(comparison.path), title(left.version),
                                      title(right.version), *lines, &window_);
  QObject::connect(dialog, &DifferenceDialog::openBothWanted, dialog, openBoth);
  dialog->show();
}

}  // namespace zolvar
