// Names from the engine's tables (colour modes, blend modes, tools, actions) in the user's language. The
// engine itself has no translations.
#pragma once

#include <QCoreApplication>
#include <string_view>

namespace orvanel::look {

[[nodiscard]] inline QString translatedName(std::string_view name) {
  return QCoreApplication::translate("names", std::string(name).c_str());
}
[[nodiscard]] inline QString translatedName(const QString& name) {
  return QCoreApplication::translate("names", name.toUtf8().constData());
}

}  // namespace orvanel::look
