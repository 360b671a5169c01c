#include "web/access/my_http_connection.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"
#include "platform/text_key.h"
#include "platform/utf8.h"
#include "web/access/http_download_response.h"
#include "web/http/http_data_response.h"
#include "web/http/http_dynamic_file_response.h"
#include "web/http/http_redirect_response.h"
#include "web/http/http_uri.h"

namespace varnok {
namespace {

// Bytes.
constexpr std::uint64_t kLargestJSON = std::uint64_t{16} << 20U;
constexpr std::uint64_t kLargestForm = 1024;                     // Of the access code.
constexpr std::uint64_t kSpaceLeft = std::uint64_t{200} << 20U;  // On the disk, whatever is uploaded.

constexpr std::string_view kFormAgain = "<script> location.href ='upload.html'; </script>";

// Asked and answered in JSON, made while the browser waits.
constexpr std::array<std::string_view, 4> kJSONPaths{"/saverecord.json", "/records.json", "/record.json",
                                                     "/removerecord.json"};

bool isJSONPath(std::string_view path) {
  return std::ranges::find(kJSONPaths, path) != kJSONPaths.end();
}

std::string pathOf(const std::string& uri) {
  const std::optional<std::string> decoded = decodedPathOfURI(uri);
  return decoded ? standardizedPath(*decoded) : std::string();
}

std::string escapedHTML(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      case '"': escaped += "&quot;"; break;
      case '\'': escaped += "&#39;"; break;
      default: escaped += c;
    }
  }
  return escaped;
}

std::unique_ptr<HTTPResponse> jsonReply(std::string body) {
  return std::make_unique<HTTPDataResponse>(std::move(body), /*isJSON=*/true);
}

// The reply to a save that the address book could not make. Its body is that of
// any save; the status tells the page.
class FailedSaveResponse : public HTTPDataResponse {
 public:
  explicit FailedSaveResponse(std::string body) : HTTPDataResponse(std::move(body), /*isJSON=*/true) {}
  int status() const override { return 500; }
};

}  // namespace

WebContext::WebContext(const WebServices& services)
    : preferences(services.preferences),
      documents{services.contacts, services.files, services.texts, services.images, services.documents},
      editor(services.contacts),
      gate(services.preferences.boolForKey(key::WEB_ACCESS_CODE)
               ? std::make_unique<AccessGate>(services.random, services.clock, services.texts)
               : nullptr),
      readOnly(services.preferences.boolForKey(key::WEB_READ_ONLY)) {}

const MyHTTPConnection::Route MyHTTPConnection::kRoutes[]{
    {"/saverecord.json", &MyHTTPConnection::saveRecord, /*postOnly=*/true},
    {"/records.json", &MyHTTPConnection::records},
    {"/record.json", &MyHTTPConnection::record},
    {"/removerecord.json", &MyHTTPConnection::removeRecord},
    {"/download.html", &MyHTTPConnection::downloadPage, /*postOnly=*/false, /*afterBackup=*/true},
    {"/upload.html", &MyHTTPConnection::uploadPage, /*postOnly=*/false, /*afterBackup=*/true},
};

std::uint64_t MyHTTPConnection::largestBody(const std::string& /*method*/, const std::string& path) {
  if (isJSONPath(path)) return kLargestJSON;
  if (context_->gate != nullptr && path == AccessGate::kPath) return kLargestForm;
  const std::uint64_t space = context_->documents.files.freeSpace(context_->documents.documents);
  return space - std::min(space, kSpaceLeft);
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::refusal(const HTTPRequest& request) {
  const bool isPost = request.method == "POST";
  const std::string path = pathOf(request.uri);
  if (context_->gate != nullptr && !context_->gate->admits(request)) {
    if (!isPost) return context_->gate->form();
    if (path != AccessGate::kPath) return std::make_unique<HTTPErrorResponse>(403);
    return nullptr;
  }
  const bool changes = isPost && path != "/record.json" && path != AccessGate::kPath;
  if (context_->readOnly && changes) return std::make_unique<HTTPErrorResponse>(403);
  return nullptr;
}

bool MyHTTPConnection::mayTakeLong(const std::string& method, const std::string& path) {
  return isJSONPath(path) || HTTPConnection::mayTakeLong(method, path);
}

void MyHTTPConnection::prepareForBodyWithSize(std::uint64_t /*size*/) {
  dataStartIndex_ = 0;
  multipartData_.clear();
  multipartArray_.clear();
  postHeaderOK_ = false;
  upload_.reset();
  uploadStatus_ = {};
}

void MyHTTPConnection::processDataChunk(std::string_view chunk) {
  if (!takesUpload()) return collect(chunk);
  if (postHeaderOK_) return continueUpload(chunk);
  const PartHeaderScan scan = scanPartHeader(chunk, dataStartIndex_, multipartArray_);
  if (scan.ended) {
    postHeaderOK_ = true;
    beginUpload(chunk.substr(dataStartIndex_));
  } else if (!scan.foundLine) {
    collect(chunk);
  }
}

// Whoever may only look, or has not been let in yet, stores nothing.
bool MyHTTPConnection::takesUpload() const {
  if (context_->readOnly) return false;
  return context_->gate == nullptr || pathOf(request().uri) != AccessGate::kPath;
}

// Longer than any command, it is none, and need not be kept.
void MyHTTPConnection::collect(std::string_view chunk) {
  multipartData_ += chunk.substr(0, kLargestJSON - multipartData_.size());
}

void MyHTTPConnection::beginUpload(std::string_view bytes) {
  const WebDocumentServices& documents = context_->documents;
  const std::optional<std::string> sent =
      multipartArray_.size() < 2 ? std::nullopt : uploadedFileName(multipartArray_[1]);
  const std::optional<std::string> name = sent ? storedFileName(*sent, documents.files) : std::nullopt;
  if (!name) return;
  upload_ = documents.files.createAtomic(documents.documents + "/" + *name, uploadStatus_);
  fileEnd_.emplace(multipartArray_[0]);
  continueUpload(bytes);
}

// After a failure the rest is dropped; the answer tells.
void MyHTTPConnection::continueUpload(std::string_view bytes) {
  if (upload_ == nullptr) return;
  fileEnd_->add(bytes);
  uploadStatus_ = upload_->append(bytes);
  if (!uploadStatus_.ok()) upload_.reset();
}

Status MyHTTPConnection::storeUpload() {
  if (upload_ == nullptr) return uploadStatus_;
  const std::unique_ptr<AtomicFile> file = std::move(upload_);
  if (Status status = file->truncate(fileEnd_->size()); !status.ok()) return status;
  return file->commit();
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::httpResponseForMethod(const std::string& method,
                                                                      const std::string& uri) {
  if (requestContentLength_ == 0 || !multipartData_.empty()) return route(method, uri);
  const std::optional<std::string> name =
      multipartArray_.size() < 2 ? std::nullopt : uploadedFileName(multipartArray_[1]);
  if (!name) return nullptr;
  if (name->empty()) return std::make_unique<HTTPDataResponse>(std::string(kFormAgain));
  if (const Status status = storeUpload(); !status.ok()) {
    return std::make_unique<HTTPErrorResponse>(status.code() == Status::Code::noSpace ? 507 : 500);
  }
  multipartArray_.clear();
  requestContentLength_ = 0;
  return route(method, uri);
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::route(const std::string& method, const std::string& uri) {
  const std::optional<std::string> file = filePathForURI(uri);
  if (!file || !isInsideFolder(*file, config().documentRoot)) return nullptr;
  const std::string_view path = std::string_view(*file).substr(config().documentRoot.size());
  if (context_->gate != nullptr && path == AccessGate::kPath) {
    if (method == "POST") return context_->gate->answer(multipartData_);
    return std::make_unique<HTTPRedirectResponse>("/");
  }
  const std::optional<std::string> backup = fileName();
  for (const Route& known : kRoutes) {
    if (path != known.path || (known.postOnly && method != "POST")) continue;
    return known.afterBackup && !backup ? nullptr : (this->*known.answer)(*file);
  }
  if (backup && path.substr(std::min<std::size_t>(1, path.size())) == *backup) {
    const std::string stored = context_->preferences.stringForKey(key::FILE_PATH).value_or("");
    return std::make_unique<HttpDownloadResponse>(stored, *backup);
  }
  return HTTPConnection::httpResponseForMethod(method, uri);
}

std::optional<std::string> MyHTTPConnection::fileName() const {
  return context_->preferences.stringForKey(key::FILE_NAME);
}

std::optional<std::string_view> MyHTTPConnection::bodyText() const {
  return isValidUTF8(multipartData_) ? std::optional<std::string_view>(multipartData_) : std::nullopt;
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::saveRecord(const std::string& /*file*/) {
  const AddressBookEditor::Outcome outcome = context_->editor.edit(multipartData_);
  std::string reply = fmt::format(R"({{"success":true,"recordId":{}}})", outcome.recordID);
  if (outcome.status.ok()) return jsonReply(std::move(reply));
  return std::make_unique<FailedSaveResponse>(std::move(reply));
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::records(const std::string& file) {
  const std::unique_ptr<OpenFile> document = HTMLExporter::openRecordsJSON(context_->documents);
  if (document == nullptr) return std::make_unique<HTTPErrorResponse>(500);
  return std::make_unique<HTTPFileResponse>(HTTPFile(document->takeDescriptor()), file);
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::record(const std::string& /*file*/) {
  return jsonReply(HTMLExporter::createRecordJSONWithId(bodyText().value_or(""), context_->documents));
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::removeRecord(const std::string& /*file*/) {
  const std::string_view id = bodyText().value_or("");
  const bool blank = id.find_first_not_of(" \t\n\v\f\r") == std::string_view::npos;
  const bool removed = !blank && context_->editor.remove(id);
  return jsonReply(removed ? R"({"success":"1"})" : R"({"success":"0"})");
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::downloadPage(const std::string& file) {
  return filledPage(file, {text_key::DOWNLOAD_INFO_01, text_key::DOWNLOAD_INFO_03, text_key::DOWNLOAD_INFO_04});
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::uploadPage(const std::string& file) {
  return filledPage(file, {text_key::WIFI_UPLOAD_01, text_key::WIFI_UPLOAD_02});
}

std::unique_ptr<HTTPResponse> MyHTTPConnection::filledPage(const std::string& file,
                                                           const std::vector<std::string_view>& textKeys) const {
  MarkerReplacer::Replacements replacements{{"VCF_FILE", escapedHTML(fileName().value_or(""))}};
  for (const std::string_view textKey : textKeys)
    replacements.emplace(textKey, context_->documents.texts.text(textKey));
  return std::make_unique<HTTPDynamicFileResponse>(file, "%%", std::move(replacements));
}

}  // namespace varnok
