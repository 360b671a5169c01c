#include <algorithm>
#include <span>

#include "platform/linux/eds/eds_connection.h"
#include "platform/linux/eds/eds_module.h"

namespace varnok {
namespace {

using Strings = std::vector<std::string>;

// What goes into one call: the bus takes no message above 128 MiB.
constexpr std::size_t kLargestCall = std::size_t{16} << 20U;
constexpr std::size_t kMostContacts = 5000;

// Names in one question; with more of them the whole book is cheaper.
constexpr std::size_t kNamesAtOnce = 200;
constexpr std::size_t kMostNames = 2000;

// A book of any size that fits into one message.
constexpr std::chrono::seconds kWholeBook{60};

// A few contacts are a small call; a book in the network takes a request each.
std::chrono::milliseconds limitFor(std::size_t contacts) {
  constexpr std::size_t kFew = 10;
  if (contacts <= kFew) return kSmallCall;
  return std::chrono::seconds(30) + std::chrono::milliseconds(50) * contacts;
}

// `text` as a string of a query.
std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

class Contacts {
 public:
  Contacts() = default;
  explicit Contacts(std::span<const std::string> cards) {
    for (const std::string& card : cards)
      list_ = g_slist_prepend(list_, e_contact_new_from_vcard(card.c_str()));
    list_ = g_slist_reverse(list_);
  }
  Contacts(const Contacts&) = delete;
  Contacts& operator=(const Contacts&) = delete;
  ~Contacts() { g_slist_free_full(list_, g_object_unref); }

  GSList* get() const { return list_; }
  GSList** out() { return &list_; }

  // A card that nobody has looked into is given as the text that it came as.
  void appendTo(Strings& cards) const {
    for (GSList* item = list_; item != nullptr; item = item->next) {
      gchar* text = e_vcard_to_string(E_VCARD(item->data), EVC_FORMAT_VCARD_30);
      cards.emplace_back(text);
      g_free(text);
    }
  }

 private:
  GSList* list_ = nullptr;
};

class LibebookBook : public EdsBook {
 public:
  LibebookBook(std::string uid, std::shared_ptr<EdsConnection> connection)
      : uid_(std::move(uid)), connection_(std::move(connection)) {}

  const EdsSource& source() const override { return connection_->source; }

  std::string revision() override {
    gchar* text = nullptr;
    e_client_get_backend_property_sync(E_CLIENT(connection_->client.get()), E_BOOK_BACKEND_PROPERTY_REVISION, &text,
                                       /*cancellable=*/nullptr, /*error=*/nullptr);
    std::string revision = text == nullptr ? "" : text;
    g_free(text);
    return revision;
  }

  Status fetch(Strings& cards) override { return ask("", kWholeBook, cards); }

  Status fetchSome(const Strings& uids, Strings& cards) override {
    if (uids.size() > kMostNames) return fetch(cards);
    for (std::size_t i = 0; i < uids.size(); i += kNamesAtOnce) {
      const auto some = std::span(uids).subspan(i, std::min(kNamesAtOnce, uids.size() - i));
      std::string query = "(or";
      for (const std::string& uid : some)
        query += " (is \"id\" " + quoted(uid) + ")";
      if (Status status = ask(query + ")", limitFor(some.size()), cards); !status.ok()) return status;
    }
    return {};
  }

  Status add(const Strings& cards, Strings& uids) override {
    // The service may have gone since it was last asked; only a question may be
    // asked twice.
    Strings none;
    if (Status status = fetchSome({"varnok-nobody"}, none); !status.ok()) return status;
    return inPieces(cards, [this, &uids](std::span<const std::string> piece) {
      const auto contacts = std::make_shared<Contacts>(piece);
      const auto added = std::make_shared<Strings>();
      Status status = change(piece.size(), [contacts, added](EBookClient* client, GCancellable* c, GError** error) {
        GSList* names = nullptr;
        e_book_client_add_contacts_sync(client, contacts->get(), E_BOOK_OPERATION_FLAG_NONE, &names, c, error);
        for (GSList* item = names; item != nullptr; item = item->next)
          added->emplace_back(static_cast<const char*>(item->data));
        g_slist_free_full(names, g_free);
      });
      if (status.ok()) uids.insert(uids.end(), added->begin(), added->end());
      return status;
    });
  }

  Status modify(const Strings& cards) override {
    return inPieces(cards, [this](std::span<const std::string> piece) {
      const auto contacts = std::make_shared<Contacts>(piece);
      return change(piece.size(), [contacts](EBookClient* client, GCancellable* c, GError** error) {
        e_book_client_modify_contacts_sync(client, contacts->get(), E_BOOK_OPERATION_FLAG_NONE, c, error);
      });
    });
  }

  Status remove(const Strings& uids) override {
    return inPieces(uids, [this](std::span<const std::string> piece) {
      const auto names = std::make_shared<Strings>(piece.begin(), piece.end());
      return change(piece.size(), [names](EBookClient* client, GCancellable* c, GError** error) {
        GSList* list = nullptr;
        for (std::string& name : *names)
          list = g_slist_prepend(list, name.data());
        e_book_client_remove_contacts_sync(client, list, E_BOOK_OPERATION_FLAG_NONE, c, error);
        g_slist_free(list);
      });
    });
  }

 private:
  template <typename Operation>
  static Status inPieces(const Strings& all, Operation operation) {
    const std::span<const std::string> rest(all);
    for (std::size_t begin = 0; begin < rest.size();) {
      std::size_t bytes = 0;
      std::size_t end = begin;
      while (end < rest.size() && end - begin < kMostContacts &&
             (end == begin || bytes + rest[end].size() < kLargestCall))
        bytes += rest[end++].size();
      if (Status status = operation(rest.subspan(begin, end - begin)); !status.ok()) return status;
      begin = end;
    }
    return {};
  }

  template <typename Operation>
  Status change(std::size_t contacts, Operation operation) {
    if (!connection_->source.isWritable) return {Status::Code::accessDenied, "it is read-only"};
    const auto client = connection_->client;
    Status status = callWithin(limitFor(contacts), [client, operation](GCancellable* cancellable, GError** error) {
      operation(client.get(), cancellable, error);
    });
    if (status.code() == Status::Code::unavailable) dropEds(connection_);
    return status;
  }

  Status askOnce(const std::string& query, std::chrono::milliseconds limit, Strings& cards) {
    const auto client = connection_->client;
    const auto found = std::make_shared<Contacts>();
    Status status = callWithin(limit, [client, query, found](GCancellable* cancellable, GError** error) {
      e_book_client_get_contacts_sync(client.get(), query.c_str(), found->out(), cancellable, error);
    });
    if (status.ok()) found->appendTo(cards);
    return status;
  }

  // A connection whose service has ended is made anew, once.
  Status ask(const std::string& query, std::chrono::milliseconds limit, Strings& cards) {
    const auto start = std::chrono::steady_clock::now();
    Status status = askOnce(query, limit, cards);
    if (status.code() != Status::Code::unavailable) return status;
    dropEds(connection_);
    if (std::chrono::steady_clock::now() - start >= limit) return status;
    Status reconnected;
    const auto connection = connectEds(uid_, reconnected);
    if (connection == nullptr) return reconnected;
    connection_ = connection;
    return askOnce(query, limit, cards);
  }

  const std::string uid_;
  std::shared_ptr<EdsConnection> connection_;
};

}  // namespace
}  // namespace varnok

varnok::EdsBook* varnokOpenEdsBook(const char* uid, varnok::Status* status) {
  auto connection = varnok::connectEds(uid, *status);
  return connection == nullptr ? nullptr : new varnok::LibebookBook(uid, std::move(connection));
}

void varnokListEdsBooks(std::vector<varnok::EdsSource>* sources, varnok::Status* status) {
  *sources = varnok::listEds(*status);
}
