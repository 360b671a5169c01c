#include "export/vcf_exporter.h"

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "backup/files/vnk_util.h"
#include "support/export_surroundings.h"
#include "support/person_builder.h"

namespace varnok {
namespace {

using Function = VCFExporter::Lines (*)(const PersonRef&, const ExportServices&);

struct Surroundings : ExportSurroundings {
  std::string card(const PersonRef& person) const {
    return written([&](OutputStream& stream) { return VCFExporter::exportPerson(stream, person, "en", services); });
  }
};

constexpr std::int64_t kInstant = 1709644029;  // 2024-03-05 13:07:09 UTC.

struct LinesCase {
  std::string name;
  Function function;
  PersonRef person;
  VCFExporter::Lines expected;
  int itemsUsed = 0;
};

class VCardLines : public testing::TestWithParam<LinesCase> {};

TEST_P(VCardLines, AreWrittenAndCounted) {
  Surroundings surroundings;
  surroundings.preferences.setInteger(7, key::itemCount);
  EXPECT_EQ(GetParam().function(GetParam().person, surroundings.services), GetParam().expected);
  EXPECT_EQ(surroundings.preferences.integerForKey(key::itemCount), 7 + GetParam().itemsUsed);
  EXPECT_EQ(surroundings.preferences.flushes, GetParam().itemsUsed);
}

struct ByName {
  template <typename Info>
  std::string operator()(const Info& tested) const {
    return tested.param.name;
  }
};

using E = VCFExporter;
const std::string kMobile(label::kMobile);
const std::string kHome(label::kHome);
const std::string kWork(label::kWork);

INSTANTIATE_TEST_SUITE_P(
    Single, VCardLines,
    testing::Values(
        LinesCase{"EmptyName", &E::vCard_N, person(), "N;CHARSET=UTF-8:;;;;\r\n"},
        LinesCase{"NameInOrder", &E::vCard_N,
                  person()
                      .lastName("L")
                      .firstName("F")
                      .text(kABPersonMiddleNameProperty, "M")
                      .text(kABPersonPrefixProperty, "P")
                      .text(kABPersonSuffixProperty, "S"),
                  "N;CHARSET=UTF-8:L;F;M;P;S\r\n"},
        LinesCase{"CarriageReturnGoesLineFeedIsEscaped", &E::vCard_N, person().firstName("A\r\nB"),
                  "N;CHARSET=UTF-8:;A\\nB;;;\r\n"},
        LinesCase{"NoComposite", &E::vCard_FN, person(), std::nullopt},
        LinesCase{"CompositeFromName", &E::vCard_FN,
                  person().firstName("Ada").lastName("King").text(kABPersonPrefixProperty, "Lady"),
                  "FN;CHARSET=UTF-8:Lady Ada King\r\n"},
        LinesCase{"CompositeFromOrganization", &E::vCard_FN,
                  person().firstName("").text(kABPersonOrganizationProperty, "ACME\n"), "FN;CHARSET=UTF-8:ACME\\n\r\n"},
        LinesCase{"Nickname", &E::vCard_NICKNAME, person().text(kABPersonNicknameProperty, "a;b"),
                  "NICKNAME;CHARSET=UTF-8:a;b\r\n"},
        LinesCase{"Phonetic", &E::vCard_X_PHONETIC_LAST_NAME, person().text(kABPersonLastNamePhoneticProperty, "k"),
                  "X-PHONETIC-LAST-NAME;CHARSET=UTF-8:k\r\n"},
        LinesCase{"QuirkTitleIsRaw", &E::vCard_TITLE, person().text(kABPersonJobTitleProperty, "a;b\n"),
                  "TITLE;CHARSET=UTF-8:a;b\n\r\n"},
        LinesCase{"OrganizationAlways", &E::vCard_ORG, person(), "ORG;CHARSET=UTF-8:;\r\n"},
        LinesCase{"NoteEscapesSemicolonFirst", &E::vCard_NOTE, person().note("a;\r\nb\\n"),
                  "NOTE;CHARSET=UTF-8:a\\;\\nb\\n\r\n"},
        LinesCase{"Birthday", &E::vCard_BDAY, person().birthday(kInstant), "BDAY;CHARSET=UTF-8:2024-03-05\r\n"},
        LinesCase{"NoBirthday", &E::vCard_BDAY, person(), std::nullopt},
        LinesCase{"Profiles", &E::vCard_X_SOCIALPROFILE,
                  person()
                      .entry(kABPersonSocialProfileProperty, "x", Dictionary{{"service", "s"}, {"username", "u"}})
                      .entry(kABPersonSocialProfileProperty, std::nullopt, Dictionary()),
                  "X-SOCIALPROFILE;CHARSET=UTF-8;TYPE=s:u\r\nX-SOCIALPROFILE;CHARSET=UTF-8;TYPE=:\r\n"}),
    ByName());

INSTANTIATE_TEST_SUITE_P(
    Lists, VCardLines,
    testing::Values(
        LinesCase{"NoPhones", &E::vCard_TEL, person(), std::nullopt},
        LinesCase{"PlatformLabel", &E::vCard_TEL, person().phone(kMobile, "555"),
                  "TEL;CHARSET=UTF-8;TYPE=CELL:555\r\n"},
        LinesCase{"NoLabel", &E::vCard_TEL, person().phone(std::nullopt, "555"),
                  "item7.TEL;CHARSET=UTF-8:555\r\nitem7.X-ABLabel:(null)\r\n", 1},
        LinesCase{"OtherLabelsStayStored", &E::vCard_TEL,
                  person().phone(std::string(label::kHomeFAX), "1").phone(kHome, "2").phone("iPhone", "3"),
                  "item7.TEL;CHARSET=UTF-8:1\r\nitem7.X-ABLabel:_$!<HomeFAX>!$_\r\nTEL;CHARSET=UTF-8;TYPE=HOME:2\r\n"
                  "item8.TEL;CHARSET=UTF-8:3\r\nitem8.X-ABLabel:iPhone\r\n",
                  2},
        LinesCase{"LabelsAreCaseSensitive", &E::vCard_TEL, person().phone("_$!<work>!$_", "1"),
                  "item7.TEL;CHARSET=UTF-8:1\r\nitem7.X-ABLabel:_$!<work>!$_\r\n", 1},
        LinesCase{"EachSemicolonOfAPhoneIsEscaped", &E::vCard_TEL, person().phone(kWork, "1;2;3"),
                  "TEL;CHARSET=UTF-8;TYPE=WORK:1\\;2\\;3\r\n"},
        LinesCase{"QuirkEmailIsRaw", &E::vCard_EMAIL, person().email(kWork, "a;b@c"),
                  "EMAIL;CHARSET=UTF-8;TYPE=WORK:a;b@c\r\n"},
        LinesCase{"QuirkDatesPluralWhenTyped", &E::vCard_DATE, person().date(kHome, kInstant).date("party", -1),
                  "X-ABDATES;CHARSET=UTF-8;TYPE=HOME:2024-03-05 13:07:09 +0000\r\n"
                  "item7.X-ABDATE;CHARSET=UTF-8:1969-12-31 23:59:59 +0000\r\nitem7.X-ABLabel:party\r\n",
                  1},
        LinesCase{"QuirkTypedAddressHasABareType", &E::vCard_ADR,
                  person().address(kHome, Dictionary{{"Street", "1;\r\n2"}, {"City", "c;"}, {"ZIP", "z"}}),
                  "ADR;CHARSET=UTF-8;HOME:;;1\\;\\n2;c;;;z;\r\n"},
        LinesCase{"QuirkAddressLabelCarriesACharset", &E::vCard_ADR, person().address("x", Dictionary()),
                  "item7.ADR;CHARSET=UTF-8:;;;;;;\r\nitem7.X-ABLabel;CHARSET=UTF-8:x\r\n", 1},
        LinesCase{"Messages", &E::vCard_IM,
                  person()
                      .entry(kABPersonInstantMessageProperty, kWork, Dictionary{{"service", "Jab"}, {"username", "u"}})
                      .entry(kABPersonInstantMessageProperty, std::nullopt, Dictionary{{"service", "ICQ"}}),
                  "X-Jab;TYPE=WORK;CHARSET=UTF-8:u\r\n"
                  "item7.X-ICQ;CHARSET=UTF-8:\r\nitem7.X-ABLabel;CHARSET=UTF-8:(null)\r\n",
                  1},
        LinesCase{"Family", &E::vCard_FAMILIY,
                  person().entry(kABPersonRelatedNamesProperty, "_$!<Mother>!$_", EntryValue(std::string("M"))),
                  "item7.X-ABRELATEDNAMES;CHARSET=UTF-8:M\r\nitem7.X-ABLabel:_$!<Mother>!$_\r\n", 1}),
    ByName());

TEST(VCardPhoto, GoesOutReducedAsStoredOrAsItIs) {
  const Surroundings surroundings;
  const auto photo = [&](const std::string& bytes, bool shrink) {
    return VCFExporter::vCard_PHOTO(person().image(bytes), shrink, surroundings.services);
  };
  EXPECT_EQ(photo("400x100", true),
            "PHOTO;ENCODING=b;TYPE=JPEG:" + VNKUtil::encodeBASE64("jpeg 960x240 at 0.0") + "\r\n");
  EXPECT_EQ(photo("100x400", true),
            "PHOTO;ENCODING=b;TYPE=JPEG:" + VNKUtil::encodeBASE64("jpeg 240x960 at 0.0") + "\r\n");
  EXPECT_EQ(photo("9999x1", true), "PHOTO;ENCODING=b;TYPE=JPEG:" + VNKUtil::encodeBASE64("jpeg 960x1 at 0.0") + "\r\n");
  // PNG bytes too go out under TYPE=JPEG.
  EXPECT_EQ(photo("\x89PNG", false), "PHOTO;ENCODING=b;TYPE=JPEG:iVBORw==\r\n");
  EXPECT_EQ(photo("no picture", true), "PHOTO;ENCODING=b;TYPE=JPEG:" + VNKUtil::encodeBASE64("no picture") + "\r\n");
  EXPECT_EQ(VCFExporter::vCard_PHOTO(person(), true, surroundings.services), std::nullopt);
}

TEST(VCardCard, OfAPersonWithoutAnything) {
  Surroundings surroundings;
  EXPECT_EQ(surroundings.card(person()),
            "BEGIN:VCARD\r\nVERSION:3.0\r\nN;CHARSET=UTF-8:;;;;\r\nORG;CHARSET=UTF-8:;\r\nEND:VCARD\r\n\n");
}

TEST(VCardCard, ItemNumbersRunThroughAllCardsAndBadTextIsMadeValid) {
  Surroundings surroundings;
  surroundings.card(person().phone("a", "1").phone("b", "2"));
  EXPECT_NE(surroundings.card(person().phone("c", "3")).find("item2.TEL"), std::string::npos);
  EXPECT_NE(surroundings
                .card(person().firstName(std::string("a\xff"
                                                     "b\xc3",
                                                     4)))
                .find(";a\uFFFDb\uFFFD;"),
            std::string::npos);
}

}  // namespace
}  // namespace varnok
