// Takes every contact of the desktop's address book from libebook and looks at
// every value of each: what handing them over costs by itself.
//
//   libebook_peer

#include <libebook/libebook.h>

#include <cstdio>
#include <cstring>

namespace {

std::size_t bytesOf(EContact* contact) {
  std::size_t bytes = 0;
  for (GList* i = e_vcard_get_attributes(E_VCARD(contact)); i != nullptr; i = i->next) {
    for (GList* j = e_vcard_attribute_get_values(static_cast<EVCardAttribute*>(i->data)); j != nullptr; j = j->next)
      bytes += std::strlen(static_cast<const char*>(j->data));
  }
  return bytes;
}

}  // namespace

int main() {
  GError* error = nullptr;
  GSList* contacts = nullptr;
  std::size_t bytes = 0;
  ESourceRegistry* registry = e_source_registry_new_sync(nullptr, &error);
  ESource* source = registry == nullptr ? nullptr : e_source_registry_ref_default_address_book(registry);
  EClient* client =
      source == nullptr ? nullptr : e_book_client_connect_sync(source, static_cast<guint32>(-1), nullptr, &error);
  if (client != nullptr) e_book_client_get_contacts_sync(E_BOOK_CLIENT(client), "", &contacts, nullptr, &error);
  if (error != nullptr) {
    std::fprintf(stderr, "libebook_peer: %s\n", error->message);
    return 1;
  }
  for (GSList* item = contacts; item != nullptr; item = item->next)
    bytes += bytesOf(static_cast<EContact*>(item->data));
  return bytes > 0 ? 0 : 1;
}
