#include "platform/linux/desktop/file_notification_scheduler.h"

#include <unicode/gregocal.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <boost/json.hpp>
#include <memory>

namespace varnok {
namespace {

namespace json = boost::json;
using Repeat = LocalNotification::Repeat;

constexpr std::string_view kWeek = "WEEK";
constexpr std::string_view kMonth = "MONTH";

// Times further away than some ten thousand years mean a damaged file.
constexpr std::int64_t kMostSeconds = 300'000'000'000;

constexpr double kMillisecond = 1000.0;  // ICU's unit, in a second.

std::string textOf(const json::object& object, std::string_view name) {
  const json::value* value = object.if_contains(name);
  return value != nullptr && value->is_string() ? std::string(value->get_string()) : std::string();
}

std::optional<Instant> instantIn(const json::object& object, std::string_view name) {
  const json::value* value = object.if_contains(name);
  if (value == nullptr || !value->is_int64()) return std::nullopt;
  const std::int64_t seconds = value->get_int64();
  if (seconds <= -kMostSeconds || seconds >= kMostSeconds) return std::nullopt;
  return Instant(std::chrono::seconds(seconds));
}

// The zone of that name, else the system's.
std::unique_ptr<icu::TimeZone> zoneNamed(const std::string& name) {
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name)));
  if (*zone == icu::TimeZone::getUnknown()) zone.reset(icu::TimeZone::createDefault());
  return zone;
}

// The showings of a reminder: a week or a calendar month apart on the clock of
// its zone.
class Showings {
 public:
  explicit Showings(const LocalNotification& notification)
      : notification_(notification), calendar_(zoneNamed(notification.timeZone).release(), error_) {}

  // Showing `count` after the first; the first when ICU cannot count that far.
  Instant at(int count) {
    const bool weekly = notification_.repeat == Repeat::week;
    const auto first = notification_.fireDate.time_since_epoch();
    calendar_.setTime(static_cast<UDate>(first.count()) * kMillisecond, error_);
    calendar_.add(weekly ? UCAL_DATE : UCAL_MONTH, weekly ? 7 * count : count, error_);
    const UDate milliseconds = calendar_.getTime(error_);
    if (U_FAILURE(error_)) return notification_.fireDate;
    return Instant(std::chrono::seconds(static_cast<std::int64_t>(milliseconds / kMillisecond)));
  }

  Instant firstAfter(Instant now) {
    using std::chrono::days;
    const auto longest = notification_.repeat == Repeat::week ? days(7) : days(31);
    // Not too many of the longest kind, with a day to spare for shifted clocks.
    int count = std::max(1, static_cast<int>((now - notification_.fireDate - days(1)) / longest));
    while (at(count) <= now && U_SUCCESS(error_))
      ++count;
    return at(count);
  }

 private:
  const LocalNotification& notification_;
  UErrorCode error_ = U_ZERO_ERROR;
  icu::GregorianCalendar calendar_;
};

}  // namespace

struct FileNotificationScheduler::Planned {
  LocalNotification notification;  // With the first fire date.
  Instant next;
};

Status FileNotificationScheduler::cancelAllLocalNotifications() {
  Status status = files_.remove(path_);
  return status.code() == Status::Code::notFound ? Status() : status;
}

Status FileNotificationScheduler::scheduleLocalNotification(LocalNotification notification) {
  const Instant first = notification.fireDate;
  return write({std::move(notification), first});
}

std::optional<LocalNotification> FileNotificationScheduler::pending() const {
  std::optional<Planned> planned = read();
  if (!planned) return std::nullopt;
  planned->notification.fireDate = planned->next;
  return std::move(planned->notification);
}

Status FileNotificationScheduler::notificationWasShown(Instant now) {
  std::optional<Planned> planned = read();
  if (!planned || planned->next > now) return {};
  planned->next = Showings(planned->notification).firstAfter(now);
  return write(*planned);
}

std::optional<FileNotificationScheduler::Planned> FileNotificationScheduler::read() const {
  Status status;
  const std::optional<std::string> text = files_.readFile(path_, status);
  if (!text) return std::nullopt;
  json::error_code error;
  const json::value parsed = json::parse(*text, error);
  const json::object* object = error ? nullptr : parsed.if_object();
  const std::optional<Instant> first = object == nullptr ? std::nullopt : instantIn(*object, "fireDate");
  if (!first) return std::nullopt;
  Planned planned;
  LocalNotification& notification = planned.notification;
  notification.fireDate = *first;
  planned.next = instantIn(*object, "nextFireDate").value_or(*first);
  notification.repeat = textOf(*object, "repeat") == kWeek ? Repeat::week : Repeat::month;
  notification.alertBody = textOf(*object, "alertBody");
  notification.alertAction = textOf(*object, "alertAction");
  notification.timeZone = textOf(*object, "timeZone");
  const json::value* sound = object->if_contains("defaultSound");
  notification.defaultSound = sound == nullptr || !sound->is_bool() || sound->get_bool();
  return planned;
}

Status FileNotificationScheduler::write(const Planned& planned) {
  const LocalNotification& notification = planned.notification;
  const std::string text = json::serialize(json::object{
      {"fireDate", notification.fireDate.time_since_epoch().count()},
      {"nextFireDate", planned.next.time_since_epoch().count()},
      {"repeat", notification.repeat == Repeat::week ? kWeek : kMonth},
      {"alertBody", notification.alertBody},
      {"alertAction", notification.alertAction},
      {"timeZone", notification.timeZone},
      {"defaultSound", notification.defaultSound},
  });
  Status status;
  const auto file = files_.createAtomic(path_, status);
  if (file == nullptr) return status;
  if (status = file->append(text); !status.ok()) return status;
  return file->commit();
}

}  // namespace varnok
