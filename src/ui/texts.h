// Texts: the text catalogue for QML. The application's catalogue is a property
// of the engine, "varnok.texts", set before the first page is loaded.

#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>

#include "platform/text_catalog.h"

namespace varnok {

class Texts : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

 public:
  // `catalog` outlives the object.
  explicit Texts(const TextCatalog& catalog, QObject* parent = nullptr) : QObject(parent), catalog_(catalog) {}

  static Texts* create(QQmlEngine* engine, QJSEngine* /*script*/) {
    auto* texts = engine->property("varnok.texts").value<Texts*>();
    QQmlEngine::setObjectOwnership(texts, QQmlEngine::CppOwnership);
    return texts;
  }

  Q_INVOKABLE QString text(const QString& key) const {
    return QString::fromStdString(catalog_.text(key.toStdString()));
  }

  // The text with its placeholder filled.
  Q_INVOKABLE QString format(const QString& key, const QString& argument) const {
    return QString::fromStdString(catalog_.format(key.toStdString(), {argument.toStdString()}));
  }

 private:
  const TextCatalog& catalog_;
};

}  // namespace varnok
