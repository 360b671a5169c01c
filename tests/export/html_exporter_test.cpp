#include "export/html_exporter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "contacts/testing/in_memory_contact_store.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_file_system.h"
#include "support/person_builder.h"

namespace varnok {
namespace {

using testing::ElementsAre;

const std::string kHome(label::kHome);
const std::string kWork(label::kWork);

struct Surroundings {
  InMemoryContactStoreProvider contacts;
  InMemoryFileSystem files;
  FakeTextCatalog texts;
  FakeImageCodec images;
  WebDocumentServices services{contacts, files, texts, images, "/docs"};

  std::string list() {
    EXPECT_EQ(HTMLExporter::createRecordsJSON(services), "/docs/records.json");
    return files.files["/docs/records.json"];
  }
  std::string records() {
    const std::string text = list();
    return text.substr(text.find("\"records\""));
  }
  boost::json::object record(std::string_view id) {
    return boost::json::parse(HTMLExporter::createRecordJSONWithId(id, services)).as_object();
  }
};

// "label property value identifier index" of each item, the missing ones left out.
std::vector<std::string> lines(const HTMLExporter::Items& items) {
  std::vector<std::string> result;
  for (const HTMLExporter::Item& item : items) {
    std::string line;
    for (const auto& [member, text] : item.entries())
      line += (line.empty() ? "" : "|") + text;
    result.push_back(line);
  }
  return result;
}

TEST(ListDocument, OfAnEmptyBookIsTheHeaderAndNobody) {
  Surroundings surroundings;
  EXPECT_EQ(surroundings.list(),
            R"({"header" : {"name":"First Name","lastName":"Last Name","edit":"EDIT","loading":"LOADING",)"
            R"("search":"SEARCH","searching":"SEARCHING","searchPHolder":"WRITE_SOMETHING","close":"CLOSE",)"
            R"("save":"SAVE","error":"ERROR","remove":"REMOVE","removing":"REMOVING","remove_msg":"REMOVE_MSG",)"
            R"("new_record":"NEW_RECORD"},"records":[]})");
  surroundings.contacts.access = AuthorizationStatus::denied;
  EXPECT_THAT(surroundings.list(), testing::EndsWith(R"(,"records":[]})"));
}

TEST(ListDocument, HoldsEveryNameAsValidJSON) {
  Surroundings surroundings;
  const std::string longName(1000, '"');  // Longer than any piece that the writer takes at once.
  putPeople(surroundings.contacts, {person().firstName("A\"\\\n\x01"), person().lastName("Zoë \xFF\xE2\x82"), person(),
                                    person().firstName(longName).lastName("</script>")});
  EXPECT_THAT(surroundings.records(),
              testing::StartsWith(R"("records":[{"name":"A\"\\\n\u0001","lastName":"","id":"1"},)"
                                  R"({"name":"","lastName":"Zoë )"
                                  "\xEF\xBF\xBD\xEF\xBF\xBD"
                                  R"(","id":"2"},{"name":"","lastName":"","id":"3"},{)"));
  const auto document = boost::json::parse(surroundings.list());
  const auto& last = document.at("records").at(3);
  EXPECT_EQ(std::string(last.at("name").as_string()), longName);
  EXPECT_EQ(last.at("lastName").as_string(), "</script>");
}

TEST(ListDocument, ThatCannotBeWrittenLeavesTheEarlierOne) {
  Surroundings surroundings;
  const std::string earlier = surroundings.list();
  putPeople(surroundings.contacts, {person().firstName("Ada")});
  surroundings.files.failAppendsAfter(100);
  EXPECT_EQ(HTMLExporter::openRecordsJSON(surroundings.services), nullptr);
  EXPECT_EQ(surroundings.list(), earlier);
  EXPECT_EQ(surroundings.files.filesOnTheirWay, 0);
}

TEST(RecordDocument, ShowsWhomTheTextBeginsWith) {
  Surroundings surroundings;
  putPeople(surroundings.contacts, {person().firstName("Ada"), person().firstName("Bob")});
  for (const auto& [id, name] : std::map<std::string, std::string>{
           {"2", "Bob"}, {" +1 x", "Ada"}, {"", ""}, {"x1", ""}, {"-1", ""}, {"3", ""}, {"4294967297", ""}}) {
    const auto items = surroundings.record(id).at("items").as_array();
    EXPECT_EQ(items.size(), 28U);
    EXPECT_EQ(std::string(items[0].at("value").as_string()), name) << id;
  }
}

TEST(RecordDocument, HasTheSectionsInOrder) {
  Surroundings surroundings;
  const auto items = surroundings.record("0").at("items").as_array();
  std::map<std::size_t, std::string> headings;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].as_object().size() == 1) headings[i] = items[i].at("label").as_string();
  }
  EXPECT_THAT(headings, ElementsAre(testing::Pair(9, "EXPORT_CONF_PHONES"), testing::Pair(19, "EXPORT_CONF_EMAILS"),
                                    testing::Pair(22, "EXPORT_CONF_NOTES"), testing::Pair(24, "EXPORT_CONF_URLS")));
}

TEST(RecordDocument, CarriesASmallPhoto) {
  Surroundings surroundings;
  putPeople(surroundings.contacts, {person().image("100x50"), person().image("no picture")});
  EXPECT_EQ(surroundings.record("1").at("image").as_string(), "data:image/jpeg;base64,anBlZyA5NjB4NDgwIGF0IDAuMA==");
  EXPECT_EQ(surroundings.record("2").at("image").as_string(), "");
}

TEST(FormItems, AreTheFieldsOfThePerson) {
  const FakeTextCatalog texts;
  const PersonRef ada = person().firstName(" Ada ").text(kABPersonNicknameProperty, " \t\r\n").note("n");
  EXPECT_THAT(lines(HTMLExporter::JSON_N(ada, texts)),
              ElementsAre("First Name|1| Ada ", "Middle Name|3|", "Last Name|2|", "Prefix|4|", "Suffix|5|",
                          "Organization|9|", "Department|10|", "Title|11|", "Nickname|6|"));
  EXPECT_THAT(lines(HTMLExporter::JSON_NOTE(ada, texts)), ElementsAre("Note|12|n"));
}

TEST(FormItems, FillTheSlotsByTheirLabels) {
  const FakeTextCatalog texts;
  const PersonRef ada = person()
                            .phone("iPhone", "1")
                            .phone("my own", "2")
                            .phone(std::nullopt, "3")
                            .phone(std::string(label::kHomeFAX), "4")
                            .phone("_$!<mobile>!$_", "5")
                            .email(kHome, "first")
                            .email(kWork, "w")
                            .email(kHome, " ");
  EXPECT_THAT(
      lines(HTMLExporter::JSON_TEL(ada, texts)),
      ElementsAre("Mobile|15||_$!<Mobile>!$_|-1", "iPhone|15|1|iPhone|0", "Work|15||_$!<Work>!$_|-1",
                  "Home|15||_$!<Home>!$_|-1", "Main|15||_$!<Main>!$_|-1", "Home Fax|15|4|_$!<HomeFAX>!$_|3",
                  "Work Fax|15||_$!<WorkFAX>!$_|-1", "Pager|15||_$!<Pager>!$_|-1", "Other|15||_$!<Other>!$_|-1"));
  EXPECT_THAT(lines(HTMLExporter::JSON_EMAIL(ada, texts)),
              ElementsAre("Work|16|w|_$!<Work>!$_|1", "Home|16||_$!<Home>!$_|2"));
  EXPECT_THAT(lines(HTMLExporter::JSON_URL(ada, texts)),
              ElementsAre("Home Page|17||_$!<HomePage>!$_|-1", "Work|17||_$!<Work>!$_|-1", "Home|17||_$!<Home>!$_|-1"));
}

TEST(FormItems, QuirkTheLastOfSeveralEntriesWithOneLabelIsShown) {
  const PersonRef ada = person().email(kHome, "a@x").email(kWork, "b@x").email(kHome, "c@x");
  EXPECT_THAT(lines(HTMLExporter::JSON_EMAIL(ada, FakeTextCatalog())),
              ElementsAre("Work|16|b@x|_$!<Work>!$_|1", "Home|16|c@x|_$!<Home>!$_|2"));
}

TEST(LeadingInteger, TakesWhatTheTextBeginsWith) {
  for (const auto& [text, number] : std::map<std::string, std::int32_t>{{"12", 12},
                                                                        {" \n-3.9", -3},
                                                                        {"+7", 7},
                                                                        {"+-7", 0},
                                                                        {"", 0},
                                                                        {"-", 0},
                                                                        {"1e3", 1},
                                                                        {"99999999999", INT32_MAX},
                                                                        {"-99999999999", INT32_MIN}}) {
    EXPECT_EQ(leadingInteger(text), number) << text;
  }
}

}  // namespace
}  // namespace varnok
