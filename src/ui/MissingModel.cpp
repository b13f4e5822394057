#include "ui/MissingModel.h"

#include <QFont>
#include <QGuiApplication>
#include <QStringList>
#include <algorithm>

#include "ui/Icons.h"
#include "ui/RowChanges.h"
#include "ui/Texts.h"

namespace zolvar {

void MissingModel::pointIntoSnapshot() {
  rows_.clear();
  if (!snapshot_) return;
  rows_.reserve(snapshot_->missing->size());
  for (const auto& path : *snapshot_->missing) rows_.push_back(&path);
}

void MissingModel::setSnapshot(std::shared_ptr<const PoolSnapshot> snapshot) {
  const bool isSameList = snapshot && snapshot_ && snapshot->missing == snapshot_->missing;
  const bool isSame = isSameList && snapshot->seen == snapshot_->seen;
  if (isSame || (!snapshot && !snapshot_)) {
    snapshot_ = std::move(snapshot);
    return;
  }
  const auto before = snapshot_;  // the rows point into it
  std::vector<RowChange> changes;
  if (snapshot && before && !isSameList) {
    changes = rowChanges(
        rows_, *snapshot->missing,
        [](const std::string* left, const std::string& right) { return left->compare(right); },
        MostChanges);
  }
  if (!snapshot || !before || changes.size() > MostChanges) {
    beginResetModel();
    snapshot_ = std::move(snapshot);
    pointIntoSnapshot();
    endResetModel();
    return;
  }
  for (const auto& change : changes) {
    const int first = static_cast<int>(change.row);
    const int last = first + static_cast<int>(change.count) - 1;
    if (change.kind == RowChange::Kind::Removed) {
      beginRemoveRows({}, first, last);
      rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
      endRemoveRows();
    } else {
      std::vector<const std::string*> added;
      for (std::size_t each = 0; each < change.count; ++each) {
        added.push_back(&(*snapshot->missing)[change.source + each]);
      }
      beginInsertRows({}, first, last);
      rows_.insert(rows_.begin() + first, added.begin(), added.end());
      endInsertRows();
    }
  }
  snapshot_ = std::move(snapshot);
  pointIntoSnapshot();
  if (rows_.empty()) return;
  Q_EMIT dataChanged(index(0, Holders), index(static_cast<int>(rows_.size()) - 1, Size));
}

int MissingModel::rowOf(const std::string& path) const {
  const auto at = std::lower_bound(
      rows_.begin(), rows_.end(), path,
      [](const std::string* row, const std::string& sought) { return *row < sought; });
  return at != rows_.end() && **at == path ? static_cast<int>(at - rows_.begin()) : -1;
}

int MissingModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int MissingModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : ColumnCount;
}

QString MissingModel::holders(const std::string& path) const {
  const auto seen = snapshot_->seen->find(path);
  if (seen == snapshot_->seen->end() || seen->second.holders.empty()) {
    return Zolvar::tr("nobody seen yet");
  }
  QStringList people;
  for (const auto& userId : seen->second.holders) people += personText(userId);
  return people.join(Zolvar::tr(", "));
}

QString MissingModel::size(const std::string& path) const {
  const auto seen = snapshot_->seen->find(path);
  const bool isKnown = seen != snapshot_->seen->end() && seen->second.size;
  return isKnown ? bytesText(*seen->second.size) : QString();
}

QString MissingModel::described(const std::string& path) const {
  return toQt(describe_ ? describe_(path) : path);
}

QVariant MissingModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const std::string& file = path(index.row());
  switch (role) {
    case Qt::DisplayRole:
      if (index.column() == Size) return size(file);
      return index.column() == Path ? described(file) : holders(file);
    case Qt::TextAlignmentRole:
      if (index.column() == Size) return QVariant(Qt::AlignRight | Qt::AlignVCenter);
      return {};
    case Qt::ToolTipRole:
      return Zolvar::tr("%1\nSeen at: %2").arg(described(file), holders(file));
    case Qt::ForegroundRole:
      if (index.column() == Holders && !snapshot_->seen->contains(file)) {
        return faintColor(QGuiApplication::palette());
      }
      return {};
    default:
      return {};
  }
}

QVariant MissingModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole && section == Size) {
    return QVariant(Qt::AlignRight | Qt::AlignVCenter);
  }
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  if (section == Size) return Zolvar::tr("Size");
  return section == Path ? Zolvar::tr("File") : Zolvar::tr("Seen at");
}

}  // namespace zolvar
