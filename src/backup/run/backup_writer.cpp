#include "backup/run/backup_writer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "backup/files/backup_file.h"
#include "backup/files/zip_archive.h"
#include "export/csv_exporter.h"
#include "export/vcf_exporter.h"

namespace varnok {
namespace {

// A backup that is one text: what it begins with, and what each person adds.
struct TextFormat {
  // Null when the people are all there is.
  Status (*exportTitle)(OutputStream&, std::string_view language, const TextCatalog&, const ExportServices&);
  Status (*exportPerson)(OutputStream&, const PersonRef&, std::string_view language, const ExportServices&);
};
constexpr TextFormat kVCF{nullptr, &VCFExporter::exportPerson};
constexpr TextFormat kCSV{&CSVExporter::exportTitle, &CSVExporter::exportPerson};

using Writer = std::unique_ptr<BackupWriter>;

class TextWriter : public BackupWriter {
 public:
  TextWriter(const TextFormat& format, std::unique_ptr<AtomicFile> file, std::string language,
             const BackupRunServices& services)
      : format_(format), file_(std::move(file)), language_(std::move(language)), services_(services) {}

  Status begin() {
    if (format_.exportTitle == nullptr) return {};
    return format_.exportTitle(*file_, language_, services_.texts, services_.writing);
  }
  Status write(const PersonRef& person) override {
    return format_.exportPerson(*file_, person, language_, services_.writing);
  }
  Status finish() override { return file_->commit(); }

 private:
  const TextFormat& format_;
  std::unique_ptr<AtomicFile> file_;
  std::string language_;
  const BackupRunServices& services_;
};

template <const TextFormat& format>
Writer makeText(const std::string& path, const std::string& language, const BackupRunServices& services,
                Status& status) {
  std::unique_ptr<AtomicFile> file = services.files.createAtomic(path, status);
  if (file == nullptr) return nullptr;
  auto writer = std::make_unique<TextWriter>(format, std::move(file), language, services);
  status = writer->begin();
  if (!status.ok()) return nullptr;
  return writer;
}

class ZipWriter : public BackupWriter {
 public:
  ZipWriter(std::string language, const BackupRunServices& services)
      : archive_(services.files, services.writing.clock, services.tasks),
        language_(std::move(language)),
        services_(services) {}

  Status create(const std::string& path) {
    archive_.CreateZipFile2(path);
    return archive_.status();
  }
  Status write(const PersonRef& person) override {
    return VCFExporter::exportAsZip(archive_, person, language_, ABRecordCopyCompositeName(person), services_.writing);
  }
  Status finish() override {
    archive_.CloseZipFile2();
    return archive_.status();
  }

 private:
  ZipArchive archive_;
  std::string language_;
  const BackupRunServices& services_;
};

Writer makeZip(const std::string& path, const std::string& language, const BackupRunServices& services,
               Status& status) {
  auto writer = std::make_unique<ZipWriter>(language, services);
  status = writer->create(path);
  if (!status.ok()) return nullptr;
  return writer;
}

struct Format {
  std::string_view extension;
  Writer (*make)(const std::string& path, const std::string& language, const BackupRunServices& services,
                 Status& status);
};
constexpr std::array kFormats{
    Format{"vcf", &makeText<kVCF>},
    Format{"csv", &makeText<kCSV>},
    Format{"zip", &makeZip},
};

}  // namespace

std::unique_ptr<BackupWriter> makeBackupWriter(const std::string& path, const std::string& language,
                                               const BackupRunServices& services, Status& status) {
  const auto* format = std::ranges::find(kFormats, pathExtension(path), &Format::extension);
  if (format != kFormats.end()) return format->make(path, language, services, status);
  status = {Status::Code::unavailable, "backups of this type cannot be made: " + path};
  return nullptr;
}

}  // namespace varnok
