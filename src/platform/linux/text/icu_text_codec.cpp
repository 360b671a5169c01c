#include "platform/linux/text/icu_text_codec.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <memory>

#include "platform/utf8.h"

namespace varnok {
namespace {

// ICU counts in 32 bits, and a conversion may need several units a byte.
constexpr std::size_t kMaxSize = std::size_t{256} << 20;  // In bytes.

constexpr UChar kReplacement = 0xFFFD;

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

// Leaves the error as it stands, so the conversion stops at the character. The
// callback that ICU brings for that skips invisible characters (a zero width
// joiner, a variation selector) as if they could be written.
void stopAtUnmappable(const void*, UConverterFromUnicodeArgs*, const UChar*, int32_t, UChar32, UConverterCallbackReason,
                      UErrorCode*) {}

// ICU's own substitution writes U+001A for a single byte in some encodings.
void replaceMalformed(const void*, UConverterToUnicodeArgs* arguments, const char*, int32_t,
                      UConverterCallbackReason reason, UErrorCode* error) {
  if (reason > UCNV_IRREGULAR) return;  // Reset, close or clone: nothing was read.
  *error = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(arguments, &kReplacement, 1, 0, error);
}

bool isNameCharacter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') ||
         std::string_view("-_.:+()").find(character) != std::string_view::npos;
}

// ICU takes an empty name for the process's own encoding.
bool isEncodingName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), isNameCharacter);
}

bool isUtf8(const std::string& name) {
  return ucnv_compareNames(name.c_str(), "UTF-8") == 0;
}

// Null when the encoding is not known.
Converter openConverter(const std::string& name) {
  UErrorCode error = U_ZERO_ERROR;
  Converter converter(ucnv_open(name.c_str(), &error));
  if (U_FAILURE(error)) return nullptr;
  ucnv_setFallback(converter.get(), /*usesFallback=*/false);
  ucnv_setFromUCallBack(converter.get(), &stopAtUnmappable, nullptr, nullptr, nullptr, &error);
  ucnv_setToUCallBack(converter.get(), &replaceMalformed, nullptr, nullptr, nullptr, &error);
  return U_FAILURE(error) ? nullptr : std::move(converter);
}

int32_t length(std::string_view text) {
  return static_cast<int32_t>(text.size());
}
int32_t length(std::u16string_view text) {
  return static_cast<int32_t>(text.size());
}

bool overflowed(UErrorCode error) {
  return error == U_BUFFER_OVERFLOW_ERROR;
}

// Calls `convert(data, capacity, error)`, which answers the length it needs, a
// second time when `guess` units were not enough. Nothing when it fails.
template <typename String, typename Convert>
std::optional<String> converted(std::size_t guess, Convert convert) {
  String result(guess, 0);
  UErrorCode error = U_ZERO_ERROR;
  int32_t needed = convert(result.data(), static_cast<int32_t>(result.size()), &error);
  if (overflowed(error)) {
    result.resize(static_cast<std::size_t>(needed));
    error = U_ZERO_ERROR;
    needed = convert(result.data(), needed, &error);
  }
  if (U_FAILURE(error)) return std::nullopt;
  result.resize(static_cast<std::size_t>(needed));
  return result;
}

// Nothing when `text` is not well formed.
std::optional<std::u16string> toUtf16(std::string_view text) {
  return converted<std::u16string>(text.size(), [&](UChar* data, int32_t capacity, UErrorCode* error) {
    int32_t needed = 0;
    u_strFromUTF8(data, capacity, &needed, text.data(), length(text), error);
    return needed;
  });
}

std::optional<std::string> toUtf8(std::u16string_view text) {
  return converted<std::string>(text.size() * 3, [&](char* data, int32_t capacity, UErrorCode* error) {
    int32_t needed = 0;
    u_strToUTF8WithSub(data, capacity, &needed, text.data(), length(text), kReplacement, nullptr, error);
    return needed;
  });
}

bool isWellFormed(std::string_view text) {
  std::string copy;
  return validUTF8(text, copy).data() == text.data();
}

}  // namespace

std::optional<std::string> IcuTextCodec::decode(std::string_view bytes, std::string_view encoding) const {
  if (!isEncodingName(encoding) || bytes.size() > kMaxSize) return std::nullopt;
  const std::string name(encoding);
  if (isUtf8(name)) {
    std::string copy;
    return std::string(validUTF8(bytes, copy));
  }
  const Converter converter = openConverter(name);
  if (!converter) return std::nullopt;
  const auto text = converted<std::u16string>(bytes.size(), [&](UChar* data, int32_t capacity, UErrorCode* error) {
    return ucnv_toUChars(converter.get(), data, capacity, bytes.data(), length(bytes), error);
  });
  return text ? toUtf8(*text) : std::nullopt;
}

std::optional<std::string> IcuTextCodec::encode(std::string_view text, std::string_view encoding) const {
  if (!isEncodingName(encoding) || text.size() > kMaxSize) return std::nullopt;
  const std::string name(encoding);
  if (isUtf8(name)) return isWellFormed(text) ? std::optional(std::string(text)) : std::nullopt;
  const Converter converter = openConverter(name);
  const auto wide = converter ? toUtf16(text) : std::nullopt;
  if (!wide) return std::nullopt;
  return converted<std::string>(wide->size() * 2, [&](char* data, int32_t capacity, UErrorCode* error) {
    return ucnv_fromUChars(converter.get(), data, capacity, wide->data(), length(*wide), error);
  });
}

}  // namespace varnok
