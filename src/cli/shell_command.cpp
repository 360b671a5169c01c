// `varnokctl shell`: the application's screens on a terminal, for a person or,
// as lines of JSON, for a program.

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/interrupt.h"
#include "cli/line_reader.h"
#include "cli/screen_text.h"
#include "cli/shell_presenter.h"
#include "cli/shell_requests.h"

namespace varnok {
namespace {

constexpr std::size_t kUsualColumns = 72;

std::size_t terminalColumns() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
  return size.ws_col;
}

void print(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

std::vector<std::string> wordsOf(std::string_view line) {
  std::vector<std::string> words;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find(' '), line.size());
    if (end > 0) words.emplace_back(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return words;
}

// A person at the keyboard: the screen is printed when it has become another
// one, a line picks one of the choices it offers.
class Conversation {
 public:
  Conversation(ShellDriver& driver, ShellPresenter& presenter, ShellMailComposer& mail)
      : driver_(driver), presenter_(presenter), mail_(mail) {}

  void showScreen() {
    presenter_.takeChanged();
    ScreenText screen = screenText(presenter_, mail_, terminalColumns());
    choices_ = std::move(screen.choices);
    shape_ = shape();
    print("\n" + screen.text);
    for (const std::string& url : presenter_.takeURLs())
      print(shown(url) + "\n");
    print("? help, q quit > ");
  }

  // Prints only what a person would want to be told of; a progress bar moves
  // too often.
  void showIfAnother() {
    if (presenter_.takeChanged() && shape() != shape_) showScreen();
  }

  // False at the wish to leave.
  bool obey(const std::string& line) {
    const std::vector<std::string> words = wordsOf(line);
    if (words.empty()) {
      driver_.settle();
    } else if (words[0] == "q") {
      return false;
    } else if (words[0] == "?") {
      print(kHelp);
    } else if (const Status status = carryOut(words); !status.ok()) {
      print(shown(status.message()) + "\n");
    }
    showScreen();
    return true;
  }

 private:
  static constexpr std::string_view kHelp =
      "A number or a letter of the list does what stands beside it.\n"
      "del NUMBER deletes that row. wait waits until all work is done.\n"
      "An empty line shows the screen again. q leaves.\n";

  // What tells one screen from another: everything but texts that move along
  // with a run.
  std::string shape() const {
    std::string text(presenter_.front().screenName());
    for (const ScreenControl& control : presenter_.front().controls())
      text += control.hidden ? '-' : '+';
    if (const auto* overlay = presenter_.overlay()) text += overlay->text + (overlay->checkmark ? "x" : "");
    if (presenter_.question() != nullptr || mail_.message() != nullptr) {
      text += screenText(presenter_, mail_, kUsualColumns).text;
    }
    return text + fmt::format("/{}", presenter_.screens().size());
  }

  Status carryOut(const std::vector<std::string>& words) {
    if (words[0] == "wait") return driver_.wait(std::chrono::minutes(10));
    if (words[0] == "to" && words.size() > 1) return driver_.sendMail({words.begin() + 1, words.end()});
    if (words[0] == "cancel") return driver_.finishMail(MailComposeResult::cancelled);
    const bool deletes = words[0] == "del" && words.size() == 2;
    for (const ShellChoice& choice : choices_) {
      if (choice.key != (deletes ? words[1] : words[0])) continue;
      if (deletes) {
        return choice.row ? driver_.remove(*choice.row) : Status(Status::Code::invalidArgument, "that is no row");
      }
      return pick(choice);
    }
    return {Status::Code::invalidArgument, "there is no such choice"};
  }

  Status pick(const ShellChoice& choice) {
    if (choice.row) return touch(*choice.row);
    if (!choice.control.empty()) return driver_.tap(choice.control, choice.segment);
    return driver_.answer(choice.button);
  }

  // A row does what its control is for; without one it is marked where several
  // can be, and selected otherwise.
  Status touch(const IndexPath& path) {
    if (!hasRow(presenter_.front(), path)) return {Status::Code::invalidArgument, "there is no such row any more"};
    const TableRow row = presenter_.front().cellForRowAtIndexPath(path);
    if (row.accessoryView) return driver_.toggle(path, !row.accessoryView->on);
    if (row.button || !row.segments.empty()) return driver_.press(path);
    if (driver_.mark(path, !row.marked).ok()) return {};
    return driver_.select(path);
  }

  ShellDriver& driver_;
  ShellPresenter& presenter_;
  ShellMailComposer& mail_;
  std::vector<ShellChoice> choices_;
  std::string shape_;
};

}  // namespace

int shellCommand(ShellContext& context) {
  ThreadTaskRunner& tasks = context.tasks;
  VarnokAppDelegate application(context.platform.services(&context.mail));
  ShellDriver driver(application, context.presenter, context.mail, tasks);
  bool interrupted = false;
  // Cancel of a run where there is one, else the end.
  const InterruptWatch watch([&] {
    tasks.mainThread([&] {
      VarnokViewController* screen = application.viewController();
      if (screen != nullptr && !screen->state().btn_Cancel.hidden) {
        screen->onClick_Cancel();
      } else {
        interrupted = true;
      }
    });
  });
  application.didFinishLaunchingWithOptions({});
  context.presenter.setRoot(*application.window().rootViewController);
  application.applicationDidBecomeActive();
  driver.settle();

  LineReader lines([&tasks] { tasks.mainThread([] {}); });
  Conversation conversation(driver, context.presenter, context.mail);
  if (!context.report.json) conversation.showScreen();
  for (bool quit = false; !quit && !interrupted;) {
    tasks.runUntil([&] {
      if (!context.report.json) conversation.showIfAnother();
      return interrupted || lines.ready();
    });
    const std::optional<std::string> line = interrupted ? std::nullopt : lines.take();
    if (!line) break;
    if (context.report.json) {
      print(answerRequest(*line, driver, context.presenter, context.mail, quit) + "\n");
    } else {
      quit = !conversation.obey(*line);
    }
  }
  context.presenter.close();
  return interrupted ? kInterrupted : kDone;
}

}  // namespace varnok
