#include "platform/linux/mail/mime_message.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace varnok {
namespace {

constexpr std::size_t kLineLength = 76;

// The encoded text of one word of a header line. With "=?UTF-8?B?" and "?=" it
// stays below the 75 characters that a word may have, and leaves room for the
// name of the header.
constexpr std::size_t kWordBytes = 39;

constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kHex = "0123456789ABCDEF";

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}
bool isASCII(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}
bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

bool isPrintableASCII(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return isASCII(c) && !isControl(c); });
}

std::string withoutControls(std::string_view text) {
  std::string clean(text);
  std::replace_if(clean.begin(), clean.end(), isControl, ' ');
  return clean;
}

// Base64.

void appendBase64Group(std::string& out, std::string_view group) {
  const auto byte = [&](std::size_t i) -> std::uint32_t {
    return i < group.size() ? static_cast<unsigned char>(group[i]) : 0;
  };
  const std::uint32_t bits = byte(0) << 16 | byte(1) << 8 | byte(2);
  out.push_back(kBase64[bits >> 18]);
  out.push_back(kBase64[bits >> 12 & 63]);
  out.push_back(group.size() > 1 ? kBase64[bits >> 6 & 63] : '=');
  out.push_back(group.size() > 2 ? kBase64[bits & 63] : '=');
}

void appendBase64(std::string& out, std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size(); i += 3)
    appendBase64Group(out, bytes.substr(i, 3));
}

void appendBase64Lines(std::string& out, std::string_view bytes) {
  constexpr std::size_t kBytesPerLine = kLineLength / 4 * 3;
  for (std::size_t i = 0; i < bytes.size(); i += kBytesPerLine) {
    appendBase64(out, bytes.substr(i, kBytesPerLine));
    out.push_back('\n');
  }
}

// Quoted-printable.

void appendHex(std::string& out, char prefix, char c) {
  const auto byte = static_cast<unsigned char>(c);
  out.push_back(prefix);
  out.push_back(kHex[byte >> 4]);
  out.push_back(kHex[byte & 15]);
}

// Blanks at the end of a line are encoded, since mail programs may drop them.
std::string quotedPrintableUnit(char c, bool endsLine) {
  std::string unit;
  const bool plain = isASCII(c) && !isControl(c) && c != '=' && !(c == ' ' && endsLine);
  if (plain || (c == '\t' && !endsLine)) {
    unit.push_back(c);
  } else {
    appendHex(unit, '=', c);
  }
  return unit;
}

void appendQuotedPrintableLine(std::string& out, std::string_view line) {
  std::size_t column = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool endsLine = i + 1 == line.size();
    const std::string unit = quotedPrintableUnit(line[i], endsLine);
    if (column + unit.size() > kLineLength - (endsLine ? 0 : 1)) {
      out.append("=\n");
      column = 0;
    }
    out.append(unit);
    column += unit.size();
  }
  out.push_back('\n');
}

// CRLF and a CR alone are line ends too.
std::string withPlainLineEnds(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool pair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    if (!pair) plain.push_back(text[i] == '\r' ? '\n' : text[i]);
  }
  return plain;
}

void appendQuotedPrintable(std::string& out, std::string_view text) {
  const std::string plain = withPlainLineEnds(text);
  std::string_view rest = plain;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    appendQuotedPrintableLine(out, rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

// Header texts.

// The start of `text` of at most `most` bytes that cuts no character in two.
std::string_view wholeCharacters(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  std::size_t end = most;
  while (end > 0 && isContinuation(text[end]))
    --end;
  return text.substr(0, end == 0 ? most : end);
}

std::string encodedWords(std::string_view text) {
  std::string words;
  while (!text.empty()) {
    const std::string_view piece = wholeCharacters(text, kWordBytes);
    if (!words.empty()) words.append("\n ");
    words.append("=?UTF-8?B?");
    appendBase64(words, piece);
    words.append("?=");
    text.remove_prefix(piece.size());
  }
  return words;
}

// As it stands where a reader takes it as it stands, else encoded.
std::string headerText(std::string_view text) {
  const std::string clean = withoutControls(text);
  constexpr std::size_t kNameOfHeader = 10;
  const bool plain = isPrintableASCII(clean) && clean.size() <= kLineLength - kNameOfHeader &&
                     clean.find("=?") == std::string::npos && !clean.starts_with(' ') && !clean.ends_with(' ');
  return plain ? clean : encodedWords(clean);
}

std::string quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted.push_back('\\');
    quoted.push_back(c);
  }
  return quoted + "\"";
}

std::string safeFileName(std::string_view name) {
  std::string clean = withoutControls(name);
  std::replace_if(
      clean.begin(), clean.end(), [](char c) { return c == '/' || c == '\\'; }, '_');
  return clean;
}

bool needsNoPercent(char c) {
  return isASCII(c) && (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '-' || c == '_');
}

// The parameter in the extended notation, in numbered pieces that each fit a line.
std::string extendedFileName(std::string_view name) {
  constexpr std::size_t kPieceLength = 48;
  std::vector<std::string> pieces(1);
  for (const char c : name) {
    if (pieces.back().size() + 3 > kPieceLength) pieces.emplace_back();
    if (needsNoPercent(c)) {
      pieces.back().push_back(c);
    } else {
      appendHex(pieces.back(), '%', c);
    }
  }
  if (pieces.size() == 1) return ";\n filename*=UTF-8''" + pieces.front();
  std::string text;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    text.append(";\n filename*").append(std::to_string(i)).append("*=").append(i == 0 ? "UTF-8''" : "");
    text.append(pieces[i]);
  }
  return text;
}

struct FileNameParameters {
  std::string ofType;  // For readers that know only this one.
  std::string ofDisposition;
};

FileNameParameters fileNameParameters(std::string_view fileName) {
  const std::string name = safeFileName(fileName);
  constexpr std::size_t kLongestQuoted = 60;
  if (isPrintableASCII(name) && name.size() <= kLongestQuoted) {
    return {";\n name=" + quoted(name), ";\n filename=" + quoted(name)};
  }
  return {";\n name=\"" + encodedWords(name) + "\"", extendedFileName(name)};
}

std::string dateText(Instant instant) {
  static constexpr std::array<const char*, 7> kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr std::array<const char*, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(instant - day);
  char text[64];
  std::snprintf(text, sizeof text, "%s, %u %s %d %02d:%02d:%02d +0000", kDays[std::chrono::weekday(day).c_encoding()],
                static_cast<unsigned>(date.day()), kMonths[static_cast<unsigned>(date.month()) - 1],
                static_cast<int>(date.year()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return text;
}

// One address and nothing else: what separates or surrounds addresses is refused.
bool isPlainAddress(std::string_view address) {
  return !address.empty() && !address.starts_with('-') &&
         address.find_first_of(" ,;:<>()[]\"\\") == std::string_view::npos &&
         std::none_of(address.begin(), address.end(), isControl);
}

Status checkAddresses(const MailMessage& message, const MimeEnvelope& envelope) {
  std::vector<std::string> addresses = message.to;
  if (envelope.from) addresses.push_back(*envelope.from);
  for (const std::string& address : addresses) {
    if (!isPlainAddress(address)) {
      return {Status::Code::invalidArgument, "not a mail address: " + withoutControls(address)};
    }
  }
  return {};
}

// The message.

std::string addressList(const std::vector<std::string>& addresses) {
  std::string list;
  for (const std::string& address : addresses)
    list.append(list.empty() ? "" : ",\n ").append(address);
  return list;
}

void appendHeaders(std::string& out, const MailMessage& message, const MimeEnvelope& envelope) {
  if (envelope.from) out.append("From: ").append(*envelope.from).append("\n");
  if (!message.to.empty()) out.append("To: ").append(addressList(message.to)).append("\n");
  out.append("Subject: ").append(headerText(message.subject)).append("\n");
  out.append("Date: ").append(dateText(envelope.date)).append("\n");
  if (envelope.messageID) out.append("Message-ID: <").append(withoutControls(*envelope.messageID)).append(">\n");
  out.append("MIME-Version: 1.0\n");
}

void appendBody(std::string& out, const MailMessage& message) {
  out.append("Content-Type: ").append(message.bodyIsHTML ? "text/html" : "text/plain").append("; charset=UTF-8\n");
  out.append("Content-Transfer-Encoding: quoted-printable\n\n");
  appendQuotedPrintable(out, message.body);
}

bool isMediaType(std::string_view type) {
  const std::size_t slash = type.find('/');
  return isPrintableASCII(type) && slash != std::string_view::npos && slash > 0 && slash + 1 < type.size();
}

void appendAttachment(std::string& out, const MailAttachment& attachment) {
  const FileNameParameters name = fileNameParameters(attachment.fileName);
  std::string_view type = attachment.mimeType;
  if (!isMediaType(type)) type = "application/octet-stream";
  out.append("Content-Type: ").append(type).append(name.ofType).append("\n");
  out.append("Content-Transfer-Encoding: base64\n");
  out.append("Content-Disposition: attachment").append(name.ofDisposition).append("\n\n");
  appendBase64Lines(out, attachment.bytes);
}

std::size_t expectedSize(const MailMessage& message) {
  std::size_t size = 4096 + message.body.size() * 3;
  for (const MailAttachment& attachment : message.attachments)
    size += attachment.bytes.size() / 57 * 77 + 1024;
  return size;
}

}  // namespace

std::optional<std::string> mimeMessage(const MailMessage& message, const MimeEnvelope& envelope, Status& status) {
  status = checkAddresses(message, envelope);
  if (!status.ok()) return std::nullopt;
  // "=_" is neither base64 nor quoted-printable.
  const std::string boundary = "=_" + envelope.boundary;
  std::string out;
  out.reserve(expectedSize(message));
  appendHeaders(out, message, envelope);
  out.append("Content-Type: multipart/mixed; boundary=\"").append(boundary).append("\"\n");
  out.append("\n--").append(boundary).append("\n");
  appendBody(out, message);
  for (const MailAttachment& attachment : message.attachments) {
    out.append("\n--").append(boundary).append("\n");
    appendAttachment(out, attachment);
  }
  out.append("\n--").append(boundary).append("--\n");
  return out;
}

}  // namespace varnok
