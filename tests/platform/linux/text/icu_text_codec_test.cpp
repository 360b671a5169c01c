#include "platform/linux/text/icu_text_codec.h"

#include <gtest/gtest.h>

namespace varnok {
namespace {

using namespace std::string_literals;

TEST(IcuTextCodec, EncodesAndDecodes) {
  struct Row {
    const char* encoding;
    std::string text;
    std::string bytes;
  };
  const Row rows[] = {
      {"windows-1254", "Şık ağ €", "\xDE\xFDk a\xF0 \x80"s},
      {"windows-1253", "Ωμέγα", "\xD9\xEC\xDD\xE3\xE1"s},
      {"windows-1250", "Größe Łódź",
       "Gr\xF6\xDF"
       "e \xA3\xF3"
       "d\x9F"s},
      {"windows-1252", "œuvre ’ñ", "\x9Cuvre \x92\xF1"s},
      {"windows-1255", "שלום", "\xF9\xEC\xE5\xED"s},
      {"ISO-8859-9", "Işık", "I\xFE\xFDk"s},
      {"iso8859_9", "ş", "\xFE"s},
      {"UTF-16LE", "aş\U0001F600", "\x61\x00\x5F\x01\x3D\xD8\x00\xDE"s},
      {"UTF-16BE", "\uFEFFa", "\xFE\xFF\x00\x61"s},
      {"Shift_JIS", "日本", "\x93\xFA\x96\x7B"s},
      {"UTF-8", "a\u200D\uFE0F\U0001F600\uFEFF", "a\u200D\uFE0F\U0001F600\uFEFF"},
      {"utf8", "\0ş"s, "\0ş"s},
      {"windows-1252", "", ""},
      {"windows-1252", "a\0b"s, "a\0b"s},
      {"windows-1252", std::string(10000, 'x'), std::string(10000, 'x')},
      {"UTF-32LE", "a", "a\0\0\0"s},
  };
  const IcuTextCodec codec;
  for (const Row& row : rows) {
    EXPECT_EQ(codec.encode(row.text, row.encoding), row.bytes) << row.encoding << ": " << row.text;
    EXPECT_EQ(codec.decode(row.bytes, row.encoding), row.text) << row.encoding << ": " << row.text;
  }
}

TEST(IcuTextCodec, RefusesWhatHasNoPlace) {
  struct Row {
    const char* name;
    const char* encoding;
    std::string text;
  };
  const Row rows[] = {
      {"another script", "windows-1254", "Ayşe 日本"},
      {"zero width joiner", "windows-1252", "a\u200Db"},
      {"variation selector", "windows-1254", "a\uFE0F"},
      {"left-to-right mark", "windows-1250", "a\u200E"},
      {"word joiner", "windows-1253", "\u2060"},
      {"combining accent", "windows-1252", "e\u0301"},
      {"full-width letter, for which the table has a look-alike", "windows-1252", "\uFF21"},
      {"emoji", "ISO-8859-9", "\U0001F600"},
      {"malformed text", "windows-1252", "a\xFF"},
      {"malformed text, UTF-8", "UTF-8", "a\xC3"},
      {"encoded surrogate, UTF-8", "UTF-8", "\xED\xA0\x80"},
  };
  const IcuTextCodec codec;
  for (const Row& row : rows)
    EXPECT_EQ(codec.encode(row.text, row.encoding), std::nullopt) << row.name;
}

TEST(IcuTextCodec, ReplacesMalformedSequences) {
  struct Row {
    const char* name;
    const char* encoding;
    std::string bytes;
    const char* expected;
  };
  const Row rows[] = {
      {"a byte that no text has", "UTF-8", "a\xFFz", "a\uFFFDz"},
      {"a sequence cut short", "UTF-8", "\xE2\x82", "\uFFFD"},
      {"an overlong slash", "UTF-8", "\xC0\xAF", "\uFFFD\uFFFD"},
      {"unassigned byte", "ISO-8859-7", "a\xD2z", "a\uFFFDz"},
      {"one wrong byte where ICU would write U+001A", "Shift_JIS", "a\xFDz", "a\uFFFDz"},
      {"odd last byte", "UTF-16LE", "a\0b"s, "a\uFFFD"},
      {"lone surrogate", "UTF-16LE", "\x3D\xD8z\0"s, "\uFFFDz"},
  };
  const IcuTextCodec codec;
  for (const Row& row : rows)
    EXPECT_EQ(codec.decode(row.bytes, row.encoding), row.expected) << row.name;
}

TEST(IcuTextCodec, DoesNotKnowOtherNames) {
  const std::string names[] = {"",         "klingon",          "windows-1254,version=1", "ibm-1047,swaplfnl",
                               "../latin", "windows-1254\0x"s, "windows-1254 ",          std::string(5000, 'x')};
  const IcuTextCodec codec;
  for (const std::string& name : names) {
    EXPECT_EQ(codec.decode("a", name), std::nullopt) << name;
    EXPECT_EQ(codec.encode("a", name), std::nullopt) << name;
  }
}

}  // namespace
}  // namespace varnok
