#include "platform/linux/curl/dropbox_sign_in.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/curl/content_hash.h"
#include "platform/linux/curl/dropbox_json.h"
#include "platform/linux/curl/dropbox_service.h"

namespace varnok {
namespace {

using testing::HasSubstr;

constexpr const char* kKey = "k3y";

TEST(SignIn, AsksForACodeThatOnlyThisProgramCanUse) {
  const DropboxSignIn first = beginSignIn(kKey, "https://page");
  const DropboxSignIn second = beginSignIn(kKey, "https://page");
  EXPECT_NE(first.verifier, second.verifier);
  EXPECT_NE(first.state, second.state);
  EXPECT_GE(first.verifier.size(), 43U);
  EXPECT_THAT(first.url, HasSubstr("code_challenge=" + base64URL(sha256(first.verifier))));
  EXPECT_THAT(first.url, testing::Not(HasSubstr(first.verifier)));
}

// Verifier and challenge of RFC 7636, appendix B.
TEST(SignIn, HashesTheProofKeyAsTheStandardDoes) {
  EXPECT_EQ(base64URL(sha256("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk")),
            "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}

struct RedirectCase {
  std::string name;
  std::string url;
  std::optional<DropboxRedirect> redirect;
};

void PrintTo(const RedirectCase& c, std::ostream* out) {
  *out << c.url;
}

class Redirects : public testing::TestWithParam<RedirectCase> {};

TEST_P(Redirects, AreTakenApart) {
  EXPECT_EQ(parseRedirect(GetParam().url, kKey), GetParam().redirect);
}

INSTANTIATE_TEST_SUITE_P(
    , Redirects,
    testing::Values(
        RedirectCase{"Code", "db-k3y://2/token?code=c%2B1&state=s", DropboxRedirect{"c+1", "s", "", ""}},
        RedirectCase{"Pasted", " \r\n db-k3y://2/token?state=s&code=c \n", DropboxRedirect{"c", "s", "", ""}},
        RedirectCase{"CapitalsOfTheScheme", "DB-K3Y://2/token?code=C", DropboxRedirect{"C", "", "", ""}},
        RedirectCase{"Refusal", "db-k3y://2/token?error=e&error_description=two+words%21",
                     DropboxRedirect{"", "", "e", "two words!"}},
        RedirectCase{"CutEscape", "db-k3y://2/token?code=%4&state=%zz", DropboxRedirect{"%4", "%zz", "", ""}},
        RedirectCase{"FragmentAndUnknownFields", "db-k3y://x?x&&=&code#state=s", DropboxRedirect{}},
        RedirectCase{"NoQuery", "db-k3y://", DropboxRedirect{}},
        RedirectCase{"AnotherApplication", "db-k3yy://2/token?code=c", std::nullopt},
        RedirectCase{"AWebAddress", "https://x/?db-k3y://2/token?code=c", std::nullopt},
        RedirectCase{"Nothing", "", std::nullopt}, RedirectCase{"Blanks", " \n", std::nullopt}),
    [](const testing::TestParamInfo<RedirectCase>& row) { return row.param.name; });

TEST(AsciiJson, HoldsEveryCharacter) {
  EXPECT_EQ(asciiJson("a\"\\\n\x7f"
                      "é日\U0001F600\xff"),
            R"("a\"\\\n\u007f\u00e9\u65e5\ud83d\ude00\ufffd")");
}

TEST(ContentHash, DoesNotDependOnThePieces) {
  const std::string bytes(kHashBlock * 2 + 5, 'x');
  for (const std::size_t size : {bytes.size(), kHashBlock, kHashBlock - 1, std::size_t{4099}}) {
    ContentHash hash;
    for (std::size_t i = 0; i < bytes.size(); i += size)
      hash.update(std::string_view(bytes).substr(i, size));
    const std::string block = sha256(std::string(kHashBlock, 'x'));
    EXPECT_EQ(hash.finish(), hexText(sha256(block + block + sha256("xxxxx")))) << size;
  }
  EXPECT_EQ(ContentHash().finish(), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(Addresses, ArePlainOnlyOnThisMachine) {
  for (const char* base : {"https://service.test", "http://127.0.0.1:80", "http://localhost", "http://[::1]:8"}) {
    Status status;
    EXPECT_EQ(dropboxAddresses(std::string(base) + "/", "", status).api, base);
    EXPECT_TRUE(status.ok()) << base;
  }
  for (const char* base : {"http://service.test", "http://127.0.0.1@service.test", "http://localhost.service.test",
                           "ftp://127.0.0.1", "127.0.0.1", "http://1270.0.0.1", "http://127.evil.test"}) {
    Status status;
    dropboxAddresses(base, "", status);
    EXPECT_FALSE(status.ok()) << base;
  }
}

}  // namespace
}  // namespace varnok
