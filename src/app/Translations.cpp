#include "app/Translations.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <cstdio>
#include <memory>

namespace orvanel {

namespace {

QString resourceOf(const QString& language) {
  return QStringLiteral(":/translations/orvanel_%1.qm").arg(language);
}

/// Installs a compiled translation, which lives as long as the application. Null if it can't be read.
QTranslator* install(QCoreApplication& application, const QString& file) {
  auto texts = std::make_unique<QTranslator>();
  if (!texts->load(file)) return nullptr;
  texts->setParent(&application);
  QCoreApplication::installTranslator(texts.get());
  return texts.release();
}

}  // namespace

QString translatedLanguage(const QStringList& uiLanguages) {
  for (QString language : uiLanguages) {
    language.replace(u'-', u'_');
    const QString withoutCountry = language.section(u'_', 0, 0);
    for (const QString& candidate : {language, withoutCountry}) {
      if (QFile::exists(resourceOf(candidate))) return candidate;
    }
    if (withoutCountry == QStringLiteral("en")) break;
  }
  return {};
}

void installTranslations(QCoreApplication& application, const QString& file) {
  const QString language = translatedLanguage(QLocale::system().uiLanguages());
  if (file.isEmpty() && language.isEmpty()) return;
  const QTranslator* texts = install(application, file.isEmpty() ? resourceOf(language) : file);
  if (texts == nullptr) {
    std::fprintf(stderr, "orvanel: %s: The translation can't be read.\n", qPrintable(file));
    return;
  }
  // Without the toolkit's own texts, a few buttons and panels stay English.
  install(application, QLibraryInfo::path(QLibraryInfo::TranslationsPath) + QStringLiteral("/qtbase_") +
                           (file.isEmpty() ? language : texts->language()));
}

}  // namespace orvanel
