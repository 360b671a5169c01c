#include "import/vcard_reader.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "platform/testing/fake_clock.h"
#include "platform/utf8.h"
#include "support/person_text.h"

namespace {

// What the heap holds, in bytes: the process's size says little under a sanitizer.
std::size_t heapBytes = 0;
std::size_t peakHeapBytes = 0;

}  // namespace

void* operator new(std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  heapBytes += malloc_usable_size(memory);
  peakHeapBytes = std::max(peakHeapBytes, heapBytes);
  return memory;
}

void operator delete(void* memory) noexcept {
  if (memory != nullptr) heapBytes -= malloc_usable_size(memory);
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  operator delete(memory);
}

namespace varnok {
namespace {

using namespace std::string_literals;

// Knows Latin-1, and a Turkish page in which 0xFE is s-cedilla.
class SmallCodec : public TextCodec {
 public:
  std::optional<std::string> decode(std::string_view bytes, std::string_view encoding) const override {
    const bool turkish = encoding == "windows-1254";
    if (!turkish && encoding != "ISO-8859-1") return std::nullopt;
    std::string text;
    for (const char c : bytes) {
      const auto byte = static_cast<unsigned char>(c);
      appendUTF8(text, turkish && byte == 0xFE ? 0x15F : byte);
    }
    return text;
  }
  std::optional<std::string> encode(std::string_view /*text*/, std::string_view /*encoding*/) const override {
    return std::nullopt;
  }
};

class TextSink : public VCardReader::Sink {
 public:
  std::string text;

  void person(PersonRef person) override { text += describe(*person) + "--\n"; }
  void skipped(std::size_t line, std::string_view reason) override {
    text += "line " + std::to_string(line) + ": " + std::string(reason) + "\n";
  }
};

struct ReadCase {
  std::string_view name;
  std::string input;
  std::string expected;
  VCardReaderOptions options = {};
};

// Feeds the input in pieces of `size` bytes.
std::string read(const ReadCase& c, std::size_t size) {
  const SmallCodec codec;
  FakeClock clock;
  clock.offset = std::chrono::hours(2);
  TextSink sink;
  VCardReader reader(sink, codec, clock, c.options);
  for (std::size_t i = 0; i < c.input.size(); i += size)
    reader.feed(std::string_view(c.input).substr(i, size));
  reader.finish();
  return sink.text;
}

std::string card(std::string_view lines, std::string_view version = "3.0") {
  return "BEGIN:VCARD\r\nVERSION:" + std::string(version) + "\r\n" + std::string(lines) + "END:VCARD\r\n";
}

std::string inUTF16LE(std::string_view ascii) {
  std::string bytes;
  for (const char c : ascii)
    bytes += c + "\0"s;
  return bytes;
}

std::string inUTF16BE(std::string_view ascii) {
  std::string bytes;
  for (const char c : ascii)
    bytes += "\0"s + c;
  return bytes;
}

std::string repeated(std::string_view text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i)
    result += text;
  return result;
}

const std::string kAda = "FirstName: Ada\n--\n";
const std::string kBase64JPEG = "/9j/4AAQSkY=";  // The first eight bytes of a JPEG file.

std::vector<ReadCase> framing() {
  return {
      {"Ends_LF", "BEGIN:VCARD\nN:;Ada\nEND:VCARD\n", kAda},
      {"Ends_CR", "BEGIN:VCARD\rN:;Ada\rTITLE:Dr\rEND:VCARD\r", "FirstName: Ada\nJobTitle: Dr\n--\n"},
      {"Ends_Mixed", "BEGIN:VCARD\r\n\r\nN:;Ada\rTITLE:Dr\n\nEND:VCARD", "FirstName: Ada\nJobTitle: Dr\n--\n"},
      {"ByteOrderMarks",
       "\xEF\xBB\xBF"
       "BEGIN:VCARD\nN:;Ada\nEND:VCARD\n\xEF\xBB\xBF"
       "BEGIN:VCARD\nN:;Ada\nEND:VCARD\n",
       kAda + kAda},
      {"UTF16_BigEndianWithMark",
       "\xFE\xFF"s + inUTF16BE("BEGIN:VCARD\r\nN;CHARSET=ISO-8859-1:;") + "\xD8\x3D\xDE\x00\0\n"s +
           inUTF16BE("END:VCARD"),
       "FirstName: \xF0\x9F\x98\x80\n--\n"},
      {"UTF16_LittleEndianWithoutMark", inUTF16LE(card("N:;Ada\r\n")), kAda},
      {"UTF16_LoneSurrogate", "\xFF\xFE"s + inUTF16LE("BEGIN:VCARD\nN:;A") + "\x00\xD8"s + inUTF16LE("\nEND:VCARD"),
       "FirstName: A\xEF\xBF\xBD\n--\n"},
      {"FoldedByBlankAndTab", card("NOTE:one t\r\n wo\r\n\t three\r\n"), "Note: one two three\n--\n"},
      {"Fold_2_1_KeepsTheBlank", card("NOTE:one\r\n two\r\n", "2.1"), "Note: one two\n--\n"},
      {"FoldInsideName", card("NO\r\n TE:x\r\n"), "Note: x\n--\n"},
      {"FoldInsideLetter", card("NOTE:\xC3\r\n \xA9\r\n"), "Note: \xC3\xA9\n--\n"},
      {"AnyCase", "begin:vcard\nversion:3.0\nn:;Ada\nitem1.tel;type=cell:5\nend:vcard \n",
       "FirstName: Ada\nPhone: [_$!<Mobile>!$_] 5\n--\n"},
      {"GarbageBetweenCards", "hello\n: x\nTEL:1\n" + card("N:;Ada\r\n") + "N:;Bob\n\n" + card("N:;Ada\r\n"),
       kAda + kAda},
      {"GarbageInsideCard", card("N:;Ada\r\nno colon\r\n:\r\n;:x\r\n.:x\r\nTEL;\"x:5\r\n"),
       "FirstName: Ada\nPhone: [null] 5\n--\n"},
      {"MissingEnd", "BEGIN:VCARD\nN:;Ada\nBEGIN:VCARD\nN:;Ada\n", kAda + kAda},
      {"Agent_2_1",
       card("AGENT:\r\nBEGIN:VCARD\r\nN:;Bob\r\nAGENT:\r\nBEGIN:VCARD\r\nEND:VCARD\r\nTEL:1\r\nEND:VCARD\r\nN:;Ada\r\n",
            "2.1"),
       kAda},
      {"Agent_OnItsLine", card("AGENT:BEGIN:VCARD\r\nN:;Bob\r\nEND:VCARD\r\nN:;Ada\r\n"), kAda},
      {"Agent_Escaped", card("AGENT:BEGIN:VCARD\\nN:\\;Bob\\nEND:VCARD\\n\r\nN:;Ada\r\n"), kAda},
      {"Agent_WithoutEnd",
       "BEGIN:VCARD\nN:;Ada\nAGENT:\nBEGIN:VCARD\nN:;Bob\nEND:VCARD\nBEGIN:VCARD\nN:;Ada\nEND:VCARD\n", kAda + kAda},
      {"NothingInIt",
       "\n" + card("N:;;;;\r\nORG:;\r\nTEL:\r\nADR:;;;;;;\r\nUID:5\r\nKIND:org\r\n") + card("N:;Ada\r\n"),
       "line 2: the card holds nothing to import\n" + kAda},
      {"TooLarge",
       card("N:;Bob\r\nNOTE:" + repeated("1234567890", 30) + "\r\n") + card("N:;Ada\r\n"),
       "line 1: the card is too large\n" + kAda,
       {"", 500}},
      {"TooLarge_Folded",
       card("NOTE:" + repeated("1234567890\r\n =", 60) + "\r\n") + card("N:;Ada\r\n"),
       "line 1: the card is too large\n" + kAda,
       {"", 500}},
      {"TooLarge_ManyLines",
       card(repeated("TEL:1\r\n", 10)) + card("N:;Ada\r\n"),
       "line 1: the card is too large\n" + kAda,
       {"", 500}},
      {"Group", card("N:;Friends\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n"), "line 1: the card is a group of people\n"},
  };
}

std::vector<ReadCase> texts() {
  return {
      {"QuotedPrintable",
       card("NOTE;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:caf=C3=A9=0D=0Atwo "
            "=\r\nlines=3d=\r\n\r\nTEL;QUOTED-PRINTABLE:5=ZZ\r\n",
            "2.1"),
       "Note: caf\xC3\xA9\\ntwo lines=\nPhone: [null] 5=ZZ\n--\n"},
      {"QuotedPrintable_LastLine", card("NOTE;ENCODING=QUOTED-PRINTABLE:x=\r\n", "2.1") + card("N:;Ada\r\n"),
       "Note: x=\n--\n" + kAda},
      {"QuotedPrintable_EncodedSemicolon", card("N;ENCODING=QUOTED-PRINTABLE:Love=3Blace;Ada\r\n", "2.1"),
       "FirstName: Ada\nLastName: Love;lace\n--\n"},
      {"Charset",
       card("N;CHARSET=\"ISO-8859-1\":;Ren\xE9\r\nTITLE;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:caf=E9\r\n"),
       "FirstName: Ren\xC3\xA9\nJobTitle: caf\xC3\xA9\n--\n"},
      {"Charset_Unknown", card("N;CHARSET=X-KLINGON:;Ren\xE9\r\n"), "FirstName: Ren\xEF\xBF\xBD\n--\n"},
      {"InvalidUTF8",
       card("N:;a\xC0\x80"
            "b\xED\xA0\x80"
            "c\xF0\x9F\x98 d\xE2\x82\r\n"),
       "FirstName: a\xEF\xBF\xBD\xEF\xBF\xBD"
       "b\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
       "c\xEF\xBF\xBD d\xEF\xBF\xBD\n--\n"},
      {"InvalidUTF8_Fallback",
       card("N;CHARSET=UTF-8:;Ay\xFE"
            "e\r\nTITLE;CHARSET=UTF-8:\xC5\x9F\r\n"),
       "FirstName: Ay\xC5\x9F"
       "e\nJobTitle: \xC5\x9F\n--\n",
       {"windows-1254"}},
      {"Escapes", card("NOTE:a\\nb\\Nc\\,d\\;e\\\\f\\:g\\dh&amp;\\\r\n"), "Note: a\\nb\\nc,d;e\\f:g\\dh&amp;\\\n--\n"},
      {"EscapedSemicolonInComponents", card("N:Love\\;lace;A\\\\;da\r\nADR:;;1 Main\\; St;A\\,B\r\nORG:A\\;B;C;D\r\n"),
       "FirstName: A\\\nLastName: Love;lace\nMiddleName: da\nOrganization: A;B\nDepartment: C, D\nAddress: [null] "
       "{City=A,B, Street=1 Main; St}\n--\n"},
      {"ParameterQuotes", card("X-SOCIALPROFILE;X-USER=\"a;b:c^'^n^^\";TYPE=\"twitter\":http://x\r\n"),
       "SocialProfile: [null] {service=twitter, username=a;b:c\"\\n^}\n--\n"},
      {"SeveralNotes", card("NOTE:one\r\nNOTE:\r\nNOTE:two\r\n"), "Note: one\\ntwo\n--\n"},
  };
}

std::vector<ReadCase> properties() {
  return {
      {"Names",
       card("N:Lovelace;Ada;King;Countess;II\r\nFN:Other\r\nNICKNAME:Addy\r\nX-PHONETIC-FIRST-NAME:eida\r\nX-PHONETIC-"
            "LAST-NAME:lav\r\n"),
       "FirstName: Ada\nLastName: Lovelace\nMiddleName: King\nPrefix: Countess\nSuffix: II\nNickname: "
       "Addy\nFirstNamePhonetic: eida\nLastNamePhonetic: lav\n--\n"},
      {"FormattedNameAlone", card("FN:Ada Lovelace\r\n"), "FirstName: Ada Lovelace\n--\n"},
      {"FormattedNameOfOrganization", card("KIND:org\r\nFN:Acme\r\n"), "Organization: Acme\nKind: 1\n--\n"},
      {"FormattedNameRepeatsOrganization", card("N:;;;;\r\nFN:Acme\r\nORG:Acme;Sales\r\nX-ABShowAs:COMPANY\r\n"),
       "Organization: Acme\nDepartment: Sales\nKind: 1\n--\n"},
      {"RoleWithoutTitle", card("ROLE:Boss\r\n"), "JobTitle: Boss\n--\n"},
      {"RoleAndTitle", card("ROLE:Boss\r\nTITLE:Dr\r\n"), "JobTitle: Dr\n--\n"},
      {"PhoneTypes",
       card("TEL;TYPE=HOME,WORK:1\r\nTEL;TYPE=home;TYPE=fax:2\r\nTEL;WORK;FAX:3\r\nTEL;TYPE=\"home,fax\":4\r\nTEL;FAX:"
            "5\r\nTEL;type=IPHONE;type=CELL;type=pref:6\r\n"
            "TEL;VOICE;X-Foo:7\r\nTEL;PAGER:8\r\nTEL;TYPE=main:9\r\nTEL;TYPE=OTHER;VALUE=uri:tel:+10\r\n"),
       "Phone: [_$!<Home>!$_] 1 | [_$!<HomeFAX>!$_] 2 | [_$!<WorkFAX>!$_] 3 | [_$!<HomeFAX>!$_] 4 | [_$!<WorkFAX>!$_] "
       "5 | [iPhone] 6 | [null] 7 | "
       "[_$!<Pager>!$_] 8 | [_$!<Main>!$_] 9 | [_$!<Other>!$_] +10\n--\n"},
      {"GroupLabels",
       card("item1.TEL;TYPE=HOME:1\r\nITEM1.X-ABLabel:Mum\r\nitem2.X-ABLabel:_$!<HomePage>!$_\r\nitem2.URL:u\r\nitem3."
            "EMAIL;TYPE=INTERNET:e\r\n"
            "item3.X-ABLabel:(null)\r\nitem4.EMAIL:f\r\nX-ABLabel:lost\r\n"),
       "Phone: [Mum] 1\nEmail: [null] e | [null] f\nURL: [_$!<HomePage>!$_] u\n--\n"},
      {"Address", card("ADR;TYPE=work:PO 5;Floor 2;1 Main St;London;LDN;N1;UK\r\nADR;HOME:;;;Paris\r\n"),
       "Address: [_$!<Work>!$_] {City=London, Country=UK, State=LDN, Street=1 Main St\\nFloor 2\\nPO 5, ZIP=N1} | "
       "[_$!<Home>!$_] {City=Paris}\n--\n"},
      {"Related",
       card("RELATED;TYPE=spouse;VALUE=text:Will\r\nRELATED;TYPE=friend:urn:uuid:1\r\nX-MANAGER:Charles\r\nitem1.X-"
            "ABRELATEDNAMES:Byron\r\nitem1.X-ABLabel:Papa\r\n"),
       "RelatedNames: [_$!<Spouse>!$_] Will | [_$!<Manager>!$_] Charles | [Papa] Byron\n--\n"},
      {"Messages",
       card("IMPP;TYPE=HOME:xmpp:a%40x.org\r\nIMPP;X-SERVICE-TYPE=QQ:x-apple:5\r\nIMPP:aim:goim?screenname=b\r\nX-AIM;"
            "HOME:c\r\nX-SKYPE-USERNAME:d\r\n"
            "X-GADUGADU:e\r\nIMPP:sip:f\r\nX-Foo:g\r\nX-Foo;CHARSET=UTF-8:h\r\n"),
       "InstantMessage: [_$!<Home>!$_] {service=Jabber, username=a@x.org} | [null] {service=QQ, username=5} | [null] "
       "{service=AIM, username=b} | "
       "[_$!<Home>!$_] {service=AIM, username=c} | [null] {service=Skype, username=d} | [null] {service=GaduGadu, "
       "username=e} | [null] {service=sip, username=f}\n--\n"},
      {"Profiles",
       card("X-SOCIALPROFILE;type=pref;type=twitter;x-user=ada:http://twitter.com/"
            "ada\r\nX-SOCIALPROFILE;type=flickr:x-apple:ada\r\n"),
       "SocialProfile: [null] {service=twitter, username=ada} | [null] {service=flickr, username=ada}\n--\n"},
  };
}

std::vector<ReadCase> photosAndDates() {
  const std::string jpeg = "image: 8 bytes, jpeg\n--\n";
  return {
      {"Photo_Folded", card("PHOTO;ENCODING=b;TYPE=JPEG:/9j/\r\n 4AAQ\r\n SkY=\r\n"), jpeg},
      {"Photo_Unfolded_2_1", card("PHOTO;JPEG;BASE64:\r\n/9j/4AAQ\r\nSkY=\r\n\r\nN:;Ada\r\n", "2.1"),
       "FirstName: Ada\n" + jpeg},
      {"Photo_DataURI", card("PHOTO:data:image/jpeg;base64," + kBase64JPEG + "\r\n", "4.0"), jpeg},
      {"Photo_WithoutEncoding", card("PHOTO:" + kBase64JPEG + "\r\n"), jpeg},
      {"Photo_PictureWins",
       card("PHOTO;ENCODING=B:AAAA\r\nPHOTO;ENCODING=BASE64:" + kBase64JPEG + "\r\nPHOTO;ENCODING=B:/9j/\r\n"), jpeg},
      {"Photo_OtherBytes", card("PHOTO;ENCODING=B:AAA\r\n"), "image: 2 bytes, other\n--\n"},
      {"Photo_LinksAndNonsense",
       card("N:;Ada\r\nPHOTO;VALUE=URI:http://x/y.jpg\r\nPHOTO:file:///y.jpg\r\nPHOTO;ENCODING=b:/"
            "9j*\r\nPHOTO:abcd\r\n"),
       kAda},
      {"Dates",
       card("BDAY:1815-12-10\r\nX-ABDATE:2024-03-05 13:07:09 "
            "+0000\r\nX-ABDATE:20240305T130709-0130\r\nX-ABDATE:2024-03-05T13:07:09.5\r\nANNIVERSARY:2010-05-05\r\n"
            "X-ABDATE:2024-02-30\r\nX-ABDATE:soon\r\nX-ABDATE:2024-03-05 00:00:00 +0000\r\n"),
       "Birthday: 1815-12-10 10:00:00\nDate: [null] 2024-03-05 13:07:09 | [null] 2024-03-05 14:37:09 | [null] "
       "2024-03-05 11:07:09 | "
       "[_$!<Anniversary>!$_] 2010-05-05 10:00:00 | [null] 2024-03-05 00:00:00\n--\n"},
      {"Birthday_WithoutYear", card("BDAY:--0229\r\n"), "Birthday: 1604-02-29 10:00:00\n--\n"},
      {"Birthday_Compact", card("BDAY:circa 1815\r\nBDAY;VALUE=date:18151210\r\n"),
       "Birthday: 1815-12-10 10:00:00\n--\n"},
      {"Birthday_MidnightIsADay", card("BDAY:1815-12-10T00:00:00Z\r\n"), "Birthday: 1815-12-10 10:00:00\n--\n"},
      {"Birthday_Moment", card("BDAY:1815-12-10T22:30:00Z\r\n"), "Birthday: 1815-12-10 22:30:00\n--\n"},
  };
}

// Cards as our own writer writes them.
std::vector<ReadCase> ownCards() {
  return {
      {"Own_Whole",
       "BEGIN:VCARD\r\nVERSION:3.0\r\nN;CHARSET=UTF-8:Lovelace;Ada\\nMary;;;\r\nFN;CHARSET=UTF-8:Ada\\nMary "
       "Lovelace\r\nPHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQSkY=\r\n"
       "BDAY;CHARSET=UTF-8:1815-12-10\r\nitem0.X-ABDATE;CHARSET=UTF-8:2024-03-05 13:07:09 "
       "+0000\r\nitem0.X-ABLabel:_$!<Anniversary>!$_\r\n"
       "X-ABDATES;CHARSET=UTF-8;TYPE=HOME:2024-03-06 13:07:09 +0000\r\nADR;CHARSET=UTF-8;HOME:;;1 Main\\; St\\nFlat "
       "2;London;;N1;UK\r\n"
       "item1.ADR;CHARSET=UTF-8:;;Street;;;;\r\nitem1.X-ABLabel;CHARSET=UTF-8:Boat\r\nTEL;CHARSET=UTF-8;TYPE=CELL:1\\;"
       "2\r\nitem2.TEL;CHARSET=UTF-8:3\r\nitem2.X-ABLabel:_$!<HomeFAX>!$_\r\n"
       "item3.EMAIL;CHARSET=UTF-8:a;b\\d@x\r\nitem3.X-ABLabel:(null)\r\nTITLE;CHARSET=UTF-8:C\\D\r\nORG;CHARSET=UTF-8:;"
       "\r\nNOTE;CHARSET=UTF-8:a\\;b\\nc\r\n"
       "URL;CHARSET=UTF-8;TYPE=WORK:http://x\r\nX-SOCIALPROFILE;CHARSET=UTF-8;TYPE=My, "
       "Service;x:ada\r\nX-ABRELATEDNAMES;CHARSET=UTF-8;TYPE=WORK:Charles\r\nEND:VCARD\r\n\n",
       "FirstName: Ada\\nMary\nLastName: Lovelace\nJobTitle: C\\D\nNote: a;b\\nc\nBirthday: 1815-12-10 "
       "10:00:00\nPhone: [_$!<Mobile>!$_] 1;2 | [_$!<HomeFAX>!$_] 3\n"
       "Email: [null] a;b\\d@x\nURL: [_$!<Work>!$_] http://x\nRelatedNames: [_$!<Work>!$_] Charles\n"
       "Date: [_$!<Anniversary>!$_] 2024-03-05 13:07:09 | [_$!<Home>!$_] 2024-03-06 13:07:09\n"
       "Address: [_$!<Home>!$_] {City=London, Country=UK, Street=1 Main; St\\nFlat 2, ZIP=N1} | [Boat] "
       "{Street=Street}\n"
       "SocialProfile: [null] {service=My, Service;x, username=ada}\nimage: 8 bytes, jpeg\n--\n"},
      {"Own_Messages",
       card("X-Google "
            "Talk;TYPE=HOME;CHARSET=UTF-8:a\r\nitem4.X-x.y\xC3\xBC;CHARSET=UTF-8:b\r\nitem4.X-ABLabel;CHARSET=UTF-8:"
            "Chess\r\nX-aim;TYPE=WORK;CHARSET=UTF-8:c\r\n"
            "X-;TYPE=CELL;CHARSET=UTF-8:d\r\nitem5.X-Foo;CHARSET=UTF-8:no label, not "
            "ours\r\nX-ABUID;TYPE=HOME;CHARSET=UTF-8:known as something else\r\n"),
       "InstantMessage: [_$!<Home>!$_] {service=Google Talk, username=a} | [Chess] {service=x.y\xC3\xBC, username=b} | "
       "[_$!<Work>!$_] {service=aim, username=c} | "
       "[_$!<Mobile>!$_] {service=, username=d}\n--\n"},
  };
}

std::vector<ReadCase> allCases() {
  std::vector<ReadCase> cases;
  for (const auto& rows : {framing(), texts(), properties(), photosAndDates(), ownCards()})
    cases.insert(cases.end(), rows.begin(), rows.end());
  return cases;
}

class VCardReaderCases : public testing::TestWithParam<ReadCase> {};

// However the bytes are cut, the outcome is the same.
TEST_P(VCardReaderCases, ReadWholeAndInPieces) {
  const ReadCase& c = GetParam();
  ASSERT_EQ(read(c, c.input.size()), c.expected);
  for (std::size_t size = 1; size < c.input.size(); ++size)
    ASSERT_EQ(read(c, size), c.expected) << "pieces of " << size;
}

struct ByName {
  std::string operator()(const testing::TestParamInfo<ReadCase>& info) const { return std::string(info.param.name); }
};

INSTANTIATE_TEST_SUITE_P(, VCardReaderCases, testing::ValuesIn(allCases()), ByName{});

class CountingSink : public VCardReader::Sink {
 public:
  std::size_t people = 0;
  void person(PersonRef /*person*/) override { ++people; }
  void skipped(std::size_t /*line*/, std::string_view /*reason*/) override {}
};

TEST(VCardReader, CountsCardsSkippedOnesIncluded) {
  const SmallCodec codec;
  const FakeClock clock;
  CountingSink sink;
  VCardReader reader(sink, codec, clock);
  reader.feed(card("N:;Ada\r\n") + card(""));
  reader.finish();
  EXPECT_EQ(reader.cardCount(), 2U);
  EXPECT_EQ(sink.people, 1U);
}

TEST(VCardReader, TakesNoMoreMemoryForALongFile) {
  const SmallCodec codec;
  const FakeClock clock;
  CountingSink sink;
  VCardReader reader(sink, codec, clock);
  const std::string photo = repeated(repeated("/9j/4AAQSkYA", 6) + "\r\n ", 200) + "\r\n";
  std::string piece;
  while (piece.size() < 65536)
    piece += card("N:Lovelace;Ada\r\nTEL;TYPE=CELL:555\r\nPHOTO;ENCODING=b:" + photo);
  const std::size_t before = heapBytes;
  peakHeapBytes = before;
  for (std::size_t fed = 0; fed < 200U << 20U; fed += piece.size())
    reader.feed(piece);
  reader.finish();
  EXPECT_GT(sink.people, 10000U);
  EXPECT_LT(peakHeapBytes - before, 200U << 10U);
}

// What would take quadratic time if the reader looked back: each finishes at once or times out.
TEST(VCardReader, IsNotSlowedDownByHostileFiles) {
  const std::string hostile[] = {
      card("NOTE" + repeated("\r\n =", 500000)),
      card("NOTE;ENCODING=QUOTED-PRINTABLE:" + repeated("=\r\n", 500000)),
      card("NOTE;" + repeated("a=\"b\";", 300000) + "\":x\r\n"),
      card("N:" + repeated(";\\", 500000) + "\r\n"),
      card("PHOTO;ENCODING=b:" + repeated("AAAA\r\n", 300000) + "\r\n"),
      repeated("BEGIN:VCARD\rAGENT:\r", 100000),
  };
  for (const std::string& input : hostile)
    EXPECT_FALSE(read({"", input, ""}, 4096).empty());
}

}  // namespace
}  // namespace varnok
