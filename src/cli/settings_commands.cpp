#include <boost/json.hpp>

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"
#include "cli/commands.h"

namespace varnok {
namespace {

namespace json = boost::json;

json::value jsonOf(const Value& value);

struct JSONWriter {
  json::value operator()(bool flag) const { return flag; }
  json::value operator()(std::int64_t number) const { return number; }
  json::value operator()(double number) const { return number; }
  json::value operator()(const std::string& text) const { return json::value(jsonText(text)); }
  json::value operator()(Instant instant) const { return instant.time_since_epoch().count(); }
  json::value operator()(const ValueArray& values) const {
    json::array array;
    for (const Value& value : values)
      array.push_back(jsonOf(value));
    return array;
  }
  json::value operator()(const ValueDictionary& values) const {
    json::object object;
    for (const auto& [name, value] : values)
      object[jsonText(name)] = jsonOf(value);
    return object;
  }
};

json::value jsonOf(const Value& value) {
  return std::visit(
      JSONWriter{},
      static_cast<const std::variant<bool, std::int64_t, double, std::string, Instant, ValueArray, ValueDictionary>&>(
          value));
}

json::value originText(PreferenceStore::Origin origin) {
  switch (origin) {
    case PreferenceStore::Origin::absent: return nullptr;
    case PreferenceStore::Origin::registered: return "registered";
    case PreferenceStore::Origin::stored: return "stored";
    case PreferenceStore::Origin::run: return "run";
  }
  return nullptr;
}

std::string textOf(const json::value& value) {
  if (value.is_null()) return "-";
  if (value.is_double()) return fmt::format("{}", value.get_double());
  return value.is_string() ? shown(std::string_view(value.get_string())) : shown(json::serialize(value));
}

json::value currentValue(const PreferenceStore& preferences, std::string_view name) {
  const std::optional<Value> value = preferences.objectForKey(name);
  return value ? jsonOf(*value) : json::value();
}

std::string unknownKey(const std::string& name) {
  return "there is no preference " + name;
}

// What get, set and reset answer with.
int answerWith(const CommandContext& context, const std::string& name) {
  const PreferenceStore& preferences = context.platform.services().preferences;
  const json::value value = currentValue(preferences, name);
  context.report.result({{name, {{"value", value}, {"from", originText(preferences.originOf(name))}}}},
                        textOf(value) + "\n");
  return kDone;
}

int flushed(const CommandContext& context, const std::string& name) {
  Status status = context.platform.services().preferences.synchronize();
  return status.ok() ? answerWith(context, name) : context.report.failure(status);
}

}  // namespace

int settingsCommand(CommandContext& context) {
  const PreferenceStore& preferences = context.platform.services().preferences;
  json::object document;
  std::string text;
  for (const PreferenceKey& known : preferenceKeys()) {
    const json::value value = currentValue(preferences, known.name);
    const json::value origin = originText(preferences.originOf(known.name));
    document[std::string(known.name)] = {{"value", value}, {"from", origin}};
    text += fmt::format("{:<34} {:<12} {}\n", known.name, textOf(origin), textOf(value));
  }
  context.report.result(document, text);
  return kDone;
}

int settingsGetCommand(CommandContext& context, const std::string& name) {
  if (findPreferenceKey(name) == nullptr) return context.report.failure(unknownKey(name));
  return answerWith(context, name);
}

int settingsSetCommand(CommandContext& context, const std::string& name, const std::string& value) {
  const PreferenceKey* known = findPreferenceKey(name);
  if (known == nullptr) return context.report.failure(unknownKey(name));
  Status status;
  const std::optional<Value> meant = preferenceValue(*known, value, status);
  if (!meant) return context.report.failure(status);
  context.platform.services().preferences.setObject(*meant, name);
  return flushed(context, name);
}

int settingsResetCommand(CommandContext& context, const std::string& name) {
  const PreferenceKey* known = findPreferenceKey(name);
  if (known == nullptr) return context.report.failure(unknownKey(name));
  if (known->kind == PreferenceKey::Kind::readOnly) return context.report.failure(name + " is read only");
  context.platform.services().preferences.removeObjectForKey(name);
  return flushed(context, name);
}

}  // namespace varnok
