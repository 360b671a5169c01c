#include "backup/dropbox/dropbox_browser_view_controller.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "backup/files/backup_file.h"
#include "backup/files/vnk_util.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

constexpr const char* kFolderKind = "__folder__";

std::string lowerCased(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

FileIcon iconOf(const DropboxMetadata& entry) {
  FileIcon icon;
  icon.label = entry.name;
  icon.isDir = entry.isFolder;
  icon.kind = entry.isFolder ? kFolderKind : lowerCased(pathExtension(entry.name));
  icon.size = entry.size;
  icon.date = entry.modified;
  icon.image = VNKUtil::iconForExtension(icon.kind);
  return icon;
}

// Of a queue's entry; one that has only begun is empty.
double fractionOf(const std::string& text) {
  return std::strtod(text.c_str(), nullptr);
}

}  // namespace

DropboxBrowserViewController::DropboxBrowserViewController(DropboxBrowserServices services, std::string path)
    : services_(std::move(services)), path_(std::move(path)) {}

DropboxBrowserViewController::~DropboxBrowserViewController() {
  services_.dropbox.clearTheDelegate(this);
}

void DropboxBrowserViewController::viewDidLoad() {
  services_.dropbox.showDropboxLinkScreen(services_.presenter);
}

void DropboxBrowserViewController::viewWillAppear() {
  services_.dropbox.setTheDelegate(this);
  loadListing();
}

void DropboxBrowserViewController::loadListing() {
  loading_ = true;
  changed();
  services_.dropbox.loadMetadata(path_);
}

std::optional<std::string> DropboxBrowserViewController::title() const {
  if (path_ == "/") return services_.texts.text(text_key::Dropbox);
  return std::string(lastPathComponent(path_));
}

std::vector<ScreenControl> DropboxBrowserViewController::controls() const {
  return {{"close", services_.texts.text(text_key::CLOSE)},
          {"activityIndicator", services_.texts.text(text_key::LOADING), /*hidden=*/!loading_},
          {"lbl_Warning", services_.texts.text(text_key::DROPBOX_WARNING_MESSAGE),
           /*hidden=*/!listed_ || !items_.empty()}};
}

int DropboxBrowserViewController::numberOfRowsInSection(int /*section*/) const {
  return static_cast<int>(items_.size());
}

TableRow DropboxBrowserViewController::cellForRowAtIndexPath(const IndexPath& indexPath) const {
  const FileIcon& item = items_.at(static_cast<std::size_t>(indexPath.row));
  TableRow row;
  row.text = item.label;
  row.detail = detailOf(item);
  row.accesorType = item.isDir ? RowAccessory::disclosure : RowAccessory::none;
  row.selectionStyle = RowSelection::highlight;
  row.progress = progressOf(item);
  return row;
}

std::optional<std::string> DropboxBrowserViewController::detailOf(const FileIcon& item) const {
  if (item.isDir) return std::nullopt;
  if (const auto outcome = outcomes_.find(item.label); outcome != outcomes_.end()) return outcome->second;
  const std::string size = VNKUtil::convertSize(static_cast<double>(item.size));
  return item.kind.empty() ? size : item.kind + ", " + size;
}

std::optional<double> DropboxBrowserViewController::progressOf(const FileIcon& item) const {
  if (item.isDir) return std::nullopt;
  const DropboxSession::Queue& downloads = services_.dropbox.downloadQueue();
  if (const auto entry = downloads.find(pathOf(item.label)); entry != downloads.end()) return fractionOf(entry->second);
  const DropboxSession::Queue& uploads = services_.dropbox.uploadQueue();
  const auto entry = uploads.find(item.label);
  if (entry == uploads.end() || !uploadedItems_.contains(item.label)) return std::nullopt;
  return fractionOf(entry->second);
}

bool DropboxBrowserViewController::tapControl(std::string_view control, int /*segment*/) {
  if (control != "close") return false;
  close();
  return true;
}

bool DropboxBrowserViewController::selectRow(const IndexPath& indexPath) {
  if (!hasRow(*this, indexPath)) return false;
  didSelectRowAtIndexPath(indexPath);
  return true;
}

void DropboxBrowserViewController::close() {
  services_.presenter.dismiss(*this);
}

void DropboxBrowserViewController::didSelectRowAtIndexPath(const IndexPath& indexPath) {
  const FileIcon& item = items_.at(static_cast<std::size_t>(indexPath.row));
  const std::string path = pathOf(item.label);
  if (item.isDir) {
    services_.presenter.present(std::make_shared<DropboxBrowserViewController>(services_, path));
    return;
  }
  if (services_.dropbox.downloadQueue().contains(path)) return;
  outcomes_.erase(item.label);
  downloadedItems_[item.label] = fmt::format("{}", indexPath.row);
  services_.dropbox.downloadFile(path, services_.documents + "/" + plainFileName(item.label));
  changed();
}

void DropboxBrowserViewController::progressDownloadFile(double progress, const std::string& file) {
  const auto name = nameInThisFolder(file);
  if (!name) return;
  if (progress >= 1.0) {
    downloadedItems_.erase(*name);
    services_.dropbox.downloadQueue().erase(file);
    outcomes_[*name] = services_.texts.text(text_key::Downloaded);
  }
  changed();
}

void DropboxBrowserViewController::finishDownloadFileWithError(const std::string& file, const std::string& /*error*/) {
  if (const auto name = nameInThisFolder(file)) downloadedItems_.erase(*name);
  changed();
}

void DropboxBrowserViewController::progressUploadFile(double progress, const std::string& file,
                                                      const std::string& source) {
  const auto name = nameInThisFolder(source);
  const auto row = std::ranges::find(items_, name.value_or(""), &FileIcon::label);
  if (name && row != items_.end()) uploadedItems_[*name] = fmt::format("{}", row->tag);
  if (progress >= 1.0) {
    services_.dropbox.uploadQueue().erase(file);
    if (name) {
      uploadedItems_.erase(*name);
      outcomes_[*name] = services_.texts.text(text_key::Uploaded);
    }
    if (uploadedItems_.empty()) services_.dropbox.loadMetadata(path_);
  }
  changed();
}

void DropboxBrowserViewController::finishUploadFileWithError(const std::string& /*error*/) {
  std::erase_if(uploadedItems_,
                [this](const auto& item) { return !services_.dropbox.uploadQueue().contains(item.first); });
  changed();
}

void DropboxBrowserViewController::finishLoadedMetadata(const std::string& path,
                                                        const std::vector<DropboxMetadata>& entries) {
  if (path != path_) return;
  items_.clear();
  std::ranges::transform(entries, std::back_inserter(items_), iconOf);
  std::stable_partition(items_.begin(), items_.end(), std::mem_fn(&FileIcon::isDir));
  for (std::size_t row = 0; row < items_.size(); ++row)
    items_[row].tag = static_cast<int>(row);
  findRunningTransfers();
  loading_ = false;
  listed_ = true;
  changed();
}

void DropboxBrowserViewController::findRunningTransfers() {
  const auto uploading = std::exchange(uploadedItems_, {});
  downloadedItems_.clear();
  for (const FileIcon& item : items_) {
    const std::string row = fmt::format("{}", item.tag);
    if (services_.dropbox.downloadQueue().contains(pathOf(item.label))) downloadedItems_[item.label] = row;
    if (uploading.contains(item.label)) uploadedItems_[item.label] = row;
  }
}

void DropboxBrowserViewController::finishLoadedMetadataWithError(const std::string& path,
                                                                 const std::string& /*error*/) {
  if (path != path_) return;
  loading_ = false;
  changed();
}

std::string DropboxBrowserViewController::pathOf(const std::string& label) const {
  return path_.ends_with('/') ? path_ + label : path_ + "/" + label;
}

std::optional<std::string> DropboxBrowserViewController::nameInThisFolder(const std::string& path) const {
  std::string name(lastPathComponent(path));
  return pathOf(name) == path ? std::optional(std::move(name)) : std::nullopt;
}

}  // namespace varnok
