// AddressBookChoice: which address book the application works with: its own, or
// one of the desktop's. The books are listed in the background; the one chosen
// is stored, and the application has to be made anew to work with it.
//
// Main thread; what it was given outlives it and the listing under way.

#pragma once

#include <QObject>
#include <QQmlEngine>
#include <functional>
#include <string>
#include <vector>

#include "app/startup/services.h"

namespace varnok {

class AddressBookChoice : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")

 public:
  struct Book {
    std::string store;  // As the preference names it.
    std::string name;
  };

  // `chosen` is called on the main thread when another book than before is it.
  AddressBookChoice(Services services, std::function<void()> chosen);

  Q_INVOKABLE void ask();

 private:
  void offer(const std::vector<Book>& books);
  void choose(const std::string& store);

  const Services services_;
  const std::function<void()> chosen_;
};

}  // namespace varnok
