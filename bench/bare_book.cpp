#include "bench/bare_book.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

namespace varnok {
namespace {

// Reads every column of the row as text; the sum keeps the compiler honest.
std::size_t readRow(sqlite3_stmt* row) {
  std::size_t bytes = 0;
  const int columns = sqlite3_column_count(row);
  for (int i = 0; i < columns; ++i) {
    const unsigned char* text = sqlite3_column_text(row, i);
    if (text != nullptr) bytes += static_cast<std::size_t>(sqlite3_column_bytes(row, i)) + text[0];
  }
  return bytes;
}

std::size_t readRows(sqlite3* database) {
  sqlite3_stmt* persons = nullptr;
  sqlite3_stmt* entries = nullptr;
  sqlite3_prepare_v2(database, "SELECT * FROM person ORDER BY id", -1, &persons, nullptr);
  sqlite3_prepare_v2(database, "SELECT * FROM entry ORDER BY person, property, position", -1, &entries, nullptr);
  std::size_t bytes = 0;
  bool more = sqlite3_step(entries) == SQLITE_ROW;
  while (sqlite3_step(persons) == SQLITE_ROW) {
    bytes += readRow(persons);
    const sqlite3_int64 id = sqlite3_column_int64(persons, 0);
    for (; more && sqlite3_column_int64(entries, 0) == id; more = sqlite3_step(entries) == SQLITE_ROW)
      bytes += readRow(entries);
  }
  sqlite3_finalize(persons);
  sqlite3_finalize(entries);
  return bytes;
}

void base64(const unsigned char* in, std::size_t size, std::vector<char>& out) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  out.resize((size + 2) / 3 * 4);
  char* next = out.data();
  for (std::size_t i = 0; i + 3 <= size; i += 3) {
    const unsigned bits = static_cast<unsigned>(in[i]) << 16U | static_cast<unsigned>(in[i + 1]) << 8U | in[i + 2];
    *next++ = kAlphabet[bits >> 18U];
    *next++ = kAlphabet[bits >> 12U & 63U];
    *next++ = kAlphabet[bits >> 6U & 63U];
    *next++ = kAlphabet[bits & 63U];
  }
}

std::size_t encodePictures(sqlite3* database) {
  sqlite3_stmt* pictures = nullptr;
  sqlite3_prepare_v2(database, "SELECT bytes FROM image ORDER BY person", -1, &pictures, nullptr);
  std::size_t bytes = 0;
  std::vector<char> text;
  while (sqlite3_step(pictures) == SQLITE_ROW) {
    base64(static_cast<const unsigned char*>(sqlite3_column_blob(pictures, 0)),
           static_cast<std::size_t>(sqlite3_column_bytes(pictures, 0)), text);
    bytes += static_cast<unsigned char>(text[text.size() / 2]);
  }
  sqlite3_finalize(pictures);
  return bytes;
}

bool writeCopy(const std::string& home, const std::string& result) {
  const std::string path = home + "/Documents/.bare";
  const int in = ::open(result.c_str(), O_RDONLY | O_CLOEXEC);
  const int out = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  static char buffer[256 * 1024];
  bool written = in >= 0 && out >= 0;
  for (ssize_t count = read(in, buffer, sizeof buffer); count > 0; count = read(in, buffer, sizeof buffer))
    written = written && ::write(out, buffer, static_cast<std::size_t>(count)) == count;
  written = written && ::fsync(out) == 0;
  ::close(out);
  ::close(in);
  return written && std::rename(path.c_str(), (home + "/Documents/bare.bin").c_str()) == 0;
}

}  // namespace

int bareBackup(const std::string& home, const std::string& result, BarePictures pictures) {
  sqlite3* database = nullptr;
  sqlite3_open_v2((home + "/contacts.db").c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
  std::size_t bytes = readRows(database);
  if (pictures == BarePictures::inBase64) bytes += encodePictures(database);
  sqlite3_close(database);
  return bytes > 0 && writeCopy(home, result) ? 0 : 1;
}

}  // namespace varnok
