// Which language the program speaks. English needs no translation, others lie among the resources. Main
// thread only.
#pragma once

#include <QStringList>

class QCoreApplication;

namespace orvanel {

/// The first language that there is a translation for, as in "pt_BR" or "de"; empty for English. Languages
/// after English don't count, since the user would rather read English.
[[nodiscard]] QString translatedLanguage(const QStringList& uiLanguages);

/// Installs the texts of the session's language, or of a file, and the toolkit's own in the same language. A
/// file that can't be read is told on standard error, and the texts stay English.
void installTranslations(QCoreApplication& application, const QString& file);

}  // namespace orvanel
