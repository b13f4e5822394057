#include "log/KDEntryStore.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "log/MappedBytes.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "util/InconsistencyError.h"

namespace zolvar {

static_assert(sizeof(KDLogFileEntry) == 80);
static_assert(sizeof(KDPathRecord) == 56);
static_assert(std::is_trivially_destructible_v<KDLogFileEntry>);
static_assert(std::is_trivially_destructible_v<KDPathRecord>);

namespace {

std::uint64_t eightBytes(const char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// Sixteen bytes a multiplication; every bit of the result depends on every bit of the text.
std::uint32_t mixedHash(std::string_view text, std::uint64_t seed) {
  constexpr std::uint64_t Factor = 0x9E3779B97F4A7C15U;
  const auto mix = [](std::uint64_t a, std::uint64_t b) {
    const auto product = static_cast<unsigned __int128>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
  };
  const char* next = text.data();
  const char* const end = next + text.size();
  std::uint64_t hash = seed;
  std::uint64_t first = 0;  // what is left in the end; may overlap what was taken before
  std::uint64_t last = 0;
  if (text.size() >= 8) {
    for (; end - next > 16; next += 16) {
      hash = mix(eightBytes(next) ^ Factor, eightBytes(next + 8) ^ hash);
    }
    first = text.size() >= 16 ? eightBytes(end - 16) : eightBytes(next);
    last = eightBytes(end - 8);
  } else {
    for (; next != end; ++next) last = last << 8U | static_cast<unsigned char>(*next);
  }
  hash = mix(first ^ Factor, last ^ hash);
  hash = mix(hash ^ text.size(), Factor);
  return static_cast<std::uint32_t>(hash >> 32U);
}

}  // namespace

struct KDEntryStore::Storage {
  static constexpr std::size_t RecordsAChunk = ChunkedBytes::ChunkSize / sizeof(KDPathRecord);
  static constexpr unsigned FirstSlotBits = 8;

  /// A place of the path table: which path, and its hash, so that probing and growing need not
  /// touch the records.
  struct Slot {
    std::uint32_t hash;
    std::uint32_t number;  ///< number of the path + 1; 0 for a free place
  };

  ChunkedBytes entries;
  ChunkedBytes records;
  ChunkedBytes texts;
  MappedBytes table = makeTable(FirstSlotBits);  ///< 2^slotBits slots, at most 4/5 full
  unsigned slotBits = FirstSlotBits;
  std::size_t pathCount = 0;
  /// Differs from run to run, so that no log can be written to make all paths collide.
  std::uint64_t seed = reinterpret_cast<std::uintptr_t>(this) * 0xD6E8FEB86659FD93U;
  const std::string* lastUser = &internedUserId({});
  const std::string* lastParentUser = lastUser;

  static MappedBytes makeTable(unsigned bits) {
    const std::size_t size = sizeof(Slot) << bits;
    return {size, size >= MappedBytes::HugePage ? MappedBytes::Pages::Huge
                                                : MappedBytes::Pages::Ordinary};
  }
  [[nodiscard]] Slot* slots() const { return reinterpret_cast<Slot*>(table.data()); }
  [[nodiscard]] std::size_t slotCount() const { return std::size_t{1} << slotBits; }
  /// The hash's first bits: growing the table keeps the order, so that both tables are walked
  /// from front to back.
  [[nodiscard]] std::size_t home(std::uint32_t hash) const { return hash >> (32 - slotBits); }

  [[nodiscard]] KDPathRecord& record(std::size_t number) const {
    char* const chunk = records.chunk(number / RecordsAChunk);
    return *std::launder(
        reinterpret_cast<KDPathRecord*>(chunk + (number % RecordsAChunk) * sizeof(KDPathRecord)));
  }

  /// The slot that holds the path, or the free one where it belongs.
  [[nodiscard]] Slot& find(std::string_view text, std::uint32_t hash) const {
    const std::size_t mask = slotCount() - 1;
    Slot* const all = slots();
    std::size_t index = home(hash);
    while (all[index].number != 0) {
      if (all[index].hash == hash && record(all[index].number - 1).text == text) break;
      index = (index + 1) & mask;
    }
    return all[index];
  }

  [[nodiscard]] bool hasRoomFor(std::size_t paths) const { return paths * 5 <= slotCount() * 4; }

  void growTable(unsigned newBits) {
    require(newBits <= 32, "path count < 2^32");
    const std::size_t oldCount = slotCount();
    const MappedBytes old = std::exchange(table, makeTable(newBits));
    slotBits = newBits;
    const std::size_t mask = slotCount() - 1;
    const Slot* const from = reinterpret_cast<const Slot*>(old.data());
    for (const Slot* slot = from; slot != from + oldCount; ++slot) {
      if (slot->number == 0) continue;
      std::size_t index = home(slot->hash);
      while (slots()[index].number != 0) index = (index + 1) & mask;
      slots()[index] = *slot;
    }
  }

  [[nodiscard]] std::uint32_t hashOf(std::string_view text) const { return mixedHash(text, seed); }

  KDPathRecord& path(std::string_view text, std::uint32_t hash) {
    Slot* found = &find(text, hash);
    if (found->number != 0) return record(found->number - 1);

    require(text.size() <= ChunkedBytes::ChunkSize, "path length <= 2 MiB");
    if (!hasRoomFor(pathCount + 1)) {
      growTable(slotBits + 1);
      found = &find(text, hash);
    }
    char* const bytes = texts.take(text.size());
    text.copy(bytes, text.size());
    auto* const added = new (records.take(sizeof(KDPathRecord))) KDPathRecord;
    added->text = {bytes, text.size()};
    added->hash = hash;
    *found = {hash, static_cast<std::uint32_t>(++pathCount)};
    return *added;
  }

  /// Logs come user by user: the lock around all ids is taken once a user, not once an entry.
  static const std::string& interned(std::string_view userId, const std::string*& last) {
    if (last->data() != userId.data() && *last != userId) last = &internedUserId(userId);
    return *last;
  }
};

KDEntryStore::KDEntryStore() : storage_(std::make_unique<Storage>()) {}
KDEntryStore::~KDEntryStore() = default;

KDPathRecord& KDEntryStore::path(std::string_view text) {
  return storage_->path(text, storage_->hashOf(text));
}

KDPathRecord* KDEntryStore::findPath(std::string_view text) const {
  const std::uint32_t number = storage_->find(text, storage_->hashOf(text)).number;
  return number == 0 ? nullptr : &storage_->record(number - 1);
}

void KDEntryStore::expectPaths(std::size_t count) {
  unsigned bits = storage_->slotBits;
  while (count * 5 > (std::size_t{4} << bits)) ++bits;
  if (bits > storage_->slotBits) storage_->growTable(bits);
}

KDEntryStore::PathHint KDEntryStore::expectPath(std::string_view text) const {
  const std::uint32_t hash = storage_->hashOf(text);
  __builtin_prefetch(storage_->slots() + storage_->home(hash), 1);
  return {hash};
}

std::size_t KDEntryStore::pathCount() const { return storage_->pathCount; }

void KDEntryStore::forEachPath(const std::function<void(KDPathRecord&)>& visit) const {
  for (std::size_t number = 0; number < storage_->pathCount; ++number) {
    visit(storage_->record(number));
  }
}

KDLogFileEntry* KDEntryStore::add(const KDEntryFields& fields) {
  return add(fields, {storage_->hashOf(fields.path)});
}

KDLogFileEntry* KDEntryStore::add(const KDEntryFields& fields, PathHint hint) {
  require(fields.logTime > fields.plogTime, "aLogTime > aPLogTime");
  KDPathRecord& path = storage_->path(fields.path, hint.hash);
  auto* const entry = new (storage_->entries.take(sizeof(KDLogFileEntry))) KDLogFileEntry;
  entry->logTime_ = fields.logTime;
  entry->plogTime_ = fields.plogTime;
  entry->modTime_ = fields.modTime;
  entry->path_ = &path;
  entry->userId_ = &Storage::interned(fields.userId, storage_->lastUser);
  if (!fields.puserId.empty() && fields.puserId != fields.userId) {
    entry->puserId_ = &Storage::interned(fields.puserId, storage_->lastParentUser);
  }
  return entry;
}

KDEntryStore::Made KDEntryStore::make(Clock& clock, Log& log, double notBefore,
                                      KDEntryFields fieldsWithoutLogTime) {
  const double parentTime = fieldsWithoutLogTime.plogTime;
  const double now = wholeSeconds(clock.now());
  double logTime = std::max(now, notBefore);
  Made made;
  if (parentTime >= logTime) {
    const double wait = parentTime - now + 1;
    if (parentTime - now > LongestFutureWait) {
      made.clockIsOff = true;
    } else {
      log.warning(
          "Warning! Trying to log event referencing an event in the future. Hanging for {} "
          "seconds, until the future date has passed.",
          timeText(wholeSeconds(wait)));
      clock.sleepUntil(clock.now() + wholeSeconds(wait));
    }
    // A sleep that shutdown cut short, or a clock set back meanwhile, must not cost the entry.
    logTime = std::max(wholeSeconds(clock.now()), wholeSeconds(parentTime) + 1);
    if (made.clockIsOff) logTime = wholeSeconds(parentTime) + 1;
  }
  if (fieldsWithoutLogTime.isDirectory) {
    fieldsWithoutLogTime.modTime = logTime;
  } else if (fieldsWithoutLogTime.modTime == logTime) {
    ++logTime;  // no directory
  }
  require(logTime < TimesEnd, "aLogTime < 2^40");
  fieldsWithoutLogTime.logTime = logTime;
  made.entry = add(fieldsWithoutLogTime);
  return made;
}

KDEntryStore::Made KDEntryStore::branchSelectionEntryForUser(Clock& clock, Log& log,
                                                             double notBefore,
                                                             KDLogFileEntry& entry,
                                                             std::string_view user) {
  require(entry.type() != KDLogFileEntry::KDDeletionType, "[self type] != KDDeletionType");
  require(entry.type() != KDLogFileEntry::KDBranchSelectionType,
          "[self type] != KDBranchSelectionType");
  const Made made = make(clock, log, notBefore,
                         {0, entry.logTime(), entry.path(), entry.modTime(), user, entry.userId()});
  made.entry->setParentEntry(&entry);
  return made;
}

KDEntryStore::Made KDEntryStore::branchDeletionEntryForUser(Clock& clock, Log& log,
                                                            double notBefore, KDLogFileEntry& entry,
                                                            std::string_view user) {
  require(entry.type() != KDLogFileEntry::KDDeletionType, "[self type] != KDDeletionType");
  const Made made =
      make(clock, log, notBefore, {0, entry.logTime(), entry.path(), 0, user, entry.userId()});
  made.entry->setParentEntry(&entry);
  return made;
}

}  // namespace zolvar
