#include "ui/StateTexts.h"

#include <QLocale>
#include <QStringList>

#include "ui/Texts.h"

namespace zolvar {
namespace {

QString countText(std::uint64_t count) {
  return QLocale().toString(static_cast<qulonglong>(count));
}

QString pausedText(const PoolInfo& info) {
  if (!info.pausedUntil || *info.pausedUntil == 0) return Zolvar::tr("Paused");
  return Zolvar::tr("Paused until %1").arg(dateText(*info.pausedUntil));
}

}  // namespace

FolderStateKind shownKind(const PoolInfo& info) {
  using enum FolderStateKind;
  const auto kind = info.state.kind;
  const bool isCalm = kind == Fetching || kind == Missing || kind == Alone || kind == Checking;
  return isCalm && !info.trouble.empty() ? WaitingForDrive : kind;
}

QString stateText(const PoolInfo& info, const std::optional<TransferProgress>& progress) {
  using enum FolderStateKind;
  switch (info.state.kind) {
    case NotSubscribed:
      return Zolvar::tr("Not subscribed");
    case Paused:
      return pausedText(info);
    case WaitingForDrive:
      return Zolvar::tr("Waiting for the drive");
    case WaitingForPassword:
      return Zolvar::tr("Waiting for the password");
    case WaitingForClock:
      return Zolvar::tr("Waiting for the clock");
    case QuestionOpen:
      return Zolvar::tr("A question is open");
    case Conflict:
      return Zolvar::tr("Conflict in %n file(s)", nullptr, static_cast<int>(info.conflicts));
    case Fetching: {
      if (!progress || progress->filesWanted == 0) {
        return Zolvar::tr("Fetching %n file(s)", nullptr, static_cast<int>(info.missing));
      }
      return Zolvar::tr("Fetching %1 of %2")
          .arg(countText(progress->filesDone), countText(progress->filesWanted));
    }
    case Missing:
      return Zolvar::tr("%n file(s) missing", nullptr, static_cast<int>(info.missing));
    case Alone:
      return Zolvar::tr("Nobody else is here");
    case Checking:
      return info.trouble.empty() ? Zolvar::tr("Checking") : Zolvar::tr("Something is in the way");
    case InStep:
      return Zolvar::tr("In step");
  }
  return {};
}

QString stateExplanation(const PoolInfo& info) {
  using enum FolderStateKind;
  switch (info.state.kind) {
    case NotSubscribed:
      return Zolvar::tr("Subscribe, and its files come to this computer and stay in step.");
    case Paused:
      return Zolvar::tr("Nothing is fetched or sent. Changes here are noted and travel later.");
    case WaitingForDrive:
      return Zolvar::tr("The folder cannot be reached. Nothing happens until it is back.");
    case WaitingForPassword:
      return Zolvar::tr("Nobody here has the same password for this folder.");
    case WaitingForClock:
      return Zolvar::tr("This computer's clock is off. Set it, and the folder goes on.");
    case QuestionOpen:
      return Zolvar::tr("Nothing is deleted for the others before you answer.");
    case Conflict:
      return Zolvar::tr("Two people changed a file at once. Both versions are kept; choose one.");
    case Missing:
      return Zolvar::tr(
          "Nobody who is here now has them. They come once somebody who has them is back.");
    case Alone:
      return Zolvar::tr("Changes reach the others as soon as they are on the network.");
    case Fetching:
    case Checking:
    case InStep:
      return {};
  }
  return {};
}

QString summaryText(const PoolInfo& info, const std::optional<TransferProgress>& progress) {
  using enum FolderStateKind;
  const auto users = static_cast<int>(info.participants);
  const QString others = users == 0 ? QString() : Zolvar::tr("%n user(s)", nullptr, users);
  switch (info.state.kind) {
    case NotSubscribed: {
      if (users > 0) return others;
      return info.folder.empty() ? Zolvar::tr("Not on the network") : Zolvar::tr("Not subscribed");
    }
    case InStep:
    case Missing: {
      if (info.missing == 0) return Zolvar::tr("In step with %n user(s)", nullptr, users);
      const QString missing = Zolvar::tr("%n missing", nullptr, static_cast<int>(info.missing));
      return users == 0 ? missing : Zolvar::tr("%1, %2").arg(others, missing);
    }
    default:
      return stateText(info, progress);
  }
}

QString progressText(const TransferProgress& progress) {
  QStringList parts;
  parts += Zolvar::tr("%1 of %n file(s)", nullptr, static_cast<int>(progress.filesWanted))
               .arg(countText(progress.filesDone));
  if (progress.bytesWanted > 0) {
    parts +=
        Zolvar::tr("%1 of %2").arg(bytesText(progress.bytesDone), bytesText(progress.bytesWanted));
  }
  if (progress.bytesPerSecond >= 1) {
    parts += Zolvar::tr("%1/s").arg(bytesText(static_cast<std::uint64_t>(progress.bytesPerSecond)));
    if (progress.bytesWanted > progress.bytesDone) {
      parts += remainingText(static_cast<double>(progress.bytesWanted - progress.bytesDone) /
                             progress.bytesPerSecond);
    }
  }
  return parts.join(" · ");
}

int progressPermille(const TransferProgress& progress) {
  constexpr double Whole = 1000;
  const bool isByBytes = progress.bytesWanted > 0;
  const auto done = static_cast<double>(isByBytes ? progress.bytesDone : progress.filesDone);
  const auto wanted = static_cast<double>(isByBytes ? progress.bytesWanted : progress.filesWanted);
  return wanted <= 0 ? 0 : static_cast<int>(std::min(Whole, Whole * done / wanted));
}

QString contactText(const ParticipantInfo& info) {
  if (info.isIgnored) return Zolvar::tr("Ignored");
  if (info.contact.differsInPassword) return Zolvar::tr("Has another password");
  switch (info.contact.standing) {
    case Contact::Standing::Seen:
      return Zolvar::tr("Seen");
    case Contact::Standing::Reachable:
      return Zolvar::tr("Connected");
    case Contact::Standing::Unreachable:
      return Zolvar::tr("Last sync failed");
  }
  return {};
}

}  // namespace zolvar
