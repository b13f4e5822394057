#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Log.h"
#include "platform/RunLoop.h"
#include "util/Failure.h"

namespace zolvar {

/// Changes a card's text. Applied to the card as it is when it is written, which somebody may have
/// changed since it was read; applied twice it changes nothing more. Any thread.
using CardEdit = std::function<std::string(std::string_view card)>;

/// A card as its keeper knows it.
struct KeptCard {
  std::string text;           ///< from BEGIN to END
  bool isWritable = true;     ///< false where a change would spoil others (several cards in a file)
  std::string addressToOpen;  ///< what shows it to a person; may be empty
  bool operator==(const KeptCard&) const = default;
};
using KeptCards = std::map<std::string, KeptCard>;  ///< by record id

/// One thing to be done to the cards.
struct CardWrite {
  enum class Kind { Add, Change, Remove };
  Kind kind = Kind::Change;
  std::string id;
  std::string text;  ///< of a card to be added
  CardEdit edit;     ///< of a card to be changed
};

/// Where the cards of an address book are kept: a folder, another program. It reads and writes in
/// the background; all calls and all that it tells are on the main thread. Ids are given by it, and
/// by whoever adds: they are the cards' UIDs as far as recordId() and duplicates allow. An
/// implementation may come from a module, so this header needs no library.
class CardSource {
 public:
  struct Events {
    /// All cards as they are now. Told once all are read, and whenever that is simplest.
    std::function<void(KeptCards)> read;
    /// Some cards as they are now, and the ids of those that are no more.
    std::function<void(KeptCards changed, std::vector<std::string> removed)> changed;
    /// It is not known any more what there is, until `read` comes.
    std::function<void(Failure)> lost;
    /// Writes were done, or have failed: how many of those asked for, in the order of asking. A
    /// failed one was told in the log. What has become of the cards, by them or by others since, is
    /// told next: told before, it would look as if the writes were still to be done to it.
    std::function<void(std::size_t count)> written;
  };

  virtual ~CardSource() = default;
  /// Once; events come on later turns of the run loop, and none after the source's end.
  virtual void start(Events events) = 0;
  virtual void write(std::vector<CardWrite> writes) = 0;
  /// Which book this is: see AddressBook::identity. Known from `read` on.
  [[nodiscard]] virtual std::string identity() const = 0;
  /// The record id of the user's own card, as the setting (which may be empty) or the source's own
  /// mark names it; empty when none is known.
  [[nodiscard]] virtual std::string ownCard(const std::string& setting) const = 0;
};

/// A UID as a record id, which is also a file's name: characters that may mean something else there
/// are written as %XX, and an id that would be too long for a file's name is cut and told apart by
/// its hash.
std::string recordId(std::string_view uid);

/// What a module exports to be found by name: it makes a source out of services that outlive it.
using MakeCardSource = CardSource* (*)(RunLoop& runLoop, Log& log);
inline constexpr const char* MakeCardSourceName = "zolvarMakeCardSource";
/// A module of another version is not used: the text that it exports must be ours.
inline constexpr const char* CardModuleVersionName = "zolvarCardModuleVersion";

}  // namespace zolvar
