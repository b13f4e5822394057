#include "log/KDEntryStore.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "util/InconsistencyError.h"

namespace zolvar {

static_assert(sizeof(KDLogFileEntry) == 80);
static_assert(sizeof(KDPathRecord) == 56);
static_assert(std::is_trivially_destructible_v<KDLogFileEntry>);
static_assert(std::is_trivially_destructible_v<KDPathRecord>);

namespace {

/// Memory in chunks that never move. A chunk's pages cost nothing before they are written, so that
/// a small store stays small.
class ChunkedBytes {
 public:
  explicit ChunkedBytes(std::size_t chunkSize) : chunkSize_(chunkSize) {}

  char* take(std::size_t size) {
    if (size > left_) grow(size);
    char* const taken = next_;
    next_ += size;
    left_ -= size;
    return taken;
  }
  [[nodiscard]] char* chunk(std::size_t index) const { return chunks_[index].get(); }

 private:
  void grow(std::size_t size) {
    const std::size_t chunkSize = std::max(size, chunkSize_);
    chunks_.push_back(std::make_unique_for_overwrite<char[]>(chunkSize));
    next_ = chunks_.back().get();
    left_ = chunkSize;
  }

  std::size_t chunkSize_;
  std::vector<std::unique_ptr<char[]>> chunks_;
  char* next_ = nullptr;
  std::size_t left_ = 0;
};

/// Mixes eight bytes at a time; every bit of the result depends on every bit of the text.
std::uint32_t mixedHash(std::string_view text, std::uint64_t seed) {
  constexpr std::uint64_t Factor = 0x9E3779B97F4A7C15U;
  const auto mix = [](std::uint64_t a, std::uint64_t b) {
    const auto product = static_cast<unsigned __int128>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
  };
  std::uint64_t hash = seed ^ (text.size() * Factor);
  const char* bytes = text.data();
  std::size_t left = text.size();
  for (; left >= 8; left -= 8, bytes += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, 8);
    hash = mix(hash ^ word, Factor);
  }
  std::uint64_t tail = 0;
  std::memcpy(&tail, bytes, left);
  hash = mix(hash ^ tail, Factor ^ seed);
  return static_cast<std::uint32_t>(hash ^ (hash >> 32U));
}

}  // namespace

struct KDEntryStore::Storage {
  static constexpr std::size_t RecordsAChunk = 8192;
  static constexpr std::size_t EntriesAChunk = 8192;
  static constexpr std::size_t TextChunk = 512U << 10U;
  static constexpr std::size_t FirstSlots = 64;

  /// A place of the path table: which path, and its hash, so that probing and growing need not
  /// touch the records.
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = 0;  ///< number of the path + 1; 0 for a free place
  };

  ChunkedBytes entries{EntriesAChunk * sizeof(KDLogFileEntry)};
  ChunkedBytes records{RecordsAChunk * sizeof(KDPathRecord)};
  ChunkedBytes texts{TextChunk};
  std::vector<Slot> slots = std::vector<Slot>(FirstSlots);  ///< a power of two, at most 4/5 full
  std::size_t pathCount = 0;
  /// Differs from run to run, so that no log can be written to make all paths collide.
  std::uint64_t seed = reinterpret_cast<std::uintptr_t>(this) * 0xD6E8FEB86659FD93U;
  const std::string* lastUser = &internedUserId({});
  const std::string* lastParentUser = lastUser;

  [[nodiscard]] KDPathRecord& record(std::size_t number) const {
    char* const chunk = records.chunk(number / RecordsAChunk);
    return *std::launder(reinterpret_cast<KDPathRecord*>(
        chunk + (number % RecordsAChunk) * sizeof(KDPathRecord)));
  }

  /// Index of the slot that holds the path, or of the free one where it belongs.
  [[nodiscard]] std::size_t find(std::string_view text, std::uint32_t hash) const {
    const std::size_t mask = slots.size() - 1;
    std::size_t index = hash & mask;
    while (slots[index].number != 0) {
      if (slots[index].hash == hash && record(slots[index].number - 1).text == text) break;
      index = (index + 1) & mask;
    }
    return index;
  }

  void growTable() {
    std::vector<Slot> old(slots.size() * 2);
    old.swap(slots);
    const std::size_t mask = slots.size() - 1;
    for (const Slot& slot : old) {
      if (slot.number == 0) continue;
      std::size_t index = slot.hash & mask;
      while (slots[index].number != 0) index = (index + 1) & mask;
      slots[index] = slot;
    }
  }

  KDPathRecord& path(std::string_view text) {
    const std::uint32_t hash = mixedHash(text, seed);
    std::size_t index = find(text, hash);
    if (slots[index].number != 0) return record(slots[index].number - 1);

    require(pathCount < std::numeric_limits<std::uint32_t>::max(), "path count < 2^32 - 1");
    if ((pathCount + 1) * 5 > slots.size() * 4) {
      growTable();
      index = find(text, hash);
    }
    char* const bytes = texts.take(text.size());
    std::memcpy(bytes, text.data(), text.size());
    auto* const added = new (records.take(sizeof(KDPathRecord))) KDPathRecord;
    added->text = {bytes, text.size()};
    added->hash = hash;
    slots[index] = {hash, static_cast<std::uint32_t>(++pathCount)};
    return *added;
  }

  /// Logs come user by user: the lock around all ids is taken once a user, not once an entry.
  static const std::string& interned(std::string_view userId, const std::string*& last) {
    if (*last != userId) last = &internedUserId(userId);
    return *last;
  }
};

KDEntryStore::KDEntryStore() : storage_(std::make_unique<Storage>()) {}
KDEntryStore::~KDEntryStore() = default;

KDPathRecord& KDEntryStore::path(std::string_view text) { return storage_->path(text); }

KDPathRecord* KDEntryStore::findPath(std::string_view text) const {
  const std::size_t index = storage_->find(text, mixedHash(text, storage_->seed));
  const std::uint32_t number = storage_->slots[index].number;
  return number == 0 ? nullptr : &storage_->record(number - 1);
}

std::size_t KDEntryStore::pathCount() const { return storage_->pathCount; }

void KDEntryStore::forEachPath(const std::function<void(KDPathRecord&)>& visit) const {
  for (std::size_t number = 0; number < storage_->pathCount; ++number) {
    visit(storage_->record(number));
  }
}

KDLogFileEntry* KDEntryStore::add(const KDEntryFields& fields) {
  require(fields.logTime > fields.plogTime, "aLogTime > aPLogTime");
  KDPathRecord& path = storage_->path(fields.path);
  auto* const entry =
      new (storage_->entries.take(sizeof(KDLogFileEntry))) KDLogFileEntry;
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
                                                            double notBefore,
                                                            KDLogFileEntry& entry,
                                                            std::string_view user) {
  require(entry.type() != KDLogFileEntry::KDDeletionType, "[self type] != KDDeletionType");
  const Made made =
      make(clock, log, notBefore, {0, entry.logTime(), entry.path(), 0, user, entry.userId()});
  made.entry->setParentEntry(&entry);
  return made;
}

}  // namespace zolvar
