// DropboxBrowserViewController: one folder of the linked account. A file is
// downloaded into the documents directory by selecting it, a folder opens in a
// browser of its own.
//
// Lifetime. Made for one showing. Transfers go on when it has gone.
// Threads. Main thread.

#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backup/dropbox/dropbox_session.h"
#include "backup/dropbox/file_icon.h"
#include "platform/screen_presenter.h"
#include "platform/text_catalog.h"

namespace varnok {

struct DropboxBrowserServices {
  DropboxSession& dropbox;
  const TextCatalog& texts;
  ScreenPresenter& presenter;
  std::string documents;  // The documents directory.
};

class DropboxBrowserViewController : public Screen, public DropboxSessionDelegate {
 public:
  // `path` is "/" for the root.
  DropboxBrowserViewController(DropboxBrowserServices services, std::string path);
  DropboxBrowserViewController(const DropboxBrowserViewController&) = delete;
  DropboxBrowserViewController& operator=(const DropboxBrowserViewController&) = delete;
  ~DropboxBrowserViewController() override;

  std::string_view screenName() const override { return "DropboxBrowserViewController"; }

  // Where no account is linked, begins a sign-in.
  void viewDidLoad() override;
  // Asks for the listing.
  void viewWillAppear() override;

  std::optional<std::string> title() const override;
  std::vector<ScreenControl> controls() const override;
  int numberOfSections() const override { return 1; }
  int numberOfRowsInSection(int section) const override;
  TableRow cellForRowAtIndexPath(const IndexPath& indexPath) const override;
  bool tapControl(std::string_view control, int segment) override;
  bool selectRow(const IndexPath& indexPath) override;

  void close();
  // A file whose download runs already is left alone.
  void didSelectRowAtIndexPath(const IndexPath& indexPath);

  void progressDownloadFile(double progress, const std::string& file) override;
  void finishDownloadFileWithError(const std::string& file, const std::string& error) override;
  void progressUploadFile(double progress, const std::string& file, const std::string& source) override;
  void finishUploadFileWithError(const std::string& error) override;
  void finishLoadedMetadata(const std::string& path, const std::vector<DropboxMetadata>& entries) override;
  void finishLoadedMetadataWithError(const std::string& path, const std::string& error) override;

  const std::string& path() const { return path_; }
  const std::vector<FileIcon>& items() const { return items_; }
  // File name to its row, "%d", while its transfer runs.
  const std::map<std::string, std::string>& downloadedItems() const { return downloadedItems_; }
  const std::map<std::string, std::string>& uploadedItems() const { return uploadedItems_; }

 private:
  void loadListing();
  // Their rows in a new listing.
  void findRunningTransfers();
  std::string pathOf(const std::string& label) const;
  // The name of the file at `path` if it is in this folder.
  std::optional<std::string> nameInThisFolder(const std::string& path) const;
  std::optional<double> progressOf(const FileIcon& item) const;
  std::optional<std::string> detailOf(const FileIcon& item) const;
  void changed() { services_.presenter.screenDidChange(*this); }

  DropboxBrowserServices services_;
  const std::string path_;
  std::vector<FileIcon> items_;
  std::map<std::string, std::string> downloadedItems_;
  std::map<std::string, std::string> uploadedItems_;
  std::map<std::string, std::string> outcomes_;  // What rows say of a transfer that has ended, by name.
  bool loading_ = false;
  bool listed_ = false;  // A listing has arrived.
};

}  // namespace varnok
