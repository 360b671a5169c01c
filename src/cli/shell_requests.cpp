#include "cli/shell_requests.h"

#include <array>
#include <boost/json.hpp>
#include <functional>

#include <fmt/format.h>

#include "cli/report.h"
#include "cli/screen_json.h"

namespace varnok {
namespace {

namespace json = boost::json;

constexpr double kUsualWait = 60;  // Seconds, where the request names none.
constexpr double kLongestWait = 1e6;

Status wrong(std::string message) {
  return {Status::Code::invalidArgument, std::move(message)};
}

// Reads the members of a request; the first that is missing or of another kind
// is remembered.
class Members {
 public:
  explicit Members(const json::object& object) : object_(object) {}

  int number(std::string_view name) {
    const json::value* value = object_.if_contains(name);
    if (value != nullptr && value->is_int64() && value->get_int64() >= INT32_MIN && value->get_int64() <= INT32_MAX) {
      return static_cast<int>(value->get_int64());
    }
    missing(name, "a number");
    return 0;
  }
  int number(std::string_view name, int otherwise) { return object_.contains(name) ? number(name) : otherwise; }

  double seconds(std::string_view name, double otherwise) {
    const json::value* value = object_.if_contains(name);
    if (value == nullptr) return otherwise;
    json::error_code error;
    const double seconds = value->to_number<double>(error);
    if (!error && seconds >= 0 && seconds <= kLongestWait) return seconds;
    missing(name, "a number of seconds");
    return 0;
  }

  bool flag(std::string_view name) {
    const json::value* value = object_.if_contains(name);
    if (value != nullptr && value->is_bool()) return value->get_bool();
    missing(name, "true or false");
    return false;
  }

  std::string text(std::string_view name) {
    const json::value* value = object_.if_contains(name);
    if (value != nullptr && value->is_string()) return std::string(value->get_string());
    missing(name, "a text");
    return "";
  }

  std::vector<std::string> texts(std::string_view name) {
    std::vector<std::string> list;
    const json::value* value = object_.if_contains(name);
    if (value == nullptr) return list;
    if (const json::array* array = value->if_array()) {
      for (const json::value& item : *array) {
        if (item.is_string()) list.emplace_back(item.get_string());
      }
    }
    if (list.empty()) missing(name, "a list of texts");
    return list;
  }

  IndexPath indexPath() { return {number("section"), number("row")}; }

  const Status& status() const { return status_; }

 private:
  void missing(std::string_view name, std::string_view kind) {
    if (status_.ok()) status_ = wrong(fmt::format("\"{}\" must be {}", name, kind));
  }

  const json::object& object_;
  Status status_;
};

std::optional<MailComposeResult> resultNamed(std::string_view name) {
  constexpr std::array kNames{"cancelled", "saved", "sent", "failed"};  // By their numbers.
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (name == kNames[i]) return static_cast<MailComposeResult>(i);
  }
  return std::nullopt;
}

Status mail(Members& members, ShellDriver& driver) {
  const auto result = resultNamed(members.text("result"));
  std::vector<std::string> to = members.texts("to");
  if (!members.status().ok()) return members.status();
  if (!result) return wrong("\"result\" is sent, saved, cancelled or failed");
  if (*result == MailComposeResult::sent && !to.empty()) return driver.sendMail(std::move(to));
  return driver.finishMail(*result);
}

Status event(Members& members, ShellDriver& driver) {
  const std::string name = members.text("name");
  if (!members.status().ok()) return members.status();
  if (name == "applicationDidBecomeActive") {
    driver.becomeActive();
  } else if (name == "openURL") {
    const std::string url = members.text("url");
    if (members.status().ok()) driver.openURL(url);
  } else if (name == "localNotification") {
    const std::string state = members.text("state");
    if (!members.status().ok()) return members.status();
    if (state != "inactive" && state != "active") return wrong("\"state\" is inactive or active");
    driver.localNotification(state == "active" ? ApplicationState::active : ApplicationState::inactive);
  } else {
    return wrong("there is no event " + name);
  }
  return members.status();
}

// Runs `action` once every member it needs has been read well.
Status withMembers(const Members& members, const std::function<Status()>& action) {
  return members.status().ok() ? action() : members.status();
}

Status onRow(std::string_view what, Members& members, ShellDriver& driver) {
  const IndexPath path = members.indexPath();
  if (what == "select") return withMembers(members, [&] { return driver.select(path); });
  if (what == "press") return withMembers(members, [&] { return driver.press(path); });
  if (what == "delete") return withMembers(members, [&] { return driver.remove(path); });
  const bool on = members.flag("on");
  if (what == "switch") return withMembers(members, [&] { return driver.toggle(path, on); });
  return withMembers(members, [&] { return driver.mark(path, on); });
}

Status carryOut(const json::object& request, ShellDriver& driver, bool& quit) {
  Members members(request);
  const std::string what = members.text("do");
  if (!members.status().ok()) return members.status();
  if (what == "show") {
    driver.settle();
    return {};
  }
  if (what == "tap") {
    const std::string control = members.text("control");
    const int segment = members.number("segment", 0);
    return withMembers(members, [&] { return driver.tap(control, segment); });
  }
  if (what == "answer") {
    const int index = members.number("index");
    return withMembers(members, [&] { return driver.answer(index); });
  }
  if (what == "wait") {
    const double seconds = members.seconds("seconds", kUsualWait);
    return withMembers(members, [&] { return driver.wait(std::chrono::duration<double>(seconds)); });
  }
  if (what == "mail") return mail(members, driver);
  if (what == "event") return event(members, driver);
  if (what == "quit") {
    quit = true;
    return {};
  }
  constexpr std::array kOnRows{"select", "press", "delete", "switch", "mark"};
  if (std::ranges::find(kOnRows, what) != kOnRows.end()) return onRow(what, members, driver);
  return wrong("\"do\": there is no " + what);
}

}  // namespace

std::string answerRequest(const std::string& line, ShellDriver& driver, ShellPresenter& presenter,
                          const ShellMailComposer& mail, bool& quit) {
  json::error_code error;
  const json::value request = json::parse(line, error);
  const Status status = error || !request.is_object() ? wrong("the line is no JSON object")
                                                      : carryOut(request.get_object(), driver, quit);
  if (!status.ok()) return json::serialize(json::object{{"ok", false}, {"error", jsonText(status.message())}});
  json::object answer{{"ok", true}};
  for (const auto& [key, value] : screenDocument(presenter, mail))
    answer[key] = value;
  const std::vector<std::string> urls = presenter.takeURLs();
  answer["openURL"] = urls.empty() ? json::value() : json::value(jsonText(urls.back()));
  return json::serialize(answer);
}

}  // namespace varnok
