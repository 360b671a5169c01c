// MyHTTPConnection: what the web access answers. Stores an uploaded file, changes
// contacts, and finds the response for each path.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "export/html_exporter.h"
#include "platform/file_system.h"
#include "platform/preference_store.h"
#include "web/access/access_gate.h"
#include "web/access/address_book_editor.h"
#include "web/access/upload.h"
#include "web/access/web_services.h"
#include "web/http/http_connection.h"

namespace varnok {

// What the connections of one server share.
struct WebContext {
  // Set up as the preferences say now.
  explicit WebContext(const WebServices& services);

  PreferenceStore& preferences;
  WebDocumentServices documents;
  AddressBookEditor editor;
  std::unique_ptr<AccessGate> gate;  // Null: everybody is let in.
  bool readOnly;                     // Nothing can be changed and nothing uploaded.
};

class MyHTTPConnection : public HTTPConnection {
 public:
  explicit MyHTTPConnection(std::shared_ptr<WebContext> context) : context_(std::move(context)) {}

  std::uint64_t largestBody(const std::string& method, const std::string& path) override;
  std::unique_ptr<HTTPResponse> refusal(const HTTPRequest& request) override;
  bool mayTakeLong(const std::string& method, const std::string& path) override;
  void prepareForBodyWithSize(std::uint64_t size) override;
  void processDataChunk(std::string_view chunk) override;
  std::unique_ptr<HTTPResponse> httpResponseForMethod(const std::string& method, const std::string& uri) override;

 private:
  using Response = std::unique_ptr<HTTPResponse>;

  struct Route {
    std::string_view path;
    Response (MyHTTPConnection::*answer)(const std::string& file);
    bool postOnly = false;
    bool afterBackup = false;  // Not found before the first one.
  };
  static const Route kRoutes[];

  Response saveRecord(const std::string& file);
  Response records(const std::string& file);
  Response record(const std::string& file);
  Response removeRecord(const std::string& file);
  Response downloadPage(const std::string& file);
  Response uploadPage(const std::string& file);

  Response filledPage(const std::string& file, const std::vector<std::string_view>& textKeys) const;
  Response route(const std::string& method, const std::string& uri);
  std::optional<std::string> fileName() const;
  std::optional<std::string_view> bodyText() const;
  bool takesUpload() const;
  void collect(std::string_view chunk);
  void beginUpload(std::string_view bytes);
  void continueUpload(std::string_view bytes);
  Response finishUpload();
  Status storeUpload();

  std::shared_ptr<WebContext> context_;
  std::vector<std::string> multipartArray_;  // The lines of the part header.
  std::unique_ptr<AtomicFile> upload_;       // Null also when it could not be made.
  std::optional<FileEndFinder> fileEnd_;     // Of the upload.
  Status uploadStatus_;
};

}  // namespace varnok
