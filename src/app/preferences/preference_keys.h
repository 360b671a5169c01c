// Every preference key, what it may hold and what is registered for it.
//
// Switches are stored as the texts "YES" and "NO" and read as booleans.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/preference_store.h"

namespace varnok {

namespace key {
// The one-time alert after the first backup has been shown. Switch.
inline constexpr std::string_view ALERT_BACKUP_POPUP_SHOWED = "ALERT_BACKUP_POPUP_SHOWED";
// Format of the next backup: "vcf" or "csv".
inline constexpr std::string_view EXPORT_TYPE = "EXPORT_TYPE";
// Which fields a backup carries. Switches, but "EXPORT_CONF_PHOTOS" is a
// boolean once the main screen has turned photos off.
inline constexpr std::string_view EXPORT_CONF_PHONES = "EXPORT_CONF_PHONES";
inline constexpr std::string_view EXPORT_CONF_EMAILS = "EXPORT_CONF_EMAILS";
inline constexpr std::string_view EXPORT_CONF_URLS = "EXPORT_CONF_URLS";
inline constexpr std::string_view EXPORT_CONF_ADRS = "EXPORT_CONF_ADRS";
inline constexpr std::string_view EXPORT_CONF_DATES = "EXPORT_CONF_DATES";
inline constexpr std::string_view EXPORT_CONF_NOTES = "EXPORT_CONF_NOTES";
inline constexpr std::string_view EXPORT_CONF_PHOTOS = "EXPORT_CONF_PHOTOS";
inline constexpr std::string_view EXPORT_CONF_SHRINK = "EXPORT_CONF_SHRINK";
// Time of the last single-file vCard backup: seconds since 1970-01-01 00:00
// UTC; 0 or "" when there was none.
inline constexpr std::string_view EXPORT_LAST = "EXPORT_LAST";
// Backup reminders are on. Switch.
inline constexpr std::string_view REMINDER = "REMINDER";
// Their period: "WEEK" or "MONTH".
inline constexpr std::string_view EVERY = "EVERY";
// "YES" from the first launch until the settings screen has shown its one-time
// alert, then "NO".
inline constexpr std::string_view AppFirstOpened = "AppFirstOpened";
// Name and full path of the last backup file.
inline constexpr std::string_view FILE_NAME = "FILE_NAME";
inline constexpr std::string_view FILE_PATH = "FILE_PATH";
// A vCard backup is one file per contact in a zip archive. Boolean.
inline constexpr std::string_view multipleVCF = "multipleVCF";
// The next item number of the vCard writer; 0 at the start of a backup.
inline constexpr std::string_view itemCount = "vnk.export.itemCount";
// Tokens of the older Dropbox interface have been moved. Boolean.
inline constexpr std::string_view migration = "migration";
// The counters of the rating prompt; see CorvelRating.
inline constexpr std::string_view kAppiraterFirstUseDate = "kAppiraterFirstUseDate";
inline constexpr std::string_view kAppiraterUseCount = "kAppiraterUseCount";
inline constexpr std::string_view kAppiraterSignificantEventCount = "kAppiraterSignificantEventCount";
inline constexpr std::string_view kAppiraterCurrentVersion = "kAppiraterCurrentVersion";
inline constexpr std::string_view kAppiraterRatedCurrentVersion = "kAppiraterRatedCurrentVersion";
inline constexpr std::string_view kAppiraterDeclinedToRate = "kAppiraterDeclinedToRate";
inline constexpr std::string_view kAppiraterReminderRequestDate = "kAppiraterReminderRequestDate";
// The web access asks a browser for a code; refuses every change; writes each
// request to the log. Switches.
inline constexpr std::string_view WEB_ACCESS_CODE = "WEB_ACCESS_CODE";
inline constexpr std::string_view WEB_READ_ONLY = "WEB_READ_ONLY";
inline constexpr std::string_view WEB_REQUEST_LOG = "WEB_REQUEST_LOG";
// The one interface that it listens on, by name or address.
inline constexpr std::string_view WEB_INTERFACE = "WEB_INTERFACE";
// Further names under which it is reached, separated by commas.
inline constexpr std::string_view WEB_HOST_NAMES = "WEB_HOST_NAMES";
// Which contact store is used: "sqlite", "eds" for the desktop's address book,
// or "eds:" and the identifier of another one.
inline constexpr std::string_view CONTACT_STORE = "CONTACT_STORE";
// Language codes, most preferred first. The platform's: read only.
inline constexpr std::string_view AppleLanguages = "AppleLanguages";
// Left behind by a run that did not end; removed by one that does.
inline constexpr std::string_view lastRecord = "last.record";
}  // namespace key

struct PreferenceKey {
  enum class Kind { format, period, onOff, boolean, integer, seconds, text, store, readOnly };

  std::string_view name;
  Kind kind;
  // What initialize() registers; null when nothing is.
  const char* registered = nullptr;
};

// Every key that a user may look at, in the order in which they are shown.
std::span<const PreferenceKey> preferenceKeys();

// Null for a key that does not exist.
const PreferenceKey* findPreferenceKey(std::string_view name);

// The layer of defaults that is registered at every launch.
ValueDictionary registeredDefaults();

// `text` as a value of `key`: a switch is YES or NO, a format vcf or csv, a
// period WEEK or MONTH, a number a number. invalidArgument, with the values
// that would do, when the key cannot mean it.
std::optional<Value> preferenceValue(const PreferenceKey& key, const std::string& text, Status& status);

}  // namespace varnok
