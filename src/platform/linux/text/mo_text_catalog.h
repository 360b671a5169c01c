// MoTextCatalog: TextCatalog over compiled gettext catalogues, one file a
// language: DIRECTORY/de.mo.
//
// A text comes from the first preferred language that there is a catalogue for,
// else from English, else it is the key. A file that is missing or damaged gives
// no texts, as if the language were not there; loading always succeeds.
//
// Lifetime. Each file is read once, in load(); the directory may go afterwards.
// Threads. Any thread, as it never changes.

#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "platform/linux/text/mo_file.h"
#include "platform/text_catalog.h"

namespace varnok {

class MoTextCatalog final : public TextCatalog {
 public:
  // `languages` are the user's, most preferred first: "de", "de-AT" and
  // "de_AT.UTF-8" all mean German, "C" and "POSIX" mean English. Others are
  // skipped. Never null.
  static std::unique_ptr<MoTextCatalog> load(const std::string& directory, std::span<const std::string> languages);

  // Two letters: the language of the texts.
  std::string language() const { return language_; }

 private:
  MoTextCatalog(std::string language, std::optional<MoFile> texts, std::optional<MoFile> english)
      : language_(std::move(language)), texts_(std::move(texts)), english_(std::move(english)) {}

  std::optional<std::string> lookup(std::string_view key, std::optional<std::int64_t> count) const override;

  std::string language_;
  std::optional<MoFile> texts_;  // Nothing when the language is English.
  std::optional<MoFile> english_;
};

}  // namespace varnok
