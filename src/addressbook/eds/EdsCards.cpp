#include "addressbook/eds/EdsCards.h"

#include <fmt/format.h>
#include <libebook/libebook.h>

#include <chrono>
#include <deque>
#include <future>
#include <optional>

#include "addressbook/PlainCard.h"
#include "addressbook/eds/GlibThread.h"
#include "platform/Log.h"

namespace zolvar {
namespace {

constexpr unsigned BetweenTries = 30;  // seconds
constexpr std::chrono::seconds LongestEnd{3};
constexpr guint32 DoNotWait = static_cast<guint32>(-1);
constexpr const char* Everything = "(contains \"x-evolution-any-field\" \"\")";
constexpr const char* SettingsSchema = "org.gnome.evolution-data-server.addressbook";
constexpr const char* OwnContactKey = "self-contact-uid";

struct FreeError {
  void operator()(GError* error) const { g_error_free(error); }
};
using Error = std::unique_ptr<GError, FreeError>;

/// Calls a function that tells of an error through its last argument.
template <class Call>
auto calling(Error& error, Call call) {
  GError* raw = nullptr;
  auto result = call(&raw);
  error.reset(raw);
  return result;
}

Failure failureOf(const Error& error, const char* attempt, const std::string& subject) {
  const bool isRefused =
      error && (g_error_matches(error.get(), E_CLIENT_ERROR, E_CLIENT_ERROR_PERMISSION_DENIED) ||
                g_error_matches(error.get(), E_CLIENT_ERROR, E_CLIENT_ERROR_NOT_SUPPORTED) ||
                g_error_matches(error.get(), E_CLIENT_ERROR, E_CLIENT_ERROR_INVALID_ARG));
  return {isRefused ? FailureKind::Refused : FailureKind::Transient, attempt, subject,
          error ? error->message : "no reason was given"};
}

bool isNotFound(const Error& error) {
  return error &&
         g_error_matches(error.get(), E_BOOK_CLIENT_ERROR, E_BOOK_CLIENT_ERROR_CONTACT_NOT_FOUND);
}

std::string uidOf(EContact* contact) {
  const auto* uid = static_cast<const char*>(e_contact_get_const(contact, E_CONTACT_UID));
  return uid ? uid : "";
}

/// The card, with the picture in it: the server keeps that in a file of its own.
std::string textOf(EContact* contact) {
  Error ignored;
  calling(ignored, [&](GError** error) { return e_contact_inline_local_photos(contact, error); });
  const Text text(e_vcard_to_string(E_VCARD(contact), EVC_FORMAT_VCARD_30));
  std::string card = text ? text.get() : "";
  if (!card.ends_with('\n')) card += "\r\n";
  return card;
}

/// What Evolution shows the contact for; the name is for programs that can only search.
std::string addressOf(ESource* source, EContact* contact) {
  const auto escaped = [](const char* text) {
    const Text plain(g_uri_escape_string(text ? text : "", nullptr, TRUE));
    return std::string(plain.get());
  };
  const auto* name = static_cast<const char*>(e_contact_get_const(contact, E_CONTACT_FULL_NAME));
  return fmt::format("contacts:?source-uid={}&contact-uid={}&name={}",
                     escaped(e_source_get_uid(source)), escaped(uidOf(contact).c_str()),
                     escaped(name));
}

std::string ownContact() {
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  GSettingsSchema* schema =
      source ? g_settings_schema_source_lookup(source, SettingsSchema, TRUE) : nullptr;
  if (!schema) return {};
  g_settings_schema_unref(schema);
  const Object<GSettings> settings(g_settings_new(SettingsSchema));
  const Text uid(g_settings_get_string(settings.get(), OwnContactKey));
  return uid && *uid ? recordId(uid.get()) : std::string();
}

}  // namespace

/// What the main thread has.
struct EdsCards::Front {
  Events events;
  std::string identity = "eds";
  std::string ownCard;
  bool isAlive = true;
};

/// What the thread has; everything but the constructor, the destructor, start and write is its own.
class EdsCards::Session {
 public:
  Session(RunLoop& runLoop, Log& log, std::shared_ptr<Front> front)
      : runLoop_(runLoop), log_(log), front_(std::move(front)), cancellable_(g_cancellable_new()) {}
  /// What was asked for last is still written, if the server is quick about it.
  ~Session() {
    const auto isWritten = std::make_shared<std::promise<void>>();
    thread_.post([this, isWritten] {
      writeQueued();
      isWritten->set_value();
    });
    isWritten->get_future().wait_for(LongestEnd);
    g_cancellable_cancel(cancellable_.get());
    thread_.post([this] {
      disconnect();
      registry_.reset();
    });
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void start() {
    thread_.post([this] { connect(); });
  }
  void write(std::vector<CardWrite> writes) {
    thread_.post([this, writes = std::move(writes)]() mutable {
      std::move(writes.begin(), writes.end(), std::back_inserter(writes_));
      writeQueued();
    });
  }

 private:
  void tell(std::function<void(Front&)> what) {
    runLoop_.post([front = front_, what = std::move(what)] {
      if (front->isAlive) what(*front);
    });
  }
  [[nodiscard]] bool isEnding() const { return g_cancellable_is_cancelled(cancellable_.get()); }

  void connect() {
    if (isEnding() || client_) return;
    Error error;
    GCancellable* cancellable = cancellable_.get();
    if (!registry_) {
      registry_.reset(
          calling(error, [&](GError** e) { return e_source_registry_new_sync(cancellable, e); }));
    }
    if (!registry_) return fail(error);
    source_.reset(e_source_registry_ref_default_address_book(registry_.get()));
    if (!source_) return fail(error);
    EClient* const client = calling(error, [&](GError** e) {
      return e_book_client_connect_sync(source_.get(), DoNotWait, cancellable, e);
    });
    if (!client) return fail(error);
    client_.reset(E_BOOK_CLIENT(client));
    EBookClientView* view = nullptr;
    if (!calling(error, [&](GError** e) {
          return e_book_client_get_view_sync(client_.get(), Everything, &view, cancellable, e);
        })) {
      return fail(error);
    }
    view_.reset(view);
    initial_.emplace();
    g_signal_connect(view, "objects-added", G_CALLBACK(onObjects), this);
    g_signal_connect(view, "objects-modified", G_CALLBACK(onObjects), this);
    g_signal_connect(view, "objects-removed", G_CALLBACK(onRemoved), this);
    g_signal_connect(view, "complete", G_CALLBACK(onComplete), this);
    g_signal_connect(client, "backend-died", G_CALLBACK(onDied), this);
    calling(error, [&](GError** e) {
      e_book_client_view_start(view, e);
      return 0;
    });
    if (error) fail(error);
  }

  void disconnect() {
    if (view_) g_signal_handlers_disconnect_by_data(view_.get(), this);
    if (client_) g_signal_handlers_disconnect_by_data(client_.get(), this);
    view_.reset();
    client_.reset();
    source_.reset();
    initial_.reset();
  }

  void fail(const Error& error) {
    disconnect();
    if (isEnding()) return;
    tell([failure = failureOf(error, "reach the address book of the desktop", "")](Front& front) {
      front.events.lost(failure);
    });
    thread_.after(BetweenTries, [this] { connect(); });
  }

  // The server's signals

  static void onObjects(EBookClientView*, const GSList* contacts, gpointer self) {
    static_cast<Session*>(self)->take(contacts);
  }
  static void onRemoved(EBookClientView*, const GSList* uids, gpointer self) {
    auto& session = *static_cast<Session*>(self);
    std::vector<std::string> removed;
    for (; uids; uids = uids->next) {
      removed.push_back(session.idOf(static_cast<const char*>(uids->data)));
    }
    if (session.initial_) {
      for (const auto& id : removed) session.initial_->erase(id);
      return;
    }
    session.tell([removed](Front& front) { front.events.changed({}, removed); });
  }
  static void onComplete(EBookClientView*, const GError* error, gpointer self) {
    auto& session = *static_cast<Session*>(self);
    if (error) return session.failLater(error->message);
    if (!session.initial_) return;
    const std::string identity = fmt::format("eds {}", e_source_get_uid(session.source_.get()));
    session.tell([identity, own = ownContact(), cards = *session.initial_](Front& front) {
      front.identity = identity;
      front.ownCard = own;
      front.events.read(cards);
    });
    session.initial_.reset();
    session.writeQueued();
  }
  static void onDied(EBookClient*, gpointer self) {
    static_cast<Session*>(self)->failLater("the address book's server has ended");
  }
  /// Not while the one that fails is telling of it.
  void failLater(const char* reason) {
    thread_.post([this, reason = std::string(reason)] {
      if (!client_) return;
      fail(Error(g_error_new_literal(E_CLIENT_ERROR, E_CLIENT_ERROR_DBUS_ERROR, reason.c_str())));
    });
  }

  void take(const GSList* contacts) {
    KeptCards cards;
    for (; contacts; contacts = contacts->next) {
      auto* contact = static_cast<EContact*>(contacts->data);
      const std::string uid = uidOf(contact);
      if (uid.empty()) continue;
      if (initial_) {
        (*initial_)[idOf(uid)] = cardOf(contact);
      } else if (auto card = cardNow(uid)) {
        cards[idOf(uid)] = std::move(*card);
      }
    }
    if (!cards.empty()) tell([cards](Front& front) { front.events.changed(cards, {}); });
  }

  /// As the server has it at this moment: a signal can be older than what was written since.
  std::optional<KeptCard> cardNow(const std::string& uid) {
    Error error;
    EContact* contact = nullptr;
    if (!calling(error, [&](GError** e) {
          return e_book_client_get_contact_sync(client_.get(), uid.c_str(), &contact,
                                                cancellable_.get(), e);
        })) {
      return std::nullopt;
    }
    return cardOf(Object<EContact>(contact).get());
  }
  [[nodiscard]] KeptCard cardOf(EContact* contact) const {
    return {textOf(contact), true, addressOf(source_.get(), contact)};
  }

  // Ids: the server's are any text, and some servers give their own.

  std::string idOf(const std::string& uid) {
    const auto given = ids_.find(uid);
    if (given != ids_.end()) return given->second;
    std::string id = recordId(uid);
    ids_[uid] = id;
    uids_[id] = uid;
    return id;
  }
  [[nodiscard]] std::string uidOfId(const std::string& id) const {
    const auto found = uids_.find(id);
    return found == uids_.end() ? id : found->second;
  }

  // Writing

  /// In their order: one that may work later keeps those behind it waiting.
  void writeQueued() {
    if (!client_ || initial_) return;
    while (!writes_.empty()) {
      const CardWrite& next = writes_.front();
      const auto failure = write(next);
      if (isEnding()) return;
      if (failure) {
        log_.warning("{}", failure->message());
        if (failure->kind == FailureKind::Transient) {
          thread_.after(BetweenTries, [this] { writeQueued(); });
          return;
        }
      }
      KeptCards written;
      if (next.kind != CardWrite::Kind::Remove) {
        if (auto card = cardNow(uidOfId(next.id))) written[next.id] = std::move(*card);
      }
      tell([written](Front& front) {
        front.events.written(1);
        if (!written.empty()) front.events.changed(written, {});
      });
      writes_.pop_front();
    }
  }

  std::optional<Failure> write(const CardWrite& next) {
    Error error;
    const std::string uid = uidOfId(next.id);
    GCancellable* cancellable = cancellable_.get();
    if (next.kind == CardWrite::Kind::Remove) {
      calling(error, [&](GError** e) {
        return e_book_client_remove_contact_by_uid_sync(client_.get(), uid.c_str(),
                                                        E_BOOK_OPERATION_FLAG_NONE, cancellable, e);
      });
      if (!error || isNotFound(error)) return std::nullopt;
      return failureOf(error, "remove the contact", next.id);
    }
    if (next.kind == CardWrite::Kind::Add) {
      const Object<EContact> contact(e_contact_new_from_vcard(plainCard(next.text).c_str()));
      char* given = nullptr;
      calling(error, [&](GError** e) {
        return e_book_client_add_contact_sync(client_.get(), contact.get(),
                                              E_BOOK_OPERATION_FLAG_NONE, &given, cancellable, e);
      });
      const Text givenUid(given);
      if (givenUid) {
        ids_[givenUid.get()] = next.id;
        uids_[next.id] = givenUid.get();
      }
      if (!error || g_error_matches(error.get(), E_BOOK_CLIENT_ERROR,
                                    E_BOOK_CLIENT_ERROR_CONTACT_ID_ALREADY_EXISTS)) {
        return std::nullopt;
      }
      return failureOf(error, "add the contact", next.id);
    }
    EContact* known = nullptr;
    if (!calling(error, [&](GError** e) {
          return e_book_client_get_contact_sync(client_.get(), uid.c_str(), &known, cancellable, e);
        })) {
      if (isNotFound(error)) return std::nullopt;
      return failureOf(error, "read the contact", next.id);
    }
    const std::string before = textOf(Object<EContact>(known).get());
    const std::string after = next.edit(before);
    if (after == before) return std::nullopt;
    const Object<EContact> contact(e_contact_new_from_vcard(after.c_str()));
    calling(error, [&](GError** e) {
      return e_book_client_modify_contact_sync(client_.get(), contact.get(),
                                               E_BOOK_OPERATION_FLAG_NONE, cancellable, e);
    });
    if (!error || isNotFound(error)) return std::nullopt;
    return failureOf(error, "change the contact", next.id);
  }

  RunLoop& runLoop_;
  Log& log_;
  const std::shared_ptr<Front> front_;
  const Object<GCancellable> cancellable_;
  Object<ESourceRegistry> registry_;
  Object<ESource> source_;
  Object<EBookClient> client_;
  Object<EBookClientView> view_;
  std::optional<KeptCards> initial_;         ///< gathered until all have come
  std::map<std::string, std::string> ids_;   ///< UID → record id
  std::map<std::string, std::string> uids_;  ///< the opposite
  std::deque<CardWrite> writes_;
  GlibThread thread_;  ///< ends first
};

EdsCards::EdsCards(RunLoop& runLoop, Log& log)
    : front_(std::make_shared<Front>()),
      session_(std::make_unique<Session>(runLoop, log, front_)) {}

EdsCards::~EdsCards() { front_->isAlive = false; }

void EdsCards::start(Events events) {
  front_->events = std::move(events);
  session_->start();
}

void EdsCards::write(std::vector<CardWrite> writes) { session_->write(std::move(writes)); }

std::string EdsCards::identity() const { return front_->identity; }

std::string EdsCards::ownCard(const std::string&) const { return front_->ownCard; }

}  // namespace zolvar

extern "C" {
[[gnu::visibility("default")]] extern const char* const zolvarCardModuleVersion = ZOLVAR_VERSION;

[[gnu::visibility("default")]] zolvar::CardSource* zolvarMakeCardSource(zolvar::RunLoop& runLoop,
                                                                        zolvar::Log& log) {
  return new zolvar::EdsCards(runLoop, log);
}
}
