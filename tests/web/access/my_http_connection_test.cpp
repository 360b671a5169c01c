#include "web/access/my_http_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "app/preferences/preference_keys.h"
#include "contacts/testing/in_memory_contact_store.h"
#include "platform/linux/posix/posix_file_system.h"
#include "platform/linux/posix/temporary_directory.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_random_source.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/manual_task_runner.h"
#include "support/person_builder.h"
#include "web/http/http_exchange.h"

namespace varnok {
namespace {

using testing::HasSubstr;

// One connection and what it serves: pages and documents in a real directory.
class WebTest : public testing::Test {
 protected:
  struct Answer {
    int status = 0;
    std::string body = {};
    std::map<std::string, std::string> fields = {};
  };

  WebTest() {
    std::filesystem::create_directory(directory_ / "Web");
    std::filesystem::create_directory(directory_ / "docs");
    setContent(directory_ / "Web/edit.html", "the editor");
    setContent(directory_ / "Web/upload.html", "[%%VCF_FILE%%] %%WIFI_UPLOAD_01%% %%WIFI_UPLOAD_02%% %%OTHER%%");
    setContent(directory_ / "Web/download.html", "[%%VCF_FILE%%] %%DOWNLOAD_INFO_01%% %%DOWNLOAD_INFO_03%%");
    config_->documentRoot = directory_ / "Web";
  }

  // As if a backup had been made.
  void backUp(const std::string& name) {
    preferences_.setObject(name, key::FILE_NAME);
    preferences_.setObject(directory_ / "docs/backup", key::FILE_PATH);
    setContent(directory_ / "docs/backup", "the backup");
  }

  Answer read(HTTPResponse* response) const {
    if (response == nullptr || !response->exists()) return {.status = 404};
    Answer answer{.status = response->status()};
    for (const auto& [name, value] : response->httpHeaders())
      answer.fields[name] = value;
    const HTTPBody body = response->body();
    if (const auto* bytes = std::get_if<std::string_view>(&body)) {
      answer.body = *bytes;
    } else if (const auto* file = std::get_if<HTTPFileBody>(&body)) {
      answer.body.resize(file->length);
      EXPECT_EQ(::pread(file->descriptor, answer.body.data(), file->length, 0), static_cast<ssize_t>(file->length));
    } else {
      std::string piece;
      do {
        piece.clear();
        EXPECT_TRUE(std::get<HTTPBodyStream*>(body)->read(piece));
        answer.body += piece;
      } while (!piece.empty());
    }
    return answer;
  }

  static HTTPRequest head(const std::string& method, const std::string& uri, HTTPFields fields = {}) {
    fields.emplace_back("Host", "192.168.1.7:8080");
    return {.method = method, .uri = uri, .fields = std::move(fields), .peerAddress = "192.168.1.9"};
  }

  // One request on the connection, its body in the given pieces.
  Answer send(const std::string& method, const std::string& uri, const std::vector<std::string>& pieces = {},
              const HTTPFields& fields = {}) {
    std::uint64_t size = 0;
    for (const std::string& piece : pieces)
      size += piece.size();
    HTTPExchange exchange(connection(), config_);
    auto response = exchange.begin(head(method, uri, fields), size);
    if (response == nullptr) {
      for (const std::string& piece : pieces)
        EXPECT_TRUE(exchange.receive(piece));
      response = exchange.finish();
    }
    return read(response.get());
  }
  Answer get(const std::string& uri) { return send("GET", uri); }
  Answer post(const std::string& uri, const std::string& body) { return send("POST", uri, {body}); }

  HTTPConnection& connection() {
    if (connection_ == nullptr)
      connection_ = std::make_unique<MyHTTPConnection>(std::make_shared<WebContext>(services_));
    return *connection_;
  }

  static std::string form(const std::string& name, const std::string& content) {
    return "--b\r\nContent-Disposition: form-data; name=\"f\"; filename=\"" + name +
           "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + content + "\r\n--b--\r\n";
  }

  // The documents directory, "name=content" each.
  std::string documents() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory_ / "docs"))
      files[entry.path().filename()] = contentOf(entry.path());
    std::string text;
    for (const auto& [name, content] : files)
      text += (text.empty() ? "" : " ") + name + "=" + content;
    return text;
  }

  const TemporaryDirectory directory_;
  InMemoryPreferenceStore preferences_;
  InMemoryContactStoreProvider contacts_;
  PosixFileSystem files_;
  FakeTextCatalog texts_;
  FakeImageCodec images_;
  FakeClock clock_;
  FakeRandomSource random_;
  ManualTaskRunner tasks_;
  NotificationCenter notifications_;
  FakeIdleTimer idleTimer_;
  FakeNetworkMonitor network_;
  FakeDeveloperLog log_;
  WebServices services_{preferences_,
                        contacts_,
                        files_,
                        texts_,
                        images_,
                        clock_,
                        random_,
                        tasks_,
                        notifications_,
                        idleTimer_,
                        network_,
                        log_,
                        directory_ / "docs",
                        directory_ / "Web"};
  std::shared_ptr<HTTPConfig> config_ = std::make_shared<HTTPConfig>();
  std::unique_ptr<HTTPConnection> connection_;
};

TEST_F(WebTest, AnswersEachPath) {
  putPeople(contacts_, {person().firstName("Ada")});
  struct Row {
    std::string method, uri, body, answer;
    int status = 200;
  };
  for (const auto& [method, uri, body, answer, status] : std::vector<Row>{
           {"GET", "/", "", "the editor"},
           {"GET", "/edit.html?x=1", "", "the editor"},
           {"GET", "/%65dit.html", "", "the editor"},
           {"GET", "/../docs/backup", "", "", 404},
           {"GET", "/nothing", "", "", 404},
           {"GET", "/saverecord.json", "", "", 404},
           {"GET", "/Records.json", "", "", 404},
           {"GET", "/records.json/", "", R"("id":"1"}]})"},
           {"GET", "/record.json", "", R"({"image":"","items":)"},
           {"POST", "/record.json", "1", R"("value":"Ada")"},
           {"POST", "/record.json", "1\xFF", R"({"label":"First Name","property":"1","value":""})"},
           {"POST", "/saverecord.json", R"({"id":1,"records":[{"name":1,"value":"Eve"}]})",
            R"({"success":true,"recordId":0})"},
           {"POST", "/saverecord.json", R"({"id":-1000})", R"({"success":true,"recordId":2})"},
           {"POST", "/saverecord.json", "", R"({"success":true,"recordId":0})"},
           {"POST", "/removerecord.json", " \n", R"({"success":"0"})"},
           {"GET", "/removerecord.json", "", R"({"success":"0"})"},
           {"POST", "/removerecord.json", "1\xFF", R"({"success":"0"})"},
           {"POST", "/removerecord.json", "2", R"({"success":"1"})"},
           {"POST", "/removerecord.json", "2", R"({"success":"0"})"},
           {"GET", "/records.json", "", R"("records":[{"name":"Eve","lastName":"","id":"1"}]})"},
       }) {
    const Answer given = send(method, uri, body.empty() ? std::vector<std::string>() : std::vector{body});
    EXPECT_EQ(given.status, status) << method << " " << uri;
    EXPECT_THAT(given.body, HasSubstr(answer)) << method << " " << uri;
    if (status == 200 && uri.find("record") != std::string::npos) {
      EXPECT_EQ(given.fields.at("Content-Type"), "application/json") << uri;
      EXPECT_EQ(given.fields.at("Accept"), "application/json") << uri;
    }
  }
}

TEST_F(WebTest, TellsThePageOfASaveThatFailed) {
  contacts_.failNextCommit({Status::Code::noSpace, "full"});
  const Answer answer = post("/saverecord.json", R"({"id":-1000})");
  EXPECT_EQ(answer.status, 500);
  EXPECT_EQ(answer.body, R"({"success":true,"recordId":-1})");
}

TEST_F(WebTest, FillsThePagesAfterTheFirstBackup) {
  EXPECT_EQ(get("/upload.html").status, 404);
  EXPECT_EQ(get("/download.html").status, 404);
  EXPECT_EQ(get("/backup.vcf").status, 404);
  backUp("a<&\"'.csv");
  EXPECT_EQ(get("/upload.html").body, "[a&lt;&amp;&quot;&#39;.csv] WIFI_UPLOAD_01 WIFI_UPLOAD_02 %%OTHER%%");
  EXPECT_EQ(get("/download.html").body, "[a&lt;&amp;&quot;&#39;.csv] DOWNLOAD_INFO_01 DOWNLOAD_INFO_03");
}

TEST_F(WebTest, QuirkEveryBackupIsAVCardToTheBrowser) {
  backUp("b.zip");
  const Answer answer = get("/b.zip");
  EXPECT_EQ(answer.body, "the backup");
  EXPECT_EQ(answer.fields,
            (std::map<std::string, std::string>{{"Content-Type", "text/x-vcard"},
                                                {"Content-Disposition", "inline; filename=b.zip"},
                                                {"Pragma", "public"},
                                                {"Expires", "0"},
                                                {"Cache-Control", "must-revalidate, post-check=0, pre-check=0"}}));
  std::filesystem::remove(directory_ / "docs/backup");
  EXPECT_EQ(get("/b.zip").status, 404);
}

TEST_F(WebTest, StoresAnUpload) {
  backUp("b.vcf");
  const Answer answer = post("/upload.html", form("C:\\a%20b.vcf", "new\r\n--b"));
  EXPECT_THAT(answer.body, HasSubstr("[b.vcf]"));
  EXPECT_EQ(documents(), "a b.vcf=new\r\n--b backup=the backup");
  post("/upload.html", form("a b.vcf", "newer"));
  EXPECT_EQ(documents(), "a b.vcf=newer backup=the backup");
  const auto mode = std::filesystem::status(directory_ / "docs/a b.vcf").permissions();
  EXPECT_EQ(mode, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

// Once the part header has come whole, the rest may come in any pieces.
TEST_F(WebTest, StoresAnUploadHoweverItIsCut) {
  const std::string body = form("f", "0123456789\r\n\r\n--\r\n");
  const std::size_t header = body.find("\r\n\r\n") + 4;
  config_->limits.firstPiece = header + 1;
  for (std::size_t cut = header + 1; cut < body.size(); ++cut) {
    send("POST", "/upload.html", {body.substr(0, cut), body.substr(cut)});
    ASSERT_EQ(documents(), "f=0123456789\r\n\r\n--\r\n") << cut;
    std::filesystem::remove(directory_ / "docs/f");
  }
}

TEST_F(WebTest, StoresNoUploadWithoutAPlainName) {
  backUp("b.vcf");
  std::filesystem::create_symlink(directory_ / "Web/edit.html", directory_ / "docs/link");
  std::filesystem::create_directory(directory_ / "docs/folder");
  const std::string noHeader = "--b\r\nX: y\r\n\r\nfile\r\n--b--\r\n";
  struct Row {
    std::string body;
    int status = 200;
    std::string answer;
  };
  for (const auto& [body, status, answer] : std::vector<Row>{
           {form("", "x"), 200, "<script> location.href ='upload.html'; </script>"},
           {form("..", "x"), 200, "[b.vcf]"},
           {form("%2e%2e%2fWeb%2fedit.html", "x"), 200, "[b.vcf]"},
           {form("records.json", "x"), 200, "[b.vcf]"},
           {form(".a.part-abcdef", "x"), 200, "[b.vcf]"},
           {form("folder", "x"), 500, ""},
           {noHeader, 404, ""},
           {"--b\r\n\r\nx\r\n--b--\r\n", 404, ""},
           {"\r\nx", 404, ""},
           {"--b\r\nContent-Disposition: form-data; filename=\"a\"\r\nnever ends", 200, "[b.vcf]"},
       }) {
    const Answer given = post("/upload.html", body);
    EXPECT_EQ(given.status, status) << body;
    EXPECT_THAT(given.body, HasSubstr(answer)) << body;
  }
  std::filesystem::remove(directory_ / "docs/folder");
  EXPECT_EQ(documents(), "backup=the backup link=the editor");
  post("/upload.html", form("link", "x"));
  EXPECT_EQ(contentOf(directory_ / "Web/edit.html"), "the editor");
  EXPECT_EQ(documents(), "backup=the backup link=x");
}

TEST_F(WebTest, DropsAnUploadThatIsCutShort) {
  {
    HTTPExchange exchange(connection(), config_);
    const std::string body = form("f", std::string(100'000, 'x'));
    EXPECT_EQ(exchange.begin(head("POST", "/upload.html"), body.size()), nullptr);
    EXPECT_TRUE(exchange.receive(std::string_view(body).substr(0, 50'000)));
    EXPECT_NE(documents(), "");
  }
  connection_.reset();
  EXPECT_EQ(documents(), "");
}

TEST_F(WebTest, KeepsNothingFromOneRequestToTheNext) {
  putPeople(contacts_, {person().firstName("Ada")});
  post("/record.json", "1");
  EXPECT_THAT(get("/removerecord.json").body, HasSubstr("\"0\""));
  post("/upload.html", form("f", "x"));
  EXPECT_THAT(get("/records.json").body, HasSubstr("Ada"));
  EXPECT_THAT(post("/record.json", "1").body, HasSubstr("Ada"));
}

TEST_F(WebTest, TakesNoLongerBodiesThanItNeeds) {
  EXPECT_EQ(connection().largestBody("POST", "/saverecord.json"), 16U << 20U);
  const std::uint64_t space = files_.freeSpace(directory_ / "docs");
  const std::uint64_t left = space - connection().largestBody("POST", "/upload.html");
  EXPECT_NEAR(static_cast<double>(left), 200 << 20, 50 << 20);
}

TEST_F(WebTest, ReadOnlyChangesNothing) {
  preferences_.setBool(true, key::WEB_READ_ONLY);
  putPeople(contacts_, {person().firstName("Ada")});
  EXPECT_EQ(post("/saverecord.json", R"({"id":1,"records":[{"name":1,"value":"Eve"}]})").status, 403);
  EXPECT_EQ(post("/removerecord.json", "1").status, 403);
  EXPECT_EQ(post("/upload.html", form("f", "x")).status, 403);
  EXPECT_EQ(post("/record.json", form("f", "x")).status, 200);
  EXPECT_EQ(documents(), "");
  EXPECT_THAT(post("/record.json", "1").body, HasSubstr("Ada"));
}

TEST_F(WebTest, TheAccessCodeLetsIn) {
  preferences_.setBool(true, key::WEB_ACCESS_CODE);
  random_.upcoming = 7'000'042;  // The code is 000042.
  for (const std::string uri : {"/", "/records.json", "/access", "/nothing"}) {
    const Answer answer = get(uri);
    EXPECT_EQ(answer.status, 403) << uri;
    EXPECT_THAT(answer.body, HasSubstr("ACCESS_CODE_INFO"));
    EXPECT_EQ(answer.fields.at("Content-Type"), "text/html; charset=utf-8");
  }
  EXPECT_EQ(post("/saverecord.json", R"({"id":-1000})").status, 403);
  EXPECT_EQ(post("/access", form("f", "x")).status, 403);
  EXPECT_EQ(documents(), "");

  const Answer admission = post("/access", "code=000042");
  EXPECT_EQ(admission.status, 302);
  EXPECT_EQ(admission.fields.at("Location"), "/");
  const std::string set = admission.fields.at("Set-Cookie");
  EXPECT_THAT(set, testing::EndsWith("; Path=/; HttpOnly; SameSite=Strict"));
  const std::string cookie = set.substr(0, set.find(';'));
  EXPECT_EQ(send("GET", "/", {}, {{"cookie", "a=b; " + cookie + "; c=d"}}).body, "the editor");
  EXPECT_EQ(send("GET", "/access", {}, {{"Cookie", cookie}}).fields.at("Location"), "/");
  for (const std::string& wrong : {cookie + "0", cookie.substr(0, cookie.size() - 1), std::string("varnok_access=")}) {
    EXPECT_EQ(send("GET", "/", {}, {{"Cookie", wrong}}).status, 403);
  }
}

TEST_F(WebTest, WrongCodesAreFewAndSlow) {
  preferences_.setBool(true, key::WEB_ACCESS_CODE);
  random_.upcoming = 42;
  const std::string right = "code=000042";
  for (const char* wrong : {"code=000041", "code=", "", "000042", "code=0000420"}) {
    EXPECT_EQ(send("POST", "/access", {std::string(wrong)}).status, 403) << wrong;
  }
  EXPECT_EQ(post("/access", right).status, 429);
  EXPECT_EQ(post("/access", right).fields.at("Retry-After"), "30");
  clock_.seconds += 29;
  EXPECT_EQ(post("/access", right).status, 429);
  clock_.seconds += 1;
  EXPECT_EQ(post("/access", right).status, 302);
  EXPECT_EQ(post("/access", "code=1").status, 403);
}

}  // namespace
}  // namespace varnok
