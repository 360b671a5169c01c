#pragma once

#include <map>
#include <string>

namespace varnok {

struct FeedbackConfiguration {
  std::string site;  // Host name.
  int forumIdentifier = 0;
  bool showsContactUs = false;
  bool showsForum = false;
  bool showsPostIdea = false;
  std::map<std::string, std::string> customFields;
};

// The help desk that the settings screen opens.
class FeedbackService {
 public:
  virtual ~FeedbackService() = default;
  virtual void initialize(const FeedbackConfiguration& configuration) = 0;
  // Replaces the custom fields given to initialize().
  virtual void setCustomFields(const std::map<std::string, std::string>& fields) = 0;
  // Opens the help desk over the screen in front.
  virtual void present() = 0;
};

}  // namespace varnok
