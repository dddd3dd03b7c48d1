#include "look/TranslatedSentence.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <vector>

#include "look/TranslationSources.h"

namespace orvanel::look {
namespace {

/// A known sentence, and how it looks once the engine has filled it in. The last capture is what follows it.
struct KnownSentence {
  const char* source;
  QRegularExpression filledIn;
};

std::vector<KnownSentence> makeKnownSentences() {
  std::vector<KnownSentence> known;
  for (const char* source : translatableSentences()) {
    QString pattern = QRegularExpression::escape(QString::fromUtf8(source));
    for (const char* place : {"\\%1", "\\%2"}) pattern.replace(QLatin1String(place), QStringLiteral("(.+)"));
    known.push_back({source, QRegularExpression(QStringLiteral("\\A%1(?: (.+))?\\z").arg(pattern),
                                                QRegularExpression::DotMatchesEverythingOption)});
  }
  return known;
}

}  // namespace

QString translatedSentence(const QString& text) {
  static const std::vector<KnownSentence> knownSentences = makeKnownSentences();
  for (const KnownSentence& known : knownSentences) {
    const QRegularExpressionMatch match = known.filledIn.match(text);
    if (!match.hasMatch()) continue;
    QString translation = QCoreApplication::translate("sentences", known.source);
    const int arguments = known.filledIn.captureCount() - 1;
    // Filled in together, because what a file is called may look like a place.
    if (arguments == 1) translation = translation.arg(translatedSentence(match.captured(1)));
    if (arguments == 2) {
      translation =
          translation.arg(translatedSentence(match.captured(1)), translatedSentence(match.captured(2)));
    }
    const QString rest = match.captured(arguments + 1);
    return rest.isEmpty() ? translation : translation + u' ' + translatedSentence(rest);
  }
  return text;
}

}  // namespace orvanel::look
