#include "ui/ParticipantsModel.h"

#include <QGuiApplication>
#include <QIcon>
#include <tuple>

#include "app/Application.h"
#include "app/PoolListOrder.h"
#include "net/KDParticipant.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "ui/Icons.h"
#include "ui/PersonColors.h"
#include "ui/RowChanges.h"
#include "ui/StateTexts.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr std::size_t MostChanges = 1000;

auto key(const ParticipantInfo& info) {
  return std::tuple(info.address.userId(), info.address.port);
}

int compare(const ParticipantInfo& left, const ParticipantInfo& right) {
  if (key(left) == key(right)) return 0;
  return key(left) < key(right) ? -1 : 1;
}

}  // namespace

ParticipantsModel::ParticipantsModel(Application& application, Operations& operations,
                                     PersonColors& colors)
    : application_(application), operations_(operations), colors_(colors) {}

void ParticipantsModel::setFolder(const std::string& poolName) {
  beginResetModel();
  poolName_ = poolName;
  rows_.clear();
  endResetModel();
  update();
}

void ParticipantsModel::update() {
  std::vector<ParticipantInfo> rows;
  if (auto all = operations_.participants(poolName_)) rows = listedParticipants(std::move(*all));
  std::sort(rows.begin(), rows.end(),
            [](const auto& left, const auto& right) { return key(left) < key(right); });
  for (const auto& change : rowChanges(rows_, rows, compare, MostChanges)) {
    const int first = static_cast<int>(change.row);
    const int last = first + static_cast<int>(change.count) - 1;
    if (change.kind == RowChange::Kind::Removed) {
      beginRemoveRows({}, first, last);
      rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
      endRemoveRows();
    } else {
      const auto source = rows.begin() + static_cast<int>(change.source);
      beginInsertRows({}, first, last);
      rows_.insert(rows_.begin() + first, source, source + static_cast<int>(change.count));
      endInsertRows();
    }
  }
  rows_ = std::move(rows);
  if (rows_.empty()) return;
  Q_EMIT dataChanged(index(0, 0), index(static_cast<int>(rows_.size()) - 1, ColumnCount - 1));
  loadPictures();
}

void ParticipantsModel::loadPictures() {
  const auto* presence = application_.peer().presence(poolName_);
  if (presence == nullptr) return;
  for (const auto& participant : presence->participants()) {
    const std::string userId = participant->userId();
    if (participant->isLocalParticipant() || pictures_.contains(userId)) continue;
    pictures_[userId] = {};
    application_.peer().loadPicture(
        participant, [this, alive = std::weak_ptr<bool>(alive_), participant](bool isFound) {
          if (alive.expired() || !isFound) return;
          pictures_[participant->userId()] = decodedPicture(*participant->pictureData());
          if (rows_.empty()) return;
          Q_EMIT dataChanged(index(0, Person), index(static_cast<int>(rows_.size()) - 1, Person),
                             {Qt::DecorationRole});
        });
  }
}

const ParticipantInfo* ParticipantsModel::info(const QModelIndex& index) const {
  return index.isValid() ? &rows_[static_cast<std::size_t>(index.row())] : nullptr;
}

int ParticipantsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int ParticipantsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : ColumnCount;
}

/// The last one that worked; 0: none that is known of.
double ParticipantsModel::lastSync(const ParticipantInfo& info) {
  const bool hasFailed = info.contact.standing == Contact::Standing::Unreachable;
  return hasFailed ? info.contact.lastExchange : info.lastSync;
}

QVariant ParticipantsModel::text(const ParticipantInfo& info, Column column) const {
  switch (column) {
    case Person:
      return toQt(info.address.user);
    case Computer: {
      std::string host = info.address.hostName;
      for (const std::string_view suffix : {".local", ".lan"}) {
        if (host.ends_with(suffix)) host.resize(host.size() - suffix.size());
      }
      return toQt(host);
    }
    case LastSync: {
      const double when = lastSync(info);
      return when == 0 ? Zolvar::tr("not yet") : agoText(when, application_.platform().clock.now());
    }
    case Standing:
      return contactText(info);
    case ColumnCount:
      break;
  }
  return {};
}

QVariant ParticipantsModel::data(const QModelIndex& index, int role) const {
  const ParticipantInfo* participant = info(index);
  if (participant == nullptr) return {};
  const auto column = static_cast<Column>(index.column());
  switch (role) {
    case Qt::DisplayRole:
      return text(*participant, column);
    case Qt::DecorationRole: {
      if (column == Standing && participant->passwordRequired) return ownIcon("lock");
      if (column != Person) return {};
      const std::string userId = participant->address.userId();
      const auto picture = pictures_.find(userId);
      return QIcon(personPicture(userId, colors_.of(userId),
                                 picture == pictures_.end() ? QImage() : picture->second,
                                 PictureSide, qGuiApp->devicePixelRatio()));
    }
    case Qt::ToolTipRole:
      if (column == Standing) {
        QStringList lines;
        if (participant->passwordRequired)
          lines += Zolvar::tr("This user's folder has a password.");
        if (!participant->contact.reason.empty()) lines += said(participant->contact.reason);
        return lines.isEmpty() ? QVariant() : lines.join('\n');
      }
      if (column == LastSync && lastSync(*participant) != 0) {
        return dateText(lastSync(*participant));
      }
      return personText(participant->address.userId());
    case Qt::AccessibleTextRole: {
      const QString words = text(*participant, column).toString();
      const bool isLocked = column == Standing && participant->passwordRequired;
      return isLocked ? Zolvar::tr("%1, with password").arg(words) : words;
    }
    default:
      return {};
  }
}

QVariant ParticipantsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (static_cast<Column>(section)) {
    case Person:
      return Zolvar::tr("User");
    case Computer:
      return Zolvar::tr("Computer");
    case LastSync:
      return Zolvar::tr("Last sync");
    case Standing:
      return Zolvar::tr("Contact");
    case ColumnCount:
      break;
  }
  return {};
}

}  // namespace zolvar
