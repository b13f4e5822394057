#include "ui/ConflictsModel.h"

#include <QFont>
#include <QGuiApplication>
#include <QLocale>
#include <algorithm>

#include "ui/Icons.h"
#include "ui/PersonColors.h"
#include "ui/RowChanges.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr std::size_t MostChanges = 200;
constexpr int SwatchSide = 12;  // device-independent pixels

/// Newest first: the order of a conflict's versions.
int compareVersions(const ConflictVersion& left, const ConflictVersion& right) {
  if (left.id == right.id) return 0;
  if (left.id.logTime != right.id.logTime) return left.id.logTime > right.id.logTime ? -1 : 1;
  return left.id.userId < right.id.userId ? -1 : 1;
}

}  // namespace

struct ConflictsModel::File {
  const Conflict* conflict = nullptr;
  int row = 0;
  std::vector<const ConflictVersion*> versions;

  explicit File(const Conflict& shown) { pointInto(shown); }
  void pointInto(const Conflict& shown) {
    conflict = &shown;
    versions.clear();
    for (const auto& version : shown.versions) versions.push_back(&version);
  }
};

ConflictsModel::ConflictsModel(std::string localUserId, PersonColors& colors)
    : localUserId_(std::move(localUserId)), colors_(colors) {}

ConflictsModel::~ConflictsModel() = default;

ConflictsModel::File* ConflictsModel::fileOf(const QModelIndex& index) {
  return static_cast<File*>(index.internalPointer());
}

void ConflictsModel::renumber() {
  for (std::size_t row = 0; row < files_.size(); ++row) files_[row]->row = static_cast<int>(row);
}

void ConflictsModel::reset(std::shared_ptr<const PoolSnapshot> snapshot) {
  beginResetModel();
  snapshot_ = std::move(snapshot);
  files_.clear();
  if (snapshot_) {
    for (const auto& conflict : *snapshot_->conflicts) {
      files_.push_back(std::make_unique<File>(conflict));
    }
  } else {
    sizes_.clear();
  }
  renumber();
  endResetModel();
}

void ConflictsModel::setSnapshot(std::shared_ptr<const PoolSnapshot> snapshot) {
  if (!snapshot || !snapshot_) {
    if (snapshot || snapshot_) reset(std::move(snapshot));
    return;
  }
  const auto before = snapshot_;  // the rows point into it
  if (snapshot->conflicts != before->conflicts) takeFiles(*snapshot->conflicts);
  snapshot_ = std::move(snapshot);
}

void ConflictsModel::takeFiles(const std::vector<Conflict>& conflicts) {
  const auto changes = rowChanges(
      files_, conflicts,
      [](const auto& left, const Conflict& right) {
        return left->conflict->path.compare(right.path);
      },
      MostChanges);
  for (const auto& change : changes) {
    const int first = static_cast<int>(change.row);
    const int last = first + static_cast<int>(change.count) - 1;
    if (change.kind == RowChange::Kind::Removed) {
      beginRemoveRows({}, first, last);
      files_.erase(files_.begin() + first, files_.begin() + last + 1);
      renumber();
      endRemoveRows();
      continue;
    }
    std::vector<std::unique_ptr<File>> added;
    for (std::size_t each = 0; each < change.count; ++each) {
      added.push_back(std::make_unique<File>(conflicts[change.source + each]));
    }
    beginInsertRows({}, first, last);
    files_.insert(files_.begin() + first, std::make_move_iterator(added.begin()),
                  std::make_move_iterator(added.end()));
    renumber();
    endInsertRows();
  }
  if (changes.size() > MostChanges) {  // the steps ended early
    takeFiles(conflicts);
    return;
  }
  for (std::size_t row = 0; row < files_.size(); ++row) takeVersions(*files_[row], conflicts[row]);
  if (files_.empty()) return;
  Q_EMIT dataChanged(index(0, 0), index(static_cast<int>(files_.size()) - 1, ColumnCount - 1));
}

void ConflictsModel::takeVersions(File& file, const Conflict& conflict) {
  if (file.conflict == &conflict) return;
  const QModelIndex parent = createIndex(file.row, 0);
  const auto changes = rowChanges(
      file.versions, conflict.versions,
      [](const ConflictVersion* left, const ConflictVersion& right) {
        return compareVersions(*left, right);
      },
      conflict.versions.size() + file.versions.size());
  for (const auto& change : changes) {
    const int first = static_cast<int>(change.row);
    const int last = first + static_cast<int>(change.count) - 1;
    if (change.kind == RowChange::Kind::Removed) {
      beginRemoveRows(parent, first, last);
      file.versions.erase(file.versions.begin() + first, file.versions.begin() + last + 1);
      endRemoveRows();
    } else {
      beginInsertRows(parent, first, last);
      for (std::size_t each = 0; each < change.count; ++each) {
        file.versions.insert(file.versions.begin() + first + static_cast<int>(each),
                             &conflict.versions[change.source + each]);
      }
      endInsertRows();
    }
  }
  file.pointInto(conflict);
  if (file.versions.empty()) return;
  Q_EMIT dataChanged(index(0, 0, parent),
                     index(static_cast<int>(file.versions.size()) - 1, ColumnCount - 1, parent));
}

void ConflictsModel::noteSize(const std::string& path, const VersionId& version,
                              std::uint64_t bytes) {
  sizes_[path][version] = bytes;
  const QModelIndex row = indexOf(path, version);
  if (row.isValid()) Q_EMIT dataChanged(row.siblingAtColumn(Size), row.siblingAtColumn(Size));
}

std::optional<std::uint64_t> ConflictsModel::size(const std::string& path,
                                                  const VersionId& version) const {
  const auto known = sizes_.find(path);
  if (known == sizes_.end()) return std::nullopt;
  const auto bytes = known->second.find(version);
  return bytes == known->second.end() ? std::nullopt : std::optional(bytes->second);
}

const Conflict* ConflictsModel::conflict(const QModelIndex& index) const {
  if (!index.isValid()) return nullptr;
  if (const File* file = fileOf(index)) return file->conflict;
  return files_[static_cast<std::size_t>(index.row())]->conflict;
}

const ConflictVersion* ConflictsModel::version(const QModelIndex& index) const {
  const File* file = index.isValid() ? fileOf(index) : nullptr;
  return file != nullptr ? file->versions[static_cast<std::size_t>(index.row())] : nullptr;
}

QModelIndex ConflictsModel::indexOf(const std::string& path) const {
  const auto at = std::lower_bound(
      files_.begin(), files_.end(), path,
      [](const auto& file, const auto& sought) { return file->conflict->path < sought; });
  if (at == files_.end() || (*at)->conflict->path != path) return {};
  return createIndex(static_cast<int>(at - files_.begin()), 0);
}

QModelIndex ConflictsModel::indexOf(const std::string& path, const VersionId& version) const {
  const QModelIndex parent = indexOf(path);
  for (int row = 0; row < rowCount(parent); ++row) {
    const QModelIndex child = index(row, 0, parent);
    if (parent.isValid() && this->version(child)->id == version) return child;
  }
  return {};
}

QModelIndex ConflictsModel::index(int row, int column, const QModelIndex& parent) const {
  if (row < 0 || column < 0 || column >= ColumnCount || row >= rowCount(parent)) return {};
  if (!parent.isValid()) return createIndex(row, column);
  return createIndex(row, column, files_[static_cast<std::size_t>(parent.row())].get());
}

QModelIndex ConflictsModel::parent(const QModelIndex& child) const {
  const File* file = child.isValid() ? fileOf(child) : nullptr;
  return file != nullptr ? createIndex(file->row, 0) : QModelIndex();
}

int ConflictsModel::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) return static_cast<int>(files_.size());
  if (parent.column() > 0 || fileOf(parent) != nullptr) return 0;
  return static_cast<int>(files_[static_cast<std::size_t>(parent.row())]->versions.size());
}

int ConflictsModel::columnCount(const QModelIndex& /*parent*/) const { return ColumnCount; }

QString ConflictsModel::described(const std::string& path) const {
  return toQt(describe_ ? describe_(path) : path);
}

QVariant ConflictsModel::fileText(const Conflict& conflict, Column column) const {
  if (column == Name) return described(conflict.path);
  if (column == Changed) {
    return Zolvar::tr("%n version(s)", nullptr, static_cast<int>(conflict.versions.size()));
  }
  return {};
}

QVariant ConflictsModel::versionText(const File& file, const ConflictVersion& version,
                                     Column column) const {
  switch (column) {
    case Name: {
      const QString person =
          version.id.userId == localUserId_ ? Zolvar::tr("You") : personText(version.id.userId);
      return version.isLocal ? Zolvar::tr("%1 (this one is here)").arg(person) : person;
    }
    case Changed:
      return dateText(version.modTime);
    case Size: {
      const auto bytes = size(file.conflict->path, version.id);
      return bytes ? bytesText(*bytes) : QString();
    }
    case ChosenBy: {
      QStringList people;
      for (const auto& userId : version.selectedBy) {
        people += userId == localUserId_ ? Zolvar::tr("you") : personText(userId);
      }
      return people.join(Zolvar::tr(", "));
    }
    case ColumnCount:
      break;
  }
  return {};
}

QVariant ConflictsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const auto column = static_cast<Column>(index.column());
  const ConflictVersion* shown = version(index);
  if (shown == nullptr) {
    if (role == Qt::DisplayRole) return fileText(*conflict(index), column);
    if (role == Qt::DecorationRole && column == Name) return ownIcon("state-conflict");
    if (role == Qt::ToolTipRole) return toQt(conflict(index)->path);
    return {};
  }
  switch (role) {
    case Qt::DisplayRole:
      return versionText(*fileOf(index), *shown, column);
    case Qt::DecorationRole: {
      if (column != Name) return {};
      if (shown->isLocal) return ownIcon("state-instep");
      return personPicture(shown->id.userId, colors_.of(shown->id.userId), {}, SwatchSide,
                           qGuiApp->devicePixelRatio());
    }
    case Qt::ForegroundRole:
      return shown->isLocal ? QVariant(hereColor(QGuiApplication::palette())) : QVariant();
    case Qt::FontRole: {
      QFont font;
      font.setBold(shown->isLocal);
      return shown->isLocal ? QVariant(font) : QVariant();
    }
    case Qt::ToolTipRole:
      return Zolvar::tr("Written by %1\nChanged %2\nLogged %3")
          .arg(personText(shown->id.userId), dateText(shown->modTime), dateText(shown->id.logTime));
    default:
      return {};
  }
}

QVariant ConflictsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (static_cast<Column>(section)) {
    case Name:
      return Zolvar::tr("File and its versions");
    case Changed:
      return Zolvar::tr("Changed");
    case Size:
      return Zolvar::tr("Size");
    case ChosenBy:
      return Zolvar::tr("Chosen by");
    case ColumnCount:
      break;
  }
  return {};
}

}  // namespace zolvar
