// Small fakes of the services at the edge. Each records what it was asked.

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/crash_reporter.h"
#include "platform/date_formatter.h"
#include "platform/developer_log.h"
#include "platform/document_hand_over.h"
#include "platform/dropbox_client.h"
#include "platform/feedback_service.h"
#include "platform/idle_timer.h"
#include "platform/mail_composer.h"
#include "platform/network_monitor.h"
#include "platform/notification_scheduler.h"
#include "platform/store_review.h"
#include "platform/text_catalog.h"
#include "platform/text_codec.h"
#include "platform/text_collation.h"

namespace varnok {

// Every text is its key; placeholders come from the few texts that have them.
class FakeTextCatalog : public TextCatalog {
 public:
  std::map<std::string, std::string, std::less<>> texts{{"BACKUP_LABEL", "BACKUP_LABEL %@"},
                                                        {"FILE_SIZE_MESSAGE", "FILE_SIZE_MESSAGE %@ %@"},
                                                        {"BACKUP_FAILED", "BACKUP_FAILED %@"}};

 private:
  std::optional<std::string> lookup(std::string_view key, std::optional<std::int64_t> /*count*/) const override {
    const auto found = texts.find(key);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
  }
};

// Knows Latin-1 under its name, and nothing else.
class FakeTextCodec : public TextCodec {
 public:
  std::optional<std::string> decode(std::string_view bytes, std::string_view encoding) const override {
    if (encoding != "ISO-8859-1") return std::nullopt;
    std::string text;
    for (const char c : bytes) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte < 0x80) {
        text += c;
      } else {
        text += static_cast<char>(0xC0U | (byte >> 6U));
        text += static_cast<char>(0x80U | (byte & 0x3FU));
      }
    }
    return text;
  }
  std::optional<std::string> encode(std::string_view /*text*/, std::string_view /*encoding*/) const override {
    return std::nullopt;
  }
};

// Knows the letters of ASCII; everything else stands behind them.
class FakeTextCollation : public TextCollation {
 public:
  std::string sortKey(std::string_view text) const override { return upperCase(text) + '\0'; }
  std::string upperCase(std::string_view text) const override {
    std::string upper(text);
    for (char& c : upper)
      c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return upper;
  }
};

// A date is its seconds since 1970 with the styles or the pattern before them.
class FakeDateFormatter : public DateFormatter {
 public:
  std::string format(Instant instant, DateStyle date, DateStyle time, std::string_view /*language*/) const override {
    return std::to_string(static_cast<int>(date)) + "/" + std::to_string(static_cast<int>(time)) + "@" +
           seconds(instant);
  }
  std::string formatPattern(Instant instant, std::string_view pattern, std::string_view /*language*/) const override {
    return std::string(pattern) + "@" + seconds(instant);
  }
  std::optional<Instant> parse(std::string_view /*text*/, std::string_view /*pattern*/) const override {
    return std::nullopt;
  }

 private:
  static std::string seconds(Instant instant) {
    return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(instant.time_since_epoch()).count());
  }
};

// Keeps what is planned; a permission asked for is given.
class FakeNotificationScheduler : public NotificationScheduler {
 public:
  std::optional<LocalNotification> planned;
  std::string log;  // "cancel ", "schedule " and "ask ", as they came.
  Status scheduleStatus;
  void requestPermission() override { log += "ask "; }
  Status cancelAllLocalNotifications() override {
    log += "cancel ";
    planned.reset();
    return {};
  }
  Status scheduleLocalNotification(LocalNotification notification) override {
    log += "schedule ";
    if (scheduleStatus.ok()) planned = std::move(notification);
    return scheduleStatus;
  }
  std::optional<LocalNotification> pending() const override { return planned; }
};

class FakeDocumentHandOver : public DocumentHandOver {
 public:
  std::vector<std::string> paths;
  void presentOptionsMenu(const std::string& path) override { paths.push_back(path); }
};

class FakeIdleTimer : public IdleTimer {
 public:
  std::string log;  // "awake " and "sleepy ", as they came.
  void setIdleTimerDisabled(bool disabled) override { log += disabled ? "awake " : "sleepy "; }
};

class FakeMailComposer : public MailComposer {
 public:
  bool canSend = true;
  std::vector<MailMessage> presented;
  bool inFront = false;

  bool canSendMail() const override { return canSend; }
  void present(MailMessage message, std::function<void(MailComposeResult)> finished) override {
    presented.push_back(std::move(message));
    finished_ = std::move(finished);
    inFront = true;
  }
  void dismiss() override { inFront = false; }

  // The user closes the composer in front.
  void finish(MailComposeResult result) { std::exchange(finished_, nullptr)(result); }

 private:
  std::function<void(MailComposeResult)> finished_;
};

// Answers a redirect at once. Transfers and listings wait: the test calls their
// callbacks.
class FakeDropboxClient : public DropboxClient {
 public:
  std::string appKey;  // Empty until set up.
  bool authorized = false;
  std::optional<DropboxRedirectResult> redirect;
  std::vector<DropboxUpload> uploads;
  std::vector<DropboxDownload> downloads;
  std::vector<std::pair<std::string, DropboxListing>> listings;  // Path and what waits for its entries.
  int cancelled = 0;
  int authorizations = 0;
  int migrations = 0;
  DropboxMigrationResult migration;

  void setupWithAppKey(const std::string& key) override { appKey = key; }
  void migrateTokens(const std::string& /*key*/, const std::string& /*secret*/,
                     std::function<void(const DropboxMigrationResult&)> finished) override {
    ++migrations;
    finished(migration);
  }
  bool hasAuthorizedClient() const override { return authorized; }
  void authorize(const std::function<void(const std::string&)>& openURL) override {
    ++authorizations;
    openURL("https://dropbox.test/authorize");
  }
  bool handleRedirectURL(const std::string& /*url*/,
                         std::function<void(const DropboxRedirectResult&)> finished) override {
    if (redirect) finished(*redirect);
    return redirect.has_value();
  }
  Status unlinkClients() override {
    authorized = false;
    return {};
  }
  void listFolder(const std::string& path, DropboxListing response) override {
    listings.emplace_back(path, std::move(response));
  }
  std::shared_ptr<DropboxTransfer> upload(DropboxUpload upload) override {
    uploads.push_back(std::move(upload));
    return std::make_shared<Transfer>(cancelled);
  }
  std::shared_ptr<DropboxTransfer> download(DropboxDownload download) override {
    downloads.push_back(std::move(download));
    return std::make_shared<Transfer>(cancelled);
  }

 private:
  class Transfer : public DropboxTransfer {
   public:
    explicit Transfer(int& cancelled) : cancelled_(cancelled) {}
    void cancel() override { ++cancelled_; }

   private:
    int& cancelled_;
  };
};

class FakeNetworkMonitor : public NetworkMonitor {
 public:
  std::optional<ReachabilityFlags> flags = ReachabilityFlags{.reachable = true};
  bool connects = true;
  std::vector<NetworkInterface> listed{{"lo", "127.0.0.1"}, {"en0", "192.168.1.7"}};
  NetworkStatus status = NetworkStatus::reachableViaWiFi;
  std::function<void()> changed;  // Empty until the notifier was started.
  std::optional<ReachabilityFlags> reachabilityFlags() override { return flags; }
  bool canConnect(const std::string& /*url*/, std::chrono::seconds /*timeLimit*/) override { return connects; }
  std::vector<NetworkInterface> interfaces() override { return listed; }
  NetworkStatus currentReachabilityStatus() override { return status; }
  void startNotifier(std::function<void()> given) override { changed = std::move(given); }
};

class FakeStoreReview : public StoreReview {
 public:
  int requests = 0;
  std::vector<std::string> urls;
  void requestReview() override { ++requests; }
  void openURL(const std::string& url) override { urls.push_back(url); }
};

class FakeDeveloperLog : public DeveloperLog {
 public:
  std::vector<std::string> lines;
  void write(std::string_view line) override { lines.emplace_back(line); }
};

class FakeCrashReporter : public CrashReporter {
 public:
  explicit FakeCrashReporter(FakeDeveloperLog& log) : log_(log) {}
  void start() override { log_.write("crash reporter started"); }

 private:
  FakeDeveloperLog& log_;
};

class FakeFeedbackService : public FeedbackService {
 public:
  FeedbackConfiguration configuration;
  int presented = 0;
  void present() override { ++presented; }
  void initialize(const FeedbackConfiguration& given) override { configuration = given; }
  void setCustomFields(const std::map<std::string, std::string>& fields) override {
    configuration.customFields = fields;
  }
};

}  // namespace varnok
