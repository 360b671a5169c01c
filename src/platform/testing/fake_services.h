// Small fakes of the services at the edge. Each records what it was asked.

#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/crash_reporter.h"
#include "platform/developer_log.h"
#include "platform/dropbox_client.h"
#include "platform/feedback_service.h"
#include "platform/idle_timer.h"
#include "platform/mail_composer.h"
#include "platform/network_monitor.h"
#include "platform/store_review.h"
#include "platform/text_catalog.h"
#include "platform/text_codec.h"

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

class FakeIdleTimer : public IdleTimer {
 public:
  std::string log;  // "awake " and "sleepy ", as they came.
  void setIdleTimerDisabled(bool disabled) override { log += disabled ? "awake " : "sleepy "; }
};

class FakeMailComposer : public MailComposer {
 public:
  bool canSend = true;
  std::vector<MailMessage> presented;

  bool canSendMail() const override { return canSend; }
  void present(MailMessage message, std::function<void(MailComposeResult)> finished) override {
    presented.push_back(std::move(message));
    finished_ = std::move(finished);
  }

  // The user closes the composer in front.
  void finish(MailComposeResult result) { std::exchange(finished_, nullptr)(result); }

 private:
  std::function<void(MailComposeResult)> finished_;
};

class FakeDropboxClient : public DropboxClient {
 public:
  std::string appKey;  // Empty until set up.
  bool authorized = false;
  std::optional<DropboxRedirectResult> redirect;
  std::vector<DropboxUpload> uploads;
  int migrations = 0;
  DropboxMigrationResult migration;

  void setupWithAppKey(const std::string& key) override { appKey = key; }
  void migrateTokens(const std::string& /*key*/, const std::string& /*secret*/,
                     std::function<void(const DropboxMigrationResult&)> finished) override {
    ++migrations;
    finished(migration);
  }
  bool hasAuthorizedClient() const override { return authorized; }
  std::optional<DropboxRedirectResult> handleRedirectURL(const std::string& /*url*/) override { return redirect; }
  void upload(DropboxUpload upload) override { uploads.push_back(std::move(upload)); }
};

class FakeNetworkMonitor : public NetworkMonitor {
 public:
  std::optional<ReachabilityFlags> flags = ReachabilityFlags{.reachable = true};
  bool connects = true;
  std::optional<ReachabilityFlags> reachabilityFlags() override { return flags; }
  bool canConnect(const std::string& /*url*/, std::chrono::seconds /*timeLimit*/) override { return connects; }
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
  void initialize(const FeedbackConfiguration& given) override { configuration = given; }
  void setCustomFields(const std::map<std::string, std::string>& fields) override {
    configuration.customFields = fields;
  }
};

}  // namespace varnok
