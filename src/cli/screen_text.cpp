#include "cli/screen_text.h"

#include <algorithm>

#include <fmt/format.h>

#include "cli/report.h"

namespace varnok {
namespace {

// Characters, not bytes: those that begin one.
std::size_t width(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

class Page {
 public:
  explicit Page(std::size_t columns) : columns_(std::max<std::size_t>(columns, 20)) {}

  // `text` wrapped at its blanks, later lines indented like the first.
  void paragraph(std::string_view text, std::size_t indent = 0) {
    std::size_t begin = 0;
    for (;;) {
      const std::size_t end = std::min(text.find('\n', begin), text.size());
      line(text.substr(begin, end - begin), indent);
      if (end == text.size()) return;
      begin = end + 1;
    }
  }

  void heading(std::string_view text, char underline) {
    const std::string clean = shown(text);
    paragraph(clean);
    text_ += std::string(std::min(width(clean), columns_), underline) + "\n";
  }

  void blank() { text_ += "\n"; }

  void choice(ShellChoice choice, std::string_view text) {
    paragraph(fmt::format("{:>3} {}", choice.key, text), 0);
    choices_.push_back(std::move(choice));
  }

  ScreenText take() { return {std::move(text_), std::move(choices_)}; }

 private:
  void line(std::string_view raw, std::size_t indent) {
    const std::string clean = shown(raw);
    const std::string margin(indent, ' ');
    std::string row = margin;
    std::size_t used = indent;
    std::string_view rest = clean;
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find(' ', rest.find_first_not_of(' ')), rest.size());
      const std::string_view word = rest.substr(0, end);
      if (used > indent && used + width(word) > columns_) {
        text_ += row + "\n";
        row = margin + "   ";
        used = indent + 3;
      }
      row += word;
      used += width(word);
      rest.remove_prefix(end);
    }
    text_ += row + "\n";
  }

  const std::size_t columns_;
  std::string text_;
  std::vector<ShellChoice> choices_;
};

// "Phone Numbers [on]", "Type: vCard >".
std::string rowText(const TableRow& row) {
  std::string text;
  if (row.checked) text += "(x) ";
  if (row.marked) text += "[x] ";
  if (row.button) text += "[" + row.button->title + "]" + (row.button->enabled ? "" : " (off)");
  text += row.text;
  if (row.detail && !row.detail->empty()) text += ": " + *row.detail;
  if (row.badge) text += " (" + *row.badge + ")";
  if (row.accessoryView) {
    text += row.accessoryView->on ? " [on]" : " [off]";
    if (!row.accessoryView->enabled) text += " (not now)";
  }
  for (const std::string& segment : row.segments)
    text += " [" + segment + "]";
  if (row.progress) text += fmt::format(" {:.0f} %", *row.progress * 100);
  if (row.accesorType == RowAccessory::disclosure) text += " >";
  std::ranges::replace(text, '\n', ' ');
  return text;
}

void addTable(Page& page, const Screen& screen) {
  int number = 0;
  for (int section = 0; section < screen.numberOfSections(); ++section) {
    const TableHeading heading = screen.headingOfSection(section);
    page.blank();
    if (heading.title) page.paragraph("-- " + *heading.title);
    for (int row = 0; row < screen.numberOfRowsInSection(section); ++row) {
      const IndexPath indexPath{section, row};
      page.choice({.key = std::to_string(++number), .row = indexPath},
                  rowText(screen.cellForRowAtIndexPath(indexPath)));
    }
    if (heading.footer) page.paragraph(*heading.footer, 4);
  }
}

bool isLabel(const ScreenControl& control) {
  return control.name.starts_with("lbl_");
}

void addLabels(Page& page, const Screen& screen) {
  for (const ScreenControl& control : screen.controls()) {
    if (isLabel(control) && !control.hidden && !control.text.empty()) page.paragraph(control.text);
  }
}

void addControls(Page& page, const Screen& screen) {
  page.blank();
  char letter = 'a';
  for (const ScreenControl& control : screen.controls()) {
    if (control.hidden || isLabel(control)) continue;
    const std::string key(1, letter++);
    const std::string off = control.enabled ? "" : " (off)";
    if (control.segments.empty()) {
      page.choice({.key = key, .row = std::nullopt, .control = control.name}, fmt::format("[{}]{}", control.text, off));
    }
    for (int segment = 0; segment < static_cast<int>(control.segments.size()); ++segment) {
      const std::string& title = control.segments[static_cast<std::size_t>(segment)];
      page.choice({key + std::to_string(segment + 1), std::nullopt, control.name, segment},
                  fmt::format("[{}]{}", title, off));
    }
  }
}

void addQuestion(Page& page, const PresentationStack::Question& question) {
  std::visit([&page](const auto& shown) { page.heading(shown.title.empty() ? "?" : shown.title, '='); }, question);
  if (const auto* alert = std::get_if<AlertView>(&question); alert != nullptr && alert->message) {
    page.paragraph(*alert->message);
  }
  int index = 0;
  for (const std::string& button : buttonsOf(question)) {
    page.choice({.key = std::to_string(index + 1), .row = std::nullopt, .button = index}, "[" + button + "]");
    ++index;
  }
}

void addMail(Page& page, const MailMessage& message) {
  page.heading(message.subject, '=');
  for (const MailAttachment& attachment : message.attachments)
    page.paragraph(fmt::format("+ {} ({} bytes)", attachment.fileName, attachment.bytes.size()));
  page.paragraph("to ADDRESS... sends it, cancel does not");
}

}  // namespace

ScreenText screenText(const PresentationStack& stack, const ShellMailComposer& mail, std::size_t columns) {
  Page page(columns);
  const Screen& front = stack.front();
  if (stack.question() != nullptr) {
    addQuestion(page, *stack.question());
  } else if (mail.message() != nullptr) {
    addMail(page, *mail.message());
  } else {
    page.heading(front.title().value_or("Varnok"), '=');
    if (const auto* overlay = stack.overlay()) page.paragraph(overlay->text + (overlay->checkmark ? " (x)" : " ..."));
    if (const auto header = front.tableHeader()) page.paragraph(*header);
    addLabels(page, front);
    addTable(page, front);
    addControls(page, front);
  }
  return page.take();
}

}  // namespace varnok
