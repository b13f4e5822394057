#include "platform/qt/SecretServiceStore.h"

#include <libsecret/secret.h>

#include <memory>

namespace zolvar {

namespace {

const SecretSchema Schema = {
    "org.zolvar.Password",
    SECRET_SCHEMA_NONE,
    {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
     {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
     {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
    0,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

constexpr int StartLimit = 10000;  // milliseconds for the service to start

struct GlibDeleter {
  void operator()(GError* error) const { g_error_free(error); }
  void operator()(GHashTable* table) const { g_hash_table_unref(table); }
  void operator()(GVariant* value) const { g_variant_unref(value); }
  void operator()(GDBusConnection* bus) const { g_object_unref(bus); }
  void operator()(SecretValue* value) const { secret_value_unref(value); }
};
template <class T>
using Owned = std::unique_ptr<T, GlibDeleter>;

Owned<GHashTable> attributes(const std::string& service, const std::string& account) {
  Owned<GHashTable> table(g_hash_table_new_full(g_str_hash, g_str_equal, nullptr, g_free));
  const auto add = [&table](const char* name, const std::string& value) {
    // Glib keeps the key's pointer; the names are constants.
    g_hash_table_insert(table.get(), const_cast<char*>(name), g_strdup(value.c_str()));
  };
  add("service", service);
  add("account", account);
  return table;
}

tl::unexpected<Failure> failed(const char* attempt, const std::string& account,
                               const Owned<GError>& error) {
  if (!error) return fail(FailureKind::Refused, attempt, account, "the keyring is locked");
  const bool isRefused = g_error_matches(error.get(), SECRET_ERROR, SECRET_ERROR_IS_LOCKED) ||
                         g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) ||
                         g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED);
  return fail(isRefused ? FailureKind::Refused : FailureKind::Transient, attempt, account,
              error->message);
}

/// The password in the service, after the user was asked to unlock its collection if need be.
Result<std::optional<std::string>> findInService(const std::string& service,
                                                 const std::string& account) {
  constexpr auto Attempt = "read the password of";
  GError* problem = nullptr;
  GList* const items = secret_password_searchv_sync(
      &Schema, attributes(service, account).get(),
      static_cast<SecretSearchFlags>(SECRET_SEARCH_UNLOCK | SECRET_SEARCH_LOAD_SECRETS), nullptr,
      &problem);
  const Owned<GError> error(problem);
  if (error) return failed(Attempt, account, error);
  if (items == nullptr) return std::nullopt;
  // Attributes are unique where only we write; the first is also what a store would replace.
  auto* const item = SECRET_RETRIEVABLE(items->data);
  const bool isLocked = SECRET_IS_ITEM(item) && secret_item_get_locked(SECRET_ITEM(item));
  const Owned<SecretValue> value(
      isLocked ? nullptr : secret_retrievable_retrieve_secret_sync(item, nullptr, &problem));
  const Owned<GError> retrieveError(problem);
  Result<std::optional<std::string>> result = std::nullopt;
  if (value) {
    gsize size = 0;
    const char* const bytes = secret_value_get(value.get(), &size);
    result = std::string(bytes, size);
  } else {
    result = failed(Attempt, account, retrieveError);
  }
  g_list_free_full(items, g_object_unref);
  return result;
}

Result<> setInService(const std::string& service, const std::string& account,
                      const std::string& password) {
  GError* problem = nullptr;
  const std::string label = service + " (" + account + ")";
  const gboolean stored = secret_password_storev_sync(&Schema, attributes(service, account).get(),
                                                      SECRET_COLLECTION_DEFAULT, label.c_str(),
                                                      password.c_str(), nullptr, &problem);
  const Owned<GError> error(problem);
  if (!stored) return failed("store the password of", account, error);
  return {};
}

}  // namespace

SecretServiceStore::SecretServiceStore(const std::string& supportFolder, Log& log)
    : log_(log), file_(supportFolder + "/secrets", log) {}

Result<std::optional<std::string>> SecretServiceStore::find(const std::string& service,
                                                            const std::string& account) {
  auto kept = file_.find(service, account);
  if (!kept) return kept;
  const auto isThere = isServiceThere();
  if (kept->has_value()) {
    // Moving it to the service is a courtesy that may fail, for example at a locked keyring.
    if (isThere && *isThere && setInService(service, account, **kept)) {
      if (const auto removed = file_.remove(service, account); !removed) {
        log_.warning("{}", removed.error().message());
      }
    }
    return kept;
  }
  if (!isThere) return tl::unexpected(isThere.error());
  if (!*isThere) return std::nullopt;
  return findInService(service, account);
}

Result<> SecretServiceStore::set(const std::string& service, const std::string& account,
                                 const std::string& password) {
  const auto isThere = isServiceThere();
  if (!isThere) return tl::unexpected(isThere.error());
  if (!*isThere) return file_.set(service, account, password);
  if (const auto stored = setInService(service, account, password); !stored) return stored;
  return file_.remove(service, account);
}

Result<> SecretServiceStore::remove(const std::string& service, const std::string& account) {
  const auto isThere = isServiceThere();
  if (!isThere) return tl::unexpected(isThere.error());
  if (*isThere) {
    GError* problem = nullptr;
    secret_password_clearv_sync(&Schema, attributes(service, account).get(), nullptr, &problem);
    const Owned<GError> error(problem);
    if (error) return failed("delete the password of", account, error);
    // Clearing skips what is locked and says nothing about it.
    const auto left = findInService(service, account);
    if (!left) return tl::unexpected(left.error());
    if (left->has_value()) return failed("delete the password of", account, {});
  }
  return file_.remove(service, account);
}

Result<bool> SecretServiceStore::isServiceThere() {
  GError* problem = nullptr;
  std::string reason;
  const Owned<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &problem));
  if (bus) {
    const Owned<GVariant> reply(g_dbus_connection_call_sync(
        bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "StartServiceByName", g_variant_new("(su)", "org.freedesktop.secrets", 0u), nullptr,
        G_DBUS_CALL_FLAGS_NONE, StartLimit, nullptr, &problem));
    if (reply) return true;
  }
  const Owned<GError> error(problem);
  if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT) ||
      g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_TIMEOUT) ||
      g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY)) {
    return fail(FailureKind::Transient, "reach the keyring", {}, error->message);
  }
  if (!saidFile_.exchange(true)) {
    log_.warning(
        "No keyring answers ({}); passwords are kept in a file of the support folder that only "
        "this user can read.",
        error->message);
  }
  return false;
}

}  // namespace zolvar
