#include "import/contact_importer.h"

namespace varnok {
namespace {

// Warnings that are kept of one file.
constexpr std::size_t kWarningsOfAFile = 100;

}  // namespace

void ContactImporter::beginFile(const std::string& name) {
  name_ = name;
  unreported_ = 0;
  VCardReader::Sink& sink = *this;
  reader_ = std::make_unique<VCardReader>(sink, codec_, clock_);
}

Status ContactImporter::feed(std::string_view bytes) {
  if (status_.ok()) reader_->feed(bytes);
  return status_;
}

Status ContactImporter::endFile() {
  if (status_.ok()) reader_->finish();
  if (unreported_ > kWarningsOfAFile) {
    report_.warnings.push_back(name_ + ": " + std::to_string(unreported_ - kWarningsOfAFile) + " more cards skipped");
  }
  if (!status_.ok()) return status_;
  if (reader_->cardCount() > 0) return {};
  return {Status::Code::invalidArgument, name_ + " holds no vCard"};
}

void ContactImporter::person(PersonRef person) {
  if (!status_.ok()) return;
  status_ = addressBook_.addRecord(std::move(person));
  if (status_.ok()) ++report_.imported;
}

void ContactImporter::skipped(std::size_t line, std::string_view reason) {
  ++report_.skipped;
  if (++unreported_ > kWarningsOfAFile) return;
  report_.warnings.push_back(name_ + ":" + std::to_string(line) + ": card skipped: " + std::string(reason));
}

}  // namespace varnok
