#include <fcntl.h>

#include <cerrno>
#include <optional>

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/dbus/portal_request.h"
#include "platform/linux/posix/posix_io.h"

namespace varnok {
namespace {

// The window that a question belongs to: not known here.
constexpr const char* kNoWindow = "";

// Opens `path` and appends it to `list`; its index there.
std::optional<gint32> append(GUnixFDList* list, const std::string& path, Status& status) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.valid()) {
    status = statusOfErrno(errno, "open", path);
    return std::nullopt;
  }
  GError* error = nullptr;
  const gint index = g_unix_fd_list_append(list, file.get(), &error);
  if (index >= 0) return index;
  status = {Status::Code::inputOutput, std::string("Cannot hand over ") + path + ": " + error->message};
  g_error_free(error);
  return std::nullopt;
}

GVariant* arrayOf(const std::vector<std::string>& texts, std::size_t first) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
  for (std::size_t i = first; i < texts.size(); ++i)
    g_variant_builder_add_value(&builder, textValue(texts[i]));
  return g_variant_builder_end(&builder);
}

// One filter, "a(sa(us))": its name and the patterns.
GVariant* filtersOf(const PortalFiles& files) {
  constexpr guint32 kPattern = 0;  // The other kind is a MIME type.
  GVariantBuilder patterns;
  g_variant_builder_init(&patterns, G_VARIANT_TYPE("a(us)"));
  for (const std::string& pattern : files.patterns)
    g_variant_builder_add(&patterns, "(u@s)", kPattern, textValue(pattern));
  GVariantBuilder filters;
  g_variant_builder_init(&filters, G_VARIANT_TYPE("a(sa(us))"));
  g_variant_builder_add(&filters, "(@s@a(us))", textValue(files.kind), g_variant_builder_end(&patterns));
  return g_variant_builder_end(&filters);
}

std::vector<std::string> urisOf(GVariant* results) {
  std::vector<std::string> uris;
  GVariant* list = results == nullptr ? nullptr : g_variant_lookup_value(results, "uris", G_VARIANT_TYPE_STRING_ARRAY);
  if (list == nullptr) return uris;
  for (gsize i = 0; i < g_variant_n_children(list); ++i) {
    const gchar* uri = nullptr;
    g_variant_get_child(list, i, "&s", &uri);
    uris.emplace_back(uri);
  }
  g_variant_unref(list);
  return uris;
}

class GDBusPortal : public DesktopPortal {
 public:
  explicit GDBusPortal(const BusSettings& settings) : settings_(settings) {}

  std::unique_ptr<PortalQuestion> composeMail(const PortalMail& mail, Answered answered, Status& status) override {
    auto request = newRequest(std::move(answered), status);
    if (request == nullptr) return nullptr;
    const GPointer<GUnixFDList> files(g_unix_fd_list_new());
    Options options;
    options.add("handle_token", request->token()).add("subject", mail.subject).add("body", mail.body);
    if (!mail.to.empty()) options.add("address", mail.to.front());
    if (mail.to.size() > 1) options.add("addresses", arrayOf(mail.to, 1));
    GVariantBuilder handles;
    g_variant_builder_init(&handles, G_VARIANT_TYPE("ah"));
    for (const std::string& path : mail.attachments) {
      const auto index = append(files.get(), path, status);
      if (!index) {
        g_variant_builder_clear(&handles);
        return nullptr;
      }
      g_variant_builder_add(&handles, "h", *index);
    }
    options.add("attachment_fds", g_variant_builder_end(&handles));
    return started(std::move(request),
                   {.destination = kPortalName,
                    .path = kPortalPath,
                    .interface = "org.freedesktop.portal.Email",
                    .method = "ComposeEmail",
                    .arguments = g_variant_new("(s@a{sv})", kNoWindow, options.take()),
                    .descriptors = files.get()},
                   status);
  }

  std::unique_ptr<PortalQuestion> openFile(const std::string& path, bool ask, Answered answered,
                                           Status& status) override {
    auto request = newRequest(std::move(answered), status);
    if (request == nullptr) return nullptr;
    const GPointer<GUnixFDList> files(g_unix_fd_list_new());
    const auto index = append(files.get(), path, status);
    if (!index) return nullptr;
    Options options;
    options.add("handle_token", request->token()).add("ask", g_variant_new_boolean(ask ? TRUE : FALSE));
    return started(std::move(request),
                   {.destination = kPortalName,
                    .path = kPortalPath,
                    .interface = "org.freedesktop.portal.OpenURI",
                    .method = "OpenFile",
                    .arguments = g_variant_new("(sh@a{sv})", kNoWindow, *index, options.take()),
                    .descriptors = files.get()},
                   status);
  }

  std::unique_ptr<PortalQuestion> chooseFiles(const PortalFiles& files, Chosen chosen, Status& status) override {
    auto request = newRequest(
        [chosen = std::move(chosen)](PortalAnswer answer, GVariant* results) { chosen(answer, urisOf(results)); },
        status);
    if (request == nullptr) return nullptr;
    Options options;
    options.add("handle_token", request->token())
        .add("multiple", g_variant_new_boolean(TRUE))
        .add("filters", filtersOf(files));
    return started(std::move(request),
                   {.destination = kPortalName,
                    .path = kPortalPath,
                    .interface = "org.freedesktop.portal.FileChooser",
                    .method = "OpenFile",
                    .arguments = g_variant_new("(s@s@a{sv})", kNoWindow, textValue(files.title), options.take())},
                   status);
  }

  std::unique_ptr<PortalQuestion> openURI(const std::string& uri, Answered answered, Status& status) override {
    auto request = newRequest(std::move(answered), status);
    if (request == nullptr) return nullptr;
    Options options;
    options.add("handle_token", request->token());
    return started(std::move(request),
                   {.destination = kPortalName,
                    .path = kPortalPath,
                    .interface = "org.freedesktop.portal.OpenURI",
                    .method = "OpenURI",
                    .arguments = g_variant_new("(s@s@a{sv})", kNoWindow, textValue(uri), options.take())},
                   status);
  }

  void cancel() override { cancellation_.cancel(); }

 private:
  std::unique_ptr<PortalRequest> newRequest(Answered answered, Status& status) {
    return newRequest(
        [answered = std::move(answered)](PortalAnswer answer, GVariant* /*results*/) { answered(answer); }, status);
  }
  std::unique_ptr<PortalRequest> newRequest(PortalRequest::Answered answered, Status& status) {
    auto bus = Bus::connect(Bus::Kind::session, settings_.callLimit, cancellation_.get(), status);
    if (bus == nullptr) return nullptr;
    return std::make_unique<PortalRequest>(std::move(bus), std::move(answered));
  }

  std::unique_ptr<PortalQuestion> started(std::unique_ptr<PortalRequest> request, BusCall call, Status& status) {
    call.limit = settings_.callLimit;
    status = request->start(call, cancellation_.get());
    if (!status.ok()) request.reset();
    return request;
  }

  const BusSettings settings_;
  Cancellation cancellation_;
};

}  // namespace
}  // namespace varnok

varnok::DesktopPortal* varnokMakePortal(const varnok::BusSettings& settings) {
  return new varnok::GDBusPortal(settings);
}
