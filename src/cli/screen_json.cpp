#include "cli/screen_json.h"

#include <boost/json.hpp>

#include "cli/report.h"

namespace varnok {
namespace {

namespace json = boost::json;

json::value textOrNull(const std::optional<std::string>& text) {
  return text ? json::value(jsonText(*text)) : json::value();
}

json::array texts(const std::vector<std::string>& list) {
  json::array array;
  for (const std::string& text : list)
    array.emplace_back(jsonText(text));
  return array;
}

json::object controlsOf(const Screen& screen) {
  json::object controls;
  for (const ScreenControl& control : screen.controls()) {
    json::object written{{"hidden", control.hidden}, {"enabled", control.enabled}, {"text", jsonText(control.text)}};
    if (!control.segments.empty()) written["segments"] = texts(control.segments);
    controls[control.name] = std::move(written);
  }
  if (const auto bar = screen.progressBar()) {
    controls["progress"] = {
        {"minValue", bar->minValue}, {"maxValue", bar->maxValue}, {"currentValue", bar->currentValue}};
  }
  return controls;
}

json::object rowDocument(const TableRow& row) {
  json::object written{{"text", jsonText(row.text)},
                       {"detail", textOrNull(row.detail)},
                       {"accessory", static_cast<int>(row.accesorType)},
                       {"checked", row.checked},
                       {"marked", row.marked},
                       {"switch", nullptr},
                       {"button", nullptr},
                       {"segments", nullptr},
                       {"progress", nullptr},
                       {"badge", textOrNull(row.badge)}};
  if (const auto& control = row.accessoryView) {
    written["switch"] = {{"on", control->on}, {"enabled", control->enabled}, {"tag", control->tag}};
  }
  if (const auto& button = row.button) {
    written["button"] = {{"title", jsonText(button->title)}, {"enabled", button->enabled}};
  }
  if (!row.segments.empty()) written["segments"] = texts(row.segments);
  if (row.progress) written["progress"] = *row.progress;
  return written;
}

json::array sectionsOf(const Screen& screen) {
  json::array sections;
  for (int section = 0; section < screen.numberOfSections(); ++section) {
    const TableHeading heading = screen.headingOfSection(section);
    json::array rows;
    for (int row = 0; row < screen.numberOfRowsInSection(section); ++row)
      rows.emplace_back(rowDocument(screen.cellForRowAtIndexPath({section, row})));
    sections.emplace_back(json::object{
        {"header", textOrNull(heading.title)}, {"footer", textOrNull(heading.footer)}, {"rows", std::move(rows)}});
  }
  return sections;
}

json::object alertDocument(const AlertView& alert) {
  return {{"title", jsonText(alert.title)},
          {"message", textOrNull(alert.message)},
          {"buttons", texts(alert.buttons)},
          {"tag", alert.tag}};
}

json::object sheetDocument(const ActionSheet& sheet) {
  json::object written{{"title", jsonText(sheet.title)},
                       {"buttons", texts(sheet.buttons)},
                       {"cancel", sheet.cancelButtonIndex},
                       {"destructive", nullptr},
                       {"tag", sheet.tag}};
  if (sheet.destructiveButtonIndex) written["destructive"] = *sheet.destructiveButtonIndex;
  return written;
}

json::object mailDocument(const MailMessage& message) {
  json::object written{{"subject", jsonText(message.subject)},
                       {"body", jsonText(message.body)},
                       {"html", message.bodyIsHTML},
                       {"attachment", nullptr}};
  if (!message.attachments.empty()) {
    const MailAttachment& attachment = message.attachments.front();
    written["attachment"] = {{"name", jsonText(attachment.fileName)},
                             {"mimeType", jsonText(attachment.mimeType)},
                             {"bytes", attachment.bytes.size()}};
  }
  return written;
}

}  // namespace

json::object screenDocument(const PresentationStack& stack, const ShellMailComposer& mail) {
  const Screen& front = stack.front();
  json::array presented;
  for (const Screen* screen : stack.screens())
    presented.emplace_back(screen->screenName());
  json::object document{{"screen", front.screenName()},
                        {"presented", std::move(presented)},
                        {"title", textOrNull(front.title())},
                        {"header", textOrNull(front.tableHeader())},
                        {"controls", controlsOf(front)},
                        {"sections", sectionsOf(front)},
                        {"alert", nullptr},
                        {"actionSheet", nullptr},
                        {"overlay", nullptr},
                        {"mail", nullptr}};
  if (const auto* question = stack.question()) {
    if (const auto* alert = std::get_if<AlertView>(question)) document["alert"] = alertDocument(*alert);
    if (const auto* sheet = std::get_if<ActionSheet>(question)) document["actionSheet"] = sheetDocument(*sheet);
  }
  if (const auto* overlay = stack.overlay()) {
    document["overlay"] = {{"text", jsonText(overlay->text)}, {"checkmark", overlay->checkmark}};
  }
  if (const MailMessage* message = mail.message()) document["mail"] = mailDocument(*message);
  return document;
}

}  // namespace varnok
