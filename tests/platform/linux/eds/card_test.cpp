#include "platform/linux/eds/card.h"

#include <gtest/gtest.h>

#include "contacts/address_book.h"
#include "platform/linux/eds/card_photo.h"
#include "platform/linux/eds/card_writer.h"
#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/text/icu_text_codec.h"

namespace varnok {
namespace {

class Cards : public testing::Test {
 protected:
  PersonRef read(const std::string& lines) { return reader_.read(cardOf(lines)); }
  static Card cardOf(const std::string& lines) {
    return Card("BEGIN:VCARD\r\nVERSION:3.0\r\n" + lines + "END:VCARD\r\n");
  }
  // The card after the change, without its frame.
  std::string changed(const std::string& lines, PropertyID property, std::optional<PropertyValue> value) {
    Card card = cardOf(lines);
    applyChanges(card, {{{property, std::move(value)}}, {}}, reader_);
    std::string text;
    for (const std::string& line : card.lines())
      text += line + "\n";
    return text;
  }

  PosixClock clock_;
  IcuTextCodec codec_;
  CardReader reader_{codec_, clock_};
};

MultiValue texts(std::vector<MultiValueEntry> entries) {
  return {PropertyType::multiText, std::move(entries)};
}

// What Evolution writes by itself.
TEST_F(Cards, OfOtherProgramsAreRead) {
  const PersonRef person = read(
      "FN:Ada L\r\nN:L;Ada;;;\r\nX-EVOLUTION-FILE-AS:L\\, Ada\r\nX-EVOLUTION-SPOUSE:William\r\n"
      "X-EVOLUTION-ANNIVERSARY:1835-07-08\r\nX-JABBER;TYPE=HOME:ada@example.org\r\nURL:http://a\r\n"
      "X-EVOLUTION-BLOG-URL:http://b\r\nTEL;X-EVOLUTION-E164=2125551234,\"+1\";TYPE=\"WORK\",VOICE:+1 212 555 1234\r\n"
      "item1.EMAIL;TYPE=OTHER:a@b\r\nitem1.X-ABLabel:my\\, own\r\nNOTE:long lin\r\n e\\nnext\r\nX-OTHER:x\r\n");
  EXPECT_EQ(copyText(person, kABPersonFirstNameProperty), "Ada");
  EXPECT_EQ(copyText(person, kABPersonNoteProperty), "long line\nnext");
  EXPECT_EQ(copyList(person, kABPersonRelatedNamesProperty), texts({{"_$!<Spouse>!$_", "William"}}));
  EXPECT_EQ(copyList(person, kABPersonURLProperty), texts({{std::nullopt, "http://a"}, {std::nullopt, "http://b"}}));
  EXPECT_EQ(copyList(person, kABPersonPhoneProperty), texts({{std::string(label::kWork), "+1 212 555 1234"}}));
  EXPECT_EQ(copyList(person, kABPersonEmailProperty), texts({{"my, own", "a@b"}}));
  EXPECT_EQ(copyList(person, kABPersonDateProperty).entries.at(0).label, label::kAnniversary);
  EXPECT_EQ(copyList(person, kABPersonInstantMessageProperty).entries.at(0).value,
            EntryValue(Dictionary{{"service", "Jabber"}, {"username", "ada@example.org"}}));
}

TEST_F(Cards, ListsOfPeopleAreNobody) {
  EXPECT_FALSE(isPersonCard(cardOf("FN:All\r\nX-EVOLUTION-LIST:TRUE\r\n")));
  EXPECT_FALSE(isPersonCard(cardOf("FN:All\r\nKIND:group\r\n")));
  EXPECT_TRUE(isPersonCard(cardOf("FN:Ada\r\nX-EVOLUTION-LIST:FALSE\r\n")));
}

// Lines that the desktop's programs show; each alone, so without an exact value.
TEST_F(Cards, AreWrittenAsOthersReadThem) {
  const auto instant = [](std::int64_t seconds) { return Instant(std::chrono::seconds(seconds)); };
  const auto dates = [](std::optional<std::string> label, Instant value) {
    return MultiValue{PropertyType::multiDateTime, {{std::move(label), value}}};
  };
  const auto dictionaries = [](std::optional<std::string> label, Dictionary value) {
    return MultiValue{PropertyType::multiDictionary, {{std::move(label), std::move(value)}}};
  };
  struct Row {
    PropertyID property;
    PropertyValue value;
    std::string lines;
  };
  for (const auto& [property, value, lines] : {
           Row{kABPersonPhoneProperty, texts({{std::string(label::kHomeFAX), "1"}}), "TEL;TYPE=HOME,FAX:1\n"},
           Row{kABPersonPhoneProperty, texts({{std::nullopt, "1"}}), "TEL:1\n"},
           Row{kABPersonPhoneProperty, texts({{"a;b", "1"}}), "item1.TEL;TYPE=VOICE:1\nitem1.X-ABLabel:a\\;b\n"},
           Row{kABPersonEmailProperty, texts({{std::string(label::kWork), "a@b"}}), "EMAIL;TYPE=WORK:a@b\n"},
           Row{kABPersonOrganizationProperty, "A; B", "FN:A\\; B\nN:;;;;\nX-EVOLUTION-FILE-AS:A\\; B\nORG:A\\; B\n"},
           Row{kABPersonNoteProperty, "a\nb, c", "NOTE:a\\nb\\, c\n"},
           Row{kABPersonBirthdayProperty, instant(43'200), "BDAY:1970-01-01\n"},
           Row{kABPersonBirthdayProperty, instant(7), "BDAY:1970-01-01T00:00:07+00:00\n"},
           Row{kABPersonDateProperty, dates(std::string(label::kAnniversary), instant(43'200)),
               "X-EVOLUTION-ANNIVERSARY:1970-01-01\n"},
           Row{kABPersonDateProperty, dates(std::nullopt, instant(-11'549'822'400)),
               "X-ABDATE;X-APPLE-OMIT-YEAR=1604:1604-01-01\n"},
           Row{kABPersonRelatedNamesProperty, texts({{"_$!<Manager>!$_", "M"}}), "X-EVOLUTION-MANAGER:M\n"},
           Row{kABPersonAddressProperty, dictionaries(std::string(label::kHome), {{"Street", "S 1\nx"}, {"City", "C"}}),
               "ADR;TYPE=HOME:;;S 1\\nx;C;;;\n"},
           Row{kABPersonInstantMessageProperty, dictionaries(std::nullopt, {{"service", "Skype"}, {"username", "u"}}),
               "X-SKYPE:u\n"},
           Row{kABPersonInstantMessageProperty, dictionaries(std::nullopt, {{"service", "Foo"}, {"username", "u?/"}}),
               "IMPP;X-SERVICE-TYPE=Foo:x-apple:u%3F%2F\n"},
           Row{kABPersonSocialProfileProperty, dictionaries(std::nullopt, {{"service", "sn"}, {"username", "u"}}),
               "X-SOCIALPROFILE;TYPE=sn:u\n"},
       }) {
    const std::string frame = property == kABPersonOrganizationProperty ? "" : "FN:\nN:;;;;\n";
    std::string written = changed("", property, value);
    if (written.ends_with(frame)) written.resize(written.size() - frame.size());
    if (written.starts_with(frame)) written.erase(0, frame.size());
    EXPECT_EQ(written, lines);
  }
}

TEST_F(Cards, OfCompaniesSayThatTheyAre) {
  const std::string written = changed("FN:A\nORG:A\n", kABPersonKindProperty, std::int64_t{kABPersonKindOrganization});
  EXPECT_EQ(written, "FN:A\nORG:A\nX-ABShowAs:COMPANY\n");
  EXPECT_EQ(changed(written, kABPersonKindProperty, std::nullopt), "FN:A\nORG:A\n");
}

TEST_F(Cards, TakeOneLineOfAKindThatStandsOnce) {
  const MultiValue dates{PropertyType::multiDateTime,
                         {{std::string(label::kAnniversary), Instant(std::chrono::seconds(43'200))},
                          {std::string(label::kAnniversary), Instant(std::chrono::seconds(129'600))}}};
  const std::string written = changed("FN:\r\nN:;;;;\r\n", kABPersonDateProperty, dates);
  EXPECT_NE(written.find("item1.X-ABDATE:1970-01-02\nitem1.X-ABLabel:_$!<Anniversary>!$_\n"), std::string::npos)
      << written;
  EXPECT_EQ(written.find("X-VARNOK"), std::string::npos) << written;
}

TEST_F(Cards, KeepTheLinesOfEntriesThatStay) {
  const std::string before =
      "FN:A\nN:;A;;;\nX-A:1\nitem4.TEL;X-Q=5:1\nitem4.X-ABLabel:own\nTEL;TYPE=PREF,HOME:2\nTEL:3\nitem7.URL:u\n"
      "item7.X-ABLabel:page\nLABEL:x\n";
  const std::string after =
      changed(before, kABPersonPhoneProperty,
              texts({{std::string(label::kHome), "2"}, {"own", "1"}, {std::string(label::kMobile), "4"}}));
  EXPECT_EQ(after,
            "FN:A\nN:;A;;;\nX-A:1\nTEL;TYPE=PREF,HOME:2\nitem4.TEL;X-Q=5:1\nTEL;TYPE=CELL:4\nitem4.X-ABLabel:own\n"
            "item7.URL:u\nitem7.X-ABLabel:page\nLABEL:x\n");
  EXPECT_EQ(changed(before, kABPersonPhoneProperty, std::nullopt),
            "FN:A\nN:;A;;;\nX-A:1\nitem7.URL:u\nitem7.X-ABLabel:page\nLABEL:x\n");
}

// An exact value counts as long as nobody else has changed what it is about.
TEST_F(Cards, GiveWayToTheEditsOfOthers) {
  const MultiValue odd = texts({{"", std::string("1\0 2", 4)}, {std::nullopt, ""}});
  std::string card = changed("", kABPersonPhoneProperty, odd);
  EXPECT_EQ(copyList(read(card), kABPersonPhoneProperty), odd);
  EXPECT_EQ(copyList(read(changed(card, kABPersonNoteProperty, "n")), kABPersonPhoneProperty), odd);
  const std::size_t number = card.find("TEL:1 2");
  ASSERT_NE(number, std::string::npos) << card;
  card.replace(number, 7, "TEL:9");
  EXPECT_EQ(copyList(read(card), kABPersonPhoneProperty), texts({{std::nullopt, "9"}}));
}

TEST_F(Cards, ThatAreDamagedAreReadAsFarAsTheyGo) {
  for (const char* lines : {"X-VARNOK-EXACT:\r\n", "X-VARNOK-EXACT:kABPersonNoteProperty;zz;\r\n",
                            "X-VARNOK-EXACT:kABPersonDateProperty;0;eHg=\r\n", "X-VARNOK-EXACT:x;0;-\r\n", ":\r\n",
                            "X-VARNOK-EXACT\r\n", "item1.:\r\n"}) {
    EXPECT_EQ(copyText(read(std::string("FN:Ada\r\n") + lines), kABPersonFirstNameProperty), "Ada") << lines;
  }
}

TEST_F(Cards, NameNoFilesOfOthersAsPictures) {
  EXPECT_EQ(photoOf(cardOf("PHOTO;VALUE=uri:file:///etc/passwd\r\n")), std::nullopt);
  EXPECT_FALSE(hasPhoto(cardOf("PHOTO;VALUE=uri:file:///etc/passwd\r\n")));
  EXPECT_FALSE(hasPhoto(cardOf("PHOTO;VALUE=uri:http://example.org/a.jpg\r\n")));
  EXPECT_EQ(photoOf(cardOf("PHOTO;ENCODING=b;TYPE=JPEG:YWJj\r\n")), "abc");
}

}  // namespace
}  // namespace varnok
