#include "platform/linux/eds/eds_connection.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <thread>

namespace varnok {
namespace {

// To start the service's two programs from a cold disk.
constexpr std::chrono::seconds kStart{15};

constexpr const char* kRegistryName = "org.gnome.evolution.dataserver.Sources";
constexpr const char* kFactoryName = "org.gnome.evolution.dataserver.AddressBook";

// What is kept. Never freed: a call that was given up may still look at it.
struct Kept {
  std::mutex mutex;
  std::shared_ptr<ESourceRegistry> registry;
  std::map<std::string, std::shared_ptr<EdsConnection>> books;  // By uid.

  // A service that stands still is not waited for again by whoever asks next.
  Status silence;
  std::chrono::steady_clock::time_point silentUntil;
};

Kept& kept() {
  static auto* const all = new Kept;
  return *all;
}

// The names on the bus. The bus is not to end this program with itself.
Status namesOnBus(std::vector<std::string>& names) {
  const auto found = std::make_shared<std::vector<std::string>>();
  Status status = callWithin(kSmallCall, [found](GCancellable* cancellable, GError** error) {
    const auto bus = owned(g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, error));
    if (bus == nullptr) return;
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    GVariant* answer =
        g_dbus_connection_call_sync(bus.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "ListNames",
                                    nullptr, G_VARIANT_TYPE("(as)"), G_DBUS_CALL_FLAGS_NONE, -1, cancellable, error);
    if (answer == nullptr) return;
    GVariantIter* iterator = nullptr;
    const char* name = nullptr;
    g_variant_get(answer, "(as)", &iterator);
    while (g_variant_iter_next(iterator, "&s", &name))
      found->emplace_back(name);
    g_variant_iter_free(iterator);
    g_variant_unref(answer);
  });
  if (status.ok()) names = *found;
  return status;
}

std::chrono::milliseconds limitFor(const std::vector<std::string>& names, std::string_view service) {
  const bool runs = std::ranges::any_of(names, [&](const std::string& name) { return name.starts_with(service); });
  return runs ? kSmallCall : kStart;
}

// The library has one registry for the process. While a try that was given up
// still holds it, later ones get that try's failure.
Status awaitRegistry(const std::vector<std::string>& names, std::shared_ptr<ESourceRegistry>& registry) {
  if (registry = kept().registry; registry != nullptr) return {};
  constexpr int kTries = 10;
  constexpr std::chrono::milliseconds kPause{50};
  Status status;
  for (int attempt = 0; attempt < kTries; ++attempt) {
    const auto made = std::make_shared<std::shared_ptr<ESourceRegistry>>();
    const auto isStale = std::make_shared<bool>(false);
    status = callWithin(limitFor(names, kRegistryName), [made, isStale](GCancellable* cancellable, GError** error) {
      *made = owned(e_source_registry_new_sync(cancellable, error));
      *isStale = g_error_matches(*error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE &&
                 g_cancellable_is_cancelled(cancellable) == FALSE;
    });
    if (status.ok()) registry = kept().registry = *made;
    if (status.ok() || !*isStale) break;
    std::this_thread::sleep_for(kPause);
  }
  return status;
}

std::vector<std::shared_ptr<ESource>> sourcesOf(ESourceRegistry* registry) {
  std::vector<std::shared_ptr<ESource>> sources;
  GList* list = e_source_registry_list_enabled(registry, E_SOURCE_EXTENSION_ADDRESS_BOOK);
  for (GList* item = list; item != nullptr; item = item->next)
    sources.push_back(owned(static_cast<ESource*>(item->data)));
  g_list_free(list);
  return sources;
}

std::string uidOfSystem(ESourceRegistry* registry) {
  const auto source = owned(e_source_registry_ref_default_address_book(registry));
  return source == nullptr ? "" : e_source_get_uid(source.get());
}

EdsSource described(ESource* source, const std::string& systemUID) {
  const char* name = e_source_get_display_name(source);
  std::string uid = e_source_get_uid(source);
  const bool isSystem = uid == systemUID;
  return {std::move(uid), name == nullptr ? "" : name, isSystem, /*isWritable=*/false};
}

std::shared_ptr<ESource> findSource(ESourceRegistry* registry, const std::string& uid, Status& status) {
  const std::string wanted = uid.empty() ? uidOfSystem(registry) : uid;
  const auto sources = sourcesOf(registry);
  std::vector<std::shared_ptr<ESource>> named;
  for (const auto& source : sources) {
    const EdsSource known = described(source.get(), {});
    if (known.uid == wanted) return source;
    if (known.name == wanted) named.push_back(source);
  }
  if (named.size() == 1) return named.front();
  status = {Status::Code::notFound,
            named.empty() ? "there is no address book \"" + wanted + "\" on this desktop"
                          : "more than one address book is called \"" + wanted + "\": give its identifier"};
  return nullptr;
}

Status connectTo(const std::shared_ptr<ESource>& source, std::chrono::milliseconds limit, EdsConnection& connection) {
  const auto client = std::make_shared<std::shared_ptr<EBookClient>>();
  Status status = callWithin(limit, [source, client](GCancellable* cancellable, GError** error) {
    // Not to wait for a remote book to be in reach takes the largest number.
    EClient* connected = e_book_client_connect_sync(source.get(), static_cast<guint32>(-1), cancellable, error);
    *client = owned(connected == nullptr ? nullptr : E_BOOK_CLIENT(connected));
  });
  if (!status.ok()) return status;
  connection.client = *client;
  connection.source.isWritable = e_client_is_readonly(E_CLIENT(client->get())) == FALSE;
  return {};
}

Status named(const Status& status, const std::string& what) {
  return {status.code(), what + ": " + status.message()};
}

}  // namespace

namespace {

std::shared_ptr<EdsConnection> connectNow(const std::string& uid, Status& status) {
  std::vector<std::string> names;
  std::shared_ptr<ESourceRegistry> registry;
  status = namesOnBus(names);
  if (status.ok()) status = awaitRegistry(names, registry);
  if (!status.ok()) {
    status = named(status, "the desktop's address books cannot be reached");
    return nullptr;
  }
  const auto source = findSource(registry.get(), uid, status);
  if (source == nullptr) return nullptr;
  auto& book = kept().books[e_source_get_uid(source.get())];
  if (book != nullptr) return book;
  auto connection = std::make_shared<EdsConnection>();
  connection->source = described(source.get(), uidOfSystem(registry.get()));
  status = connectTo(source, limitFor(names, kFactoryName), *connection);
  if (!status.ok()) {
    status = named(status, "the address book \"" + connection->source.name + "\" cannot be opened");
    return nullptr;
  }
  book = connection;
  return connection;
}

}  // namespace

std::shared_ptr<EdsConnection> connectEds(const std::string& uid, Status& status) {
  constexpr std::chrono::seconds kSilence{2};
  const std::scoped_lock lock(kept().mutex);
  const auto start = std::chrono::steady_clock::now();
  if (start < kept().silentUntil) {
    status = kept().silence;
    return nullptr;
  }
  auto connection = connectNow(uid, status);
  const auto end = std::chrono::steady_clock::now();
  if (connection == nullptr && end - start >= kSmallCall) {
    kept().silence = status;
    kept().silentUntil = end + kSilence;
  }
  return connection;
}

void dropEds(const std::shared_ptr<EdsConnection>& connection) {
  const std::scoped_lock lock(kept().mutex);
  std::erase_if(kept().books, [&](const auto& book) { return book.second == connection; });
  kept().registry.reset();
}

std::vector<EdsSource> listEds(Status& status) {
  std::vector<EdsSource> described;
  std::vector<std::string> names;
  std::shared_ptr<ESourceRegistry> registry;
  {
    const std::scoped_lock lock(kept().mutex);
    status = namesOnBus(names);
    if (status.ok()) status = awaitRegistry(names, registry);
  }
  if (!status.ok()) {
    status = named(status, "the desktop's address books cannot be reached");
    return described;
  }
  const std::string system = uidOfSystem(registry.get());
  for (const auto& source : sourcesOf(registry.get()))
    described.push_back(varnok::described(source.get(), system));
  std::stable_partition(described.begin(), described.end(), [](const EdsSource& source) { return source.isSystem; });
  // Only a book that is open says whether it can be written; one that cannot be
  // opened cannot.
  const auto end = std::chrono::steady_clock::now() + kStart;
  for (EdsSource& source : described) {
    if (std::chrono::steady_clock::now() >= end) break;
    Status opened;
    if (const auto connection = connectEds(source.uid, opened)) source.isWritable = connection->source.isWritable;
  }
  return described;
}

}  // namespace varnok
