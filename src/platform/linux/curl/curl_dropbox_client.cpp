#include "platform/linux/curl/curl_dropbox_client.h"

#include <optional>
#include <stop_token>
#include <utility>

#include "platform/linux/curl/dropbox_account.h"
#include "platform/linux/curl/dropbox_service.h"
#include "platform/linux/curl/dropbox_transfers.h"

namespace varnok {
namespace {

// Progress that a bar can show. More would fill the main thread.
constexpr std::chrono::milliseconds kBetweenReports{40};

class CurlTransfer : public DropboxTransfer {
 public:
  void cancel() override { source.request_stop(); }

  std::stop_source source;
};

Status notSetUp() {
  return {Status::Code::unavailable, "Dropbox is not set up"};
}

}  // namespace

// Tasks hold it, so it outlives the client; `closing` tells them that the
// client has gone.
struct CurlDropboxClient::State : std::enable_shared_from_this<State> {
  State(const Settings& settings, TaskRunner& runner, const Clock& time, DeveloperLog& log)
      : tasks(runner),
        clock(time),
        firstPause(settings.firstPause),
        addresses(dropboxAddresses(settings.api, settings.caFile, problem)),
        account(settings.accountFile, settings.useKeyring ? openKeyring(settings.accountFile) : nullptr, log) {}

  TaskRunner& tasks;
  const Clock& clock;
  const std::chrono::milliseconds firstPause;
  Status problem;
  const DropboxAddresses addresses;
  DropboxAccount account;
  std::stop_source closing;

  // Main thread. Null until it is set up, then never replaced.
  std::unique_ptr<DropboxService> service;
  std::optional<DropboxSignIn> signIn;  // Under way.

  // Runs `work`, which answers what is to be done on the main thread.
  void inBackground(std::shared_ptr<CurlTransfer> transfer, std::function<Task(const std::stop_token& stop)> work) {
    tasks.globalQueue([self = shared_from_this(), transfer = std::move(transfer), work = std::move(work)] {
      const std::stop_callback closed(self->closing.get_token(), [&transfer] { transfer->cancel(); });
      self->onMainThread(work(transfer->source.get_token()));
    });
  }

  void onMainThread(Task task) {
    tasks.mainThread([self = shared_from_this(), task = std::move(task)] {
      if (!self->closing.stop_requested()) task();
    });
  }

  // Passes on to the main thread what is worth showing.
  DropboxProgress forwarded(DropboxProgress progress) {
    if (!progress) return {};
    return [self = shared_from_this(), progress = std::move(progress), next = std::chrono::steady_clock::time_point()](
               std::uint64_t done, std::uint64_t expected) mutable {
      const auto now = std::chrono::steady_clock::now();
      if (now < next && done != expected) return;
      next = now + kBetweenReports;
      self->onMainThread([progress, done, expected] { progress(done, expected); });
    };
  }

  template <typename Request>
  std::shared_ptr<DropboxTransfer> start(Request request, DropboxResult (*work)(DropboxService&, const Request&,
                                                                                const std::stop_token&)) {
    auto transfer = std::make_shared<CurlTransfer>();
    if (service == nullptr) {
      onMainThread([response = std::move(request.response)] { response(std::nullopt, notSetUp()); });
      return transfer;
    }
    request.progress = forwarded(std::move(request.progress));
    inBackground(transfer, [this, request = std::move(request), work](const std::stop_token& stop) -> Task {
      return [response = request.response, result = work(*service, request, stop)] {
        response(result.metadata, result.status);
      };
    });
    return transfer;
  }
};

CurlDropboxClient::CurlDropboxClient(const Settings& settings, TaskRunner& tasks, const Clock& clock, DeveloperLog& log)
    : state_(std::make_shared<State>(settings, tasks, clock, log)) {
  if (!state_->problem.ok()) log.write(state_->problem.message());
}

CurlDropboxClient::~CurlDropboxClient() {
  state_->closing.request_stop();
}

const Status& CurlDropboxClient::problem() const {
  return state_->problem;
}

std::string CurlDropboxClient::accountID() const {
  return state_->account.accountID();
}

bool CurlDropboxClient::isInKeyring() const {
  return state_->account.isInKeyring();
}

void CurlDropboxClient::setupWithAppKey(const std::string& appKey) {
  State& state = *state_;
  if (!state.problem.ok() || state.service != nullptr) return;
  state.service = std::make_unique<DropboxService>(DropboxService::Settings{state.addresses, appKey, state.firstPause},
                                                   state.account, state.clock);
}

void CurlDropboxClient::migrateTokens(const std::string& /*appKey*/, const std::string& /*appSecret*/,
                                      std::function<void(const DropboxMigrationResult&)> finished) {
  state_->onMainThread([finished = std::move(finished)] { finished({}); });
}

bool CurlDropboxClient::hasAuthorizedClient() const {
  return state_->service != nullptr && state_->account.isLinked();
}

void CurlDropboxClient::authorize(const std::function<void(const std::string& url)>& openURL) {
  if (state_->service == nullptr) return;
  state_->signIn = beginSignIn(state_->service->settings().appKey, state_->addresses.page);
  openURL(state_->signIn->url);
}

bool CurlDropboxClient::handleRedirectURL(const std::string& url,
                                          std::function<void(const DropboxRedirectResult&)> finished) {
  using Outcome = DropboxRedirectResult::Outcome;
  State& state = *state_;
  if (state.service == nullptr) return false;
  const auto redirect = parseRedirect(url, state.service->settings().appKey);
  if (!redirect) return false;
  const auto answer = [&](Outcome outcome, std::string description) {
    state.onMainThread(
        [finished, result = DropboxRedirectResult{outcome, std::move(description)}] { finished(result); });
    return true;
  };
  // Any page can open such an address; only the one that began has the state.
  if (!state.signIn) return answer(Outcome::error, "no sign-in is under way");
  if (redirect->state != state.signIn->state) return answer(Outcome::error, "the address is of another sign-in");
  const DropboxSignIn signIn = *std::exchange(state.signIn, std::nullopt);
  if (redirect->error == "access_denied") return answer(Outcome::cancelled, "");
  if (redirect->code.empty()) {
    return answer(Outcome::error, "Dropbox refused the sign-in: " + redirect->error + " " + redirect->errorDescription);
  }
  state.inBackground(
      std::make_shared<CurlTransfer>(),
      [&state, code = redirect->code, signIn, finished](const std::stop_token& stop) -> Task {
        const Status status = state.service->link(code, signIn.verifier, stop);
        const Outcome outcome = status.ok() ? Outcome::success : Outcome::error;
        return [finished, result = DropboxRedirectResult{outcome, status.message()}] { finished(result); };
      });
  return true;
}

Status CurlDropboxClient::unlinkClients() {
  State& state = *state_;
  std::optional<DropboxTokens> known;
  if (Status status = state.account.unlink(known); !status.ok() || state.service == nullptr) return status;
  state.inBackground(std::make_shared<CurlTransfer>(), [&state, known](const std::stop_token& stop) -> Task {
    const std::optional<DropboxTokens> kept = state.account.clearKeyring();
    if (known || kept) state.service->revoke(known ? *known : *kept, stop);
    return [] {};
  });
  return {};
}

void CurlDropboxClient::listFolder(const std::string& path, DropboxListing response) {
  State& state = *state_;
  if (state.service == nullptr) {
    state.onMainThread([response = std::move(response)] { response(std::nullopt, notSetUp()); });
    return;
  }
  state.inBackground(std::make_shared<CurlTransfer>(), [&state, path, response](const std::stop_token& stop) -> Task {
    Status status;
    auto entries = varnok::listFolder(*state.service, path, status, stop);
    return [response, entries = std::move(entries), status] { response(entries, status); };
  });
}

std::shared_ptr<DropboxTransfer> CurlDropboxClient::upload(DropboxUpload upload) {
  return state_->start(std::move(upload), &uploadFile);
}

std::shared_ptr<DropboxTransfer> CurlDropboxClient::download(DropboxDownload download) {
  return state_->start(std::move(download), &downloadFile);
}

}  // namespace varnok
