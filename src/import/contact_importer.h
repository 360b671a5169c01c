// ContactImporter: adds the people of vCard files to an open address book.
//
//   importer.beginFile("people.vcf");
//   while (...) importer.feed(bytes);
//   if (Status status = importer.endFile(); !status.ok()) ...
//   addressBook.save();                     // Nothing is stored before this.
//
// Lifetime. What it was given must outlive it. Threads. The address book's.

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/contact_store.h"
#include "import/vcard_reader.h"

namespace varnok {

struct ImportReport {
  std::size_t imported = 0;
  std::size_t skipped = 0;
  // One line for each skipped card: "people.vcf:12: ...". A file with very many
  // of them ends in a line that counts the rest.
  std::vector<std::string> warnings;
};

class ContactImporter : private VCardReader::Sink {
 public:
  ContactImporter(ContactStore& addressBook, const TextCodec& codec, const Clock& clock)
      : addressBook_(addressBook), codec_(codec), clock_(clock) {}

  void beginFile(const std::string& name);

  // Fails as soon as the address book cannot take a person.
  Status feed(std::string_view bytes);

  // invalidArgument when the file held no card at all.
  Status endFile();

  const ImportReport& report() const { return report_; }

 private:
  void person(PersonRef person) override;
  void skipped(std::size_t line, std::string_view reason) override;

  ContactStore& addressBook_;
  const TextCodec& codec_;
  const Clock& clock_;
  std::string name_;
  std::unique_ptr<VCardReader> reader_;
  Status status_;
  std::size_t unreported_ = 0;
  ImportReport report_;
};

}  // namespace varnok
