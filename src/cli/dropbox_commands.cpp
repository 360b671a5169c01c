#include <algorithm>
#include <cstdio>
#include <functional>

#include <fmt/format.h>
#include <boost/json.hpp>

#include "backup/files/backup_file.h"
#include "backup/files/vnk_util.h"
#include "cli/commands.h"
#include "cli/interrupt.h"
#include "cli/line_reader.h"
#include "cli/progress_bar.h"

namespace varnok {
namespace {

// One command's surroundings: Dropbox set up, and Ctrl-C watched.
class DropboxRun {
 public:
  explicit DropboxRun(CommandContext& context)
      : context_(context), tasks_(context.tasks), watch_([this] { tasks_.mainThread([this] { interrupt(); }); }) {
    context.platform.services().dropbox.startSession();
    tasks_.runUntil([this] { return tasks_.idle(std::chrono::milliseconds(0)); });
  }

  CurlDropboxClient& client() { return context_.platform.dropboxClient(); }
  bool interrupted() const { return interrupted_; }

  // Runs the main thread until `done` or Ctrl-C.
  void await(const std::function<bool()>& done) {
    tasks_.runUntil([&] { return interrupted_ || done(); });
  }

  // Why nothing can be done with an account; an ok Status when it can.
  Status linked() {
    if (!client().problem().ok()) return client().problem();
    if (client().hasAuthorizedClient()) return {};
    return {Status::Code::unavailable, "no Dropbox account is linked; varnokctl dropbox link does that"};
  }

  // Runs one upload or download to its end, with a bar; Ctrl-C cancels it.
  using Start = std::function<std::shared_ptr<DropboxTransfer>(DropboxProgress, DropboxResponse)>;
  std::optional<DropboxMetadata> transfer(const std::string& label, Status& status, const Start& start) {
    ProgressBar bar(context_.report.quiet);
    bool ended = false;
    std::optional<DropboxMetadata> result;
    transfer_ = start(
        [&](std::uint64_t done, std::uint64_t expected) {
          if (expected > 0) bar.show(static_cast<double>(done) / static_cast<double>(expected), label);
        },
        [&](const std::optional<DropboxMetadata>& metadata, const Status& outcome) {
          result = metadata;
          status = outcome;
          ended = true;
        });
    tasks_.runUntil([&] { return ended; });
    return result;
  }

  int failure(const Status& status) {
    return interrupted_ ? static_cast<int>(kInterrupted) : context_.report.failure(status);
  }

 private:
  void interrupt() {
    interrupted_ = true;
    if (transfer_ != nullptr) transfer_->cancel();
  }

  CommandContext& context_;
  ThreadTaskRunner& tasks_;
  bool interrupted_ = false;
  std::shared_ptr<DropboxTransfer> transfer_;
  InterruptWatch watch_;
};

// As a person may write it: "backups/", "/backups".
std::string accountPath(std::string path) {
  if (!path.starts_with('/')) path.insert(0, 1, '/');
  while (path.size() > 1 && path.ends_with('/'))
    path.pop_back();
  return path;
}

int reportState(CommandContext& context) {
  const CurlDropboxClient& client = context.platform.dropboxClient();
  const bool linked = client.hasAuthorizedClient();
  boost::json::object state{{"linked", linked}, {"account", nullptr}, {"tokens", nullptr}};
  std::string text = "No Dropbox account is linked.\n";
  if (linked) {
    const char* place = client.isInKeyring() ? "keyring" : "file";
    if (!client.accountID().empty()) state["account"] = jsonText(client.accountID());
    state["tokens"] = place;
    text = fmt::format("A Dropbox account is linked{}{}; its tokens are in the {}.\n",
                       client.accountID().empty() ? "" : ": ", shown(client.accountID()), place);
  }
  context.report.result(state, text);
  return kDone;
}

void askForAddress(const Report& report, const std::string& url) {
  // With --json standard output is the result's alone.
  std::FILE* out = report.json ? stderr : stdout;
  std::fprintf(out,
               "Open this address in a browser and allow the access:\n\n%s\n\n"
               "The browser is then sent to an address that it cannot open. Paste that here:\n",
               url.c_str());
  std::fflush(out);
}

// The line that the user, or a script, gives; nothing at the end of the input.
std::optional<std::string> awaitLine(DropboxRun& run, ThreadTaskRunner& tasks) {
  LineReader reader([&tasks] { tasks.mainThread([] {}); });
  run.await([&reader] { return reader.ready(); });
  return run.interrupted() ? std::nullopt : reader.take();
}

int reportTransfer(const CommandContext& context, const DropboxMetadata& metadata, const std::string& path,
                   std::string_view done) {
  context.report.result(
      {{"name", jsonText(metadata.name)}, {"path", jsonText(path)}, {"bytes", metadata.size}},
      fmt::format("{} {}, {}\n", shown(path), done, VNKUtil::convertSize(static_cast<double>(metadata.size))));
  return kDone;
}

// Uploads a file of the documents directory to the account's root.
std::optional<DropboxMetadata> upload(CommandContext& context, DropboxRun& run, const std::string& name,
                                      Status& status) {
  const Services services = context.platform.services();
  const std::vector<std::string> files = services.files.filesBelow(services.documents);
  if (std::ranges::find(files, name) == files.end()) {
    status = {Status::Code::notFound, "there is no backup " + name};
    return std::nullopt;
  }
  if (status = run.linked(); !status.ok()) return std::nullopt;
  return run.transfer(name, status, [&](DropboxProgress progress, DropboxResponse response) {
    return run.client().upload({services.documents + "/" + name, "/" + std::string(lastPathComponent(name)),
                                std::move(progress), std::move(response)});
  });
}

std::string entryLine(const DropboxMetadata& entry, const Clock& clock) {
  if (entry.isFolder) return fmt::format("{:16}  {:>12}  {}/\n", "", "", shown(entry.name));
  const LocalTime time = clock.localTime(entry.modified);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}  {:>12}  {}\n", time.year, time.month, time.day, time.hour,
                     time.minute, VNKUtil::convertSize(static_cast<double>(entry.size)), shown(entry.name));
}

boost::json::object entryJson(const DropboxMetadata& entry) {
  boost::json::object json{{"name", jsonText(entry.name)},
                           {"path", jsonText(entry.pathDisplay)},
                           {"folder", entry.isFolder},
                           {"bytes", nullptr},
                           {"modified", nullptr}};
  if (entry.isFolder) return json;
  json["bytes"] = entry.size;
  json["modified"] = utcText(entry.modified);
  return json;
}

}  // namespace

int dropboxCommand(CommandContext& context) {
  const DropboxRun run(context);
  return reportState(context);
}

int dropboxLinkCommand(CommandContext& context) {
  DropboxRun run(context);
  if (!run.client().problem().ok()) return run.failure(run.client().problem());
  if (run.client().hasAuthorizedClient()) return reportState(context);
  run.client().authorize([&](const std::string& url) { askForAddress(context.report, url); });
  const auto line = awaitLine(run, context.tasks);
  if (!line) return run.failure({Status::Code::cancelled, "no address was given, and no account was linked"});
  std::optional<DropboxRedirectResult> result;
  if (!run.client().handleRedirectURL(*line, [&](const DropboxRedirectResult& given) { result = given; })) {
    return run.failure({Status::Code::invalidArgument, "that is not the address: it begins with db-"});
  }
  run.await([&] { return result.has_value(); });
  if (result && result->outcome == DropboxRedirectResult::Outcome::success) return reportState(context);
  const bool refused = result && result->outcome == DropboxRedirectResult::Outcome::cancelled;
  return run.failure({Status::Code::unavailable,
                      refused ? "the access was not allowed" : result.value_or(DropboxRedirectResult()).description});
}

int dropboxUnlinkCommand(CommandContext& context) {
  DropboxRun run(context);
  if (const Status status = run.client().unlinkClients(); !status.ok()) return run.failure(status);
  run.await([&] { return context.tasks.idle(std::chrono::milliseconds(0)); });
  return reportState(context);
}

int dropboxListCommand(CommandContext& context, const std::string& path) {
  DropboxRun run(context);
  if (const Status status = run.linked(); !status.ok()) return run.failure(status);
  const std::string folder = accountPath(path);
  std::optional<Status> status;
  std::vector<DropboxMetadata> entries;
  run.client().listFolder(folder, [&](const auto& listed, const Status& outcome) {
    status = outcome;
    entries = listed.value_or(std::vector<DropboxMetadata>());
  });
  run.await([&] { return status.has_value(); });
  if (!status || !status->ok()) return run.failure(status.value_or(Status()));
  std::stable_partition(entries.begin(), entries.end(), std::mem_fn(&DropboxMetadata::isFolder));
  boost::json::array list;
  std::string text;
  for (const DropboxMetadata& entry : entries) {
    list.push_back(entryJson(entry));
    text += entryLine(entry, context.platform.services().clock);
  }
  context.report.result({{"path", jsonText(folder)}, {"entries", std::move(list)}}, text);
  return kDone;
}

int dropboxGetCommand(CommandContext& context, const std::string& path) {
  DropboxRun run(context);
  Status status = run.linked();
  if (!status.ok()) return run.failure(status);
  const std::string remote = accountPath(path);
  const std::string name = plainFileName(lastPathComponent(remote));
  const std::string local = context.platform.paths().documents + "/" + name;
  const auto metadata = run.transfer(name, status, [&](DropboxProgress progress, DropboxResponse response) {
    return run.client().download({remote, local, std::move(progress), std::move(response)});
  });
  return metadata ? reportTransfer(context, *metadata, local, "downloaded") : run.failure(status);
}

int dropboxPutCommand(CommandContext& context, const std::string& name) {
  DropboxRun run(context);
  Status status;
  const auto metadata = upload(context, run, name, status);
  return metadata ? reportTransfer(context, *metadata, metadata->pathDisplay, "uploaded") : run.failure(status);
}

int backupsUploadCommand(CommandContext& context, const std::string& name) {
  DropboxRun run(context);
  Status status;
  if (!upload(context, run, name, status)) return run.failure(status);
  context.report.result({{"result", "uploaded"}}, fmt::format("{} uploaded\n", shown(name)));
  return kDone;
}

}  // namespace varnok
