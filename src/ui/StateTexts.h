#pragma once

#include <QString>
#include <optional>

#include "app/Operations.h"

namespace zolvar {

// A folder's state in the words of the window.

/// The state whose picture is shown: one that waits for a person, where something keeps the folder
/// from going on.
FolderStateKind shownKind(const PoolInfo& info);
/// "In step", "Fetching 3 of 7", "Conflict in 2 files": short, for the header and the tray.
QString stateText(const PoolInfo& info, const std::optional<TransferProgress>& progress);
/// What that means for the person, in a sentence; empty where the short one says it all.
QString stateExplanation(const PoolInfo& info);
/// The line below a folder's name in the list, such as "3 users, 2 missing".
QString summaryText(const PoolInfo& info, const std::optional<TransferProgress>& progress);
/// "1,204 of 3,310 files · 1.2 GB of 4 GB · 11 MB/s · about 4 minutes left".
QString progressText(const TransferProgress& progress);
/// How far a transfer is, from 0 to 1000; by bytes where their number is known.
int progressPermille(const TransferProgress& progress);
/// How the contact with a participant stands: "Connected", "Last sync failed", ...
QString contactText(const ParticipantInfo& info);

}  // namespace zolvar
