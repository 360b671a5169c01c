#include "ui/contact_import.h"

#include <QPointer>
#include <fstream>
#include <vector>

#include "contacts/address_book.h"
#include "import/contact_importer.h"
#include "platform/progress_overlay.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

constexpr std::size_t kPiece = std::size_t{256} * 1024;  // Bytes read at once.

Status importFile(ContactImporter& importer, const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return {Status::Code::inputOutput, path + " cannot be read"};
  importer.beginFile(path);
  std::vector<char> buffer(kPiece);
  while (file) {
    file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    const auto count = static_cast<std::size_t>(file.gcount());
    if (Status status = importer.feed({buffer.data(), count}); !status.ok()) return status;
  }
  if (file.bad()) return {Status::Code::inputOutput, path + " cannot be read"};
  return importer.endFile();
}

// On a background thread.
Status importAll(const Services& services, const std::vector<std::string>& paths, ImportReport& report) {
  Status status;
  const auto addressBook = ABAddressBookCreateWithOptions(services.contacts, &status);
  if (addressBook == nullptr) return status;
  ContactImporter importer(*addressBook, services.codec, services.clock);
  for (const std::string& path : paths) {
    if (status = importFile(importer, path); !status.ok()) return status;
  }
  status = ABAddressBookSave(addressBook.get());
  report = importer.report();
  return status;
}

std::string noticeOf(const Status& status, const ImportReport& report, const TextCatalog& texts) {
  if (!status.ok()) return texts.text(text_key::IMPORT_FAILED);
  std::string text = texts.formatCount(text_key::IMPORTED, static_cast<std::int64_t>(report.imported));
  if (report.skipped > 0) {
    text += "\n" + texts.formatCount(text_key::IMPORT_SKIPPED, static_cast<std::int64_t>(report.skipped));
  }
  return text;
}

}  // namespace

ContactImport::ContactImport(Services services, DesktopFileChooser& chooser, std::function<void()> imported)
    : services_(std::move(services)), chooser_(chooser), imported_(std::move(imported)) {}

void ContactImport::choose() {
  const PortalFiles files{services_.texts.text(text_key::IMPORT_FILE), "vCard", {"*.vcf", "*.VCF", "*.vcard"}};
  chooser_.choose(files, [here = QPointer<ContactImport>(this)](const std::optional<std::vector<std::string>>& uris) {
    if (here == nullptr) return;
    if (!uris) return Q_EMIT here->dialogWanted();
    QList<QUrl> urls;
    for (const std::string& uri : *uris)
      urls.append(QUrl(QString::fromStdString(uri)));
    here->importUrls(urls);
  });
}

void ContactImport::importUrls(const QList<QUrl>& urls) {
  std::vector<std::string> paths;
  for (const QUrl& url : urls) {
    if (url.isLocalFile()) paths.push_back(url.toLocalFile().toStdString());
  }
  if (!paths.empty()) importFiles(std::move(paths));
}

void ContactImport::importFiles(std::vector<std::string> paths) {
  ProgressOverlay::showWhileExecuting(
      services_.presenter, services_.tasks, services_.texts.text(text_key::IMPORTING),
      [services = services_, imported = imported_, paths = std::move(paths)](ProgressOverlay& /*overlay*/) {
        ImportReport report;
        const Status status = importAll(services, paths, report);
        if (!status.ok()) services.log.write("import: " + status.message());
        for (const std::string& warning : report.warnings)
          services.log.write("import: " + warning);
        services.tasks.mainThread([services, imported, notice = noticeOf(status, report, services.texts)] {
          imported();
          AlertView alert;
          alert.title = services.texts.text(text_key::ALERTVIEWTITLE);
          alert.message = notice;
          alert.buttons = {services.texts.text(text_key::OK)};
          services.presenter.showAlert(std::move(alert));
        });
      });
}

}  // namespace varnok
