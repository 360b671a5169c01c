#include "export/csv_exporter.h"

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "support/export_surroundings.h"
#include "support/person_builder.h"

namespace varnok {
namespace {

struct Surroundings : ExportSurroundings {
  FakeTextCatalog texts;

  std::string row(const PersonRef& person) const {
    return written([&](OutputStream& stream) { return CSVExporter::exportPerson(stream, person, "en", services); });
  }
};

constexpr std::int64_t kInstant = 1709644029;  // 2024-03-05 13:07:09 UTC.

using E = CSVExporter;
const std::string kHome(label::kHome);
const std::string kWork(label::kWork);
const std::string kMobile(label::kMobile);
const std::string kAnniversary(label::kAnniversary);

PersonBuilder withURLs(const std::vector<std::pair<std::string, std::string>>& urls) {
  PersonBuilder built = person();
  for (const auto& [label, url] : urls)
    built.entry(kABPersonURLProperty, label, EntryValue(url));
  return built;
}

PersonBuilder withEmails(int count) {
  PersonBuilder built = person();
  for (int i = 1; i <= count; ++i)
    built.email(i == 1 ? PersonBuilder::Label() : "own", "e" + std::to_string(i));
  return built;
}

struct ColumnsCase {
  std::string name;
  std::string (*function)(const PersonRef&, const ExportServices&);
  PersonRef person;
  std::string expected;
};

class CSVColumns : public testing::TestWithParam<ColumnsCase> {};

TEST_P(CSVColumns, HoldTheValuesInTheirPlaces) {
  Surroundings surroundings;
  surroundings.clock.offset = std::chrono::hours(11);  // The local day is the next one.
  EXPECT_EQ(GetParam().function(GetParam().person, surroundings.services), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Single, CSVColumns,
    testing::Values(
        ColumnsCase{"NoName", &E::CSV_N, person(), ",,,,,,,,"},
        ColumnsCase{"NullPerson", &E::CSV_N, nullptr, ",,,,,,,,"},
        ColumnsCase{"NameInOrder", &E::CSV_N,
                    person()
                        .lastName("L")
                        .firstName("F")
                        .text(kABPersonMiddleNameProperty, "M")
                        .text(kABPersonPrefixProperty, "P")
                        .text(kABPersonSuffixProperty, "S")
                        .text(kABPersonOrganizationProperty, "O")
                        .text(kABPersonDepartmentProperty, "D")
                        .text(kABPersonJobTitleProperty, "J")
                        .text(kABPersonNicknameProperty, "N"),
                    "P,F,M,L,S,O,D,J,N"},
        ColumnsCase{"QuirkACommaShiftsTheColumns", &E::CSV_N, person().lastName("King, Jr. \"Bob\"\n"),
                    ",,,King, Jr. \"Bob\"\n,,,,,"},
        ColumnsCase{"BirthdayIsTheLocalDay", &E::CSV_BDAY, person().birthday(kInstant), ",2024-03-06"},
        ColumnsCase{"NoBirthday", &E::CSV_BDAY, person(), ","}, ColumnsCase{"NoDates", &E::CSV_DATE, person(), ","},
        ColumnsCase{"LastAnniversaryAsAnInstant", &E::CSV_DATE,
                    person().date(kAnniversary, 0).date(kAnniversary, kInstant).date("party", 1).date(std::nullopt, 2),
                    ",2024-03-05 13:07:09 +0000"},
        ColumnsCase{"NoNote", &E::CSV_NOTE, person(), ",\"\""},
        ColumnsCase{"NoteIsQuotedAndOnOneLine", &E::CSV_NOTE, person().note("a \"b\",\r\nc\r\n\"\""),
                    ",\"a \"\"b\"\", c \"\"\"\"\""}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Lists, CSVColumns,
    testing::Values(
        ColumnsCase{"NoPhones", &E::CSV_TEL, person(), ",,,,,,,,,"},
        ColumnsCase{"EveryPhoneLabelHasItsColumn", &E::CSV_TEL,
                    person()
                        .phone(std::string(label::kOther), "9")
                        .phone(std::string(label::kPager), "8")
                        .phone(std::string(label::kWorkFAX), "7")
                        .phone(std::string(label::kHomeFAX), "6")
                        .phone(std::string(label::kMain), "5")
                        .phone(kHome, "4")
                        .phone(kWork, "3")
                        .phone("iPhone", "2")
                        .phone(kMobile, "1"),
                    ",1,2,3,4,5,6,7,8,9"},
        ColumnsCase{"TheLastPhoneOfALabelWins", &E::CSV_TEL, person().phone(kMobile, "1").phone(kMobile, "2"),
                    ",2,,,,,,,,"},
        ColumnsCase{"OtherPhoneLabelsHaveNoColumn", &E::CSV_TEL,
                    person().phone("boat", "1").phone(std::nullopt, "2").phone("Mobile", "3"), ",,,,,,,,,"},
        ColumnsCase{"OneEmail", &E::CSV_EMAIL, withEmails(1), ",e1,,,,,"},
        ColumnsCase{"QuirkTheFirstSixEmailsWhateverTheirLabels", &E::CSV_EMAIL, withEmails(7), ",e1,e2,e3,e4,e5,e6"},
        ColumnsCase{
            "URLs", &E::CSV_URL,
            withURLs({{kWork, "w"}, {"own", "o"}, {std::string(label::kHomePage), "p"}, {kHome, "h"}, {kWork, "v"}}),
            ",p,h,v"},
        ColumnsCase{"NoURLs", &E::CSV_URL, person(), ",,,"}, ColumnsCase{"NoAddress", &E::CSV_ADR, person(), ",,"},
        ColumnsCase{
            "QuirkWorkAddressPrecedesHome", &E::CSV_ADR,
            person()
                .address(kHome, Dictionary{{"Street", "1 St"}})
                .address(kWork, Dictionary{{"City", "first"}})
                .address(kWork,
                         Dictionary{{"Street", "s"}, {"City", "c"}, {"State", "t"}, {"ZIP", "z"}, {"Country", "l"}}),
            ",s c t z l,1 St    "},
        ColumnsCase{
            "OtherAddressesHaveNoColumn", &E::CSV_ADR,
            person().address("boat", Dictionary{{"City", "c"}}).address(std::nullopt, Dictionary{{"City", "d"}}), ",,"},
        ColumnsCase{"OnlyTheStreetIsCleaned", &E::CSV_ADR,
                    person().address(kHome, Dictionary{{"Street", "\"1\"\r\nSt"}, {"City", "\"c\"\n"}}),
                    ",,1 St \"c\"\n   "}),
    [](const auto& tested) { return tested.param.name; });

TEST(CSVRows, BadTextIsMadeValidAndAFullDiskIsReported) {
  const Surroundings surroundings;
  EXPECT_EQ(surroundings.row(person().firstName("a\xff")).substr(0, 6), ",a\uFFFD,");
  InMemoryFileSystem disk;
  Status status;
  const auto stream = disk.createAtomic("csv", status);
  disk.failAppendsAfter(10);
  EXPECT_EQ(CSVExporter::exportTitle(*stream, "en", surroundings.texts, surroundings.services).code(),
            Status::Code::noSpace);
  EXPECT_EQ(CSVExporter::exportPerson(*stream, person(), "en", surroundings.services).code(), Status::Code::noSpace);
}

}  // namespace
}  // namespace varnok
