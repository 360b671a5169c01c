// Reads a vCard file as EContacts and writes them as vCard 3.0 into another:
// what the desktop's own address book library takes for it.
//
//   econtact_peer FROM TO

#include <libebook-contacts/libebook-contacts.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace {

// Every value of the contact. One that nobody looks into is not read at all: it
// is written as the text that it came from.
std::size_t readValues(EContact* contact) {
  std::size_t bytes = 0;
  for (GList* i = e_vcard_get_attributes(E_VCARD(contact)); i != nullptr; i = i->next) {
    for (GList* j = e_vcard_attribute_get_values(static_cast<EVCardAttribute*>(i->data)); j != nullptr; j = j->next)
      bytes += std::strlen(static_cast<const char*>(j->data));
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: econtact_peer FROM TO\n");
    return 2;
  }
  std::ifstream in(argv[1], std::ios::binary);
  std::string text(static_cast<std::size_t>(std::filesystem::file_size(argv[1])), '\0');
  in.read(text.data(), static_cast<std::streamsize>(text.size()));
  std::ofstream out(argv[2], std::ios::binary);
  constexpr std::string_view kEnd = "END:VCARD\r\n";
  std::size_t bytes = 0;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = text.find(kEnd, start);
    if (end == std::string::npos) break;
    const std::string card = text.substr(start, end + kEnd.size() - start);
    EContact* contact = e_contact_new_from_vcard(card.c_str());
    bytes += readValues(contact);
    char* written = e_vcard_to_string(E_VCARD(contact), EVC_FORMAT_VCARD_30);
    out << written << "\r\n";
    g_free(written);
    g_object_unref(contact);
    start = end + kEnd.size() + 1;
  }
  return out.good() && bytes > 0 ? 0 : 1;
}
