// Names from the engine's tables (colour modes, blend modes, tools, actions) in the user's language. The
// tables are listed for translators in TranslationSources.cpp.
#pragma once

#include <QCoreApplication>
#include <string>
#include <string_view>

namespace orvanel::look {

[[nodiscard]] inline QString translatedName(const char* name) {
  return QCoreApplication::translate("names", name);
}
[[nodiscard]] inline QString translatedName(std::string_view name) {
  return translatedName(std::string(name).c_str());
}
[[nodiscard]] inline QString translatedName(const QString& name) {
  return translatedName(name.toUtf8().constData());
}

}  // namespace orvanel::look
