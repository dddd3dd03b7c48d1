// A script of the headless program: an array of objects, each with "do" and its arguments. Parses scripts and
// checks arguments; `ScriptCommands` carries out the steps. Main thread only.
#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <array>
#include <limits>
#include <optional>
#include <tl/expected.hpp>
#include <vector>

namespace orvanel {

/// Errors are messages for the user.
using StepResult = tl::expected<void, QString>;

/// Inclusive at both ends. The default is the range of the kernels' 32-bit floats.
struct NumberRange {
  double least = -static_cast<double>(std::numeric_limits<float>::max());
  double most = static_cast<double>(std::numeric_limits<float>::max());
};

/// The arguments of one step, queried by name. The first error is kept, and all later queries return
/// defaults. Call `finish` after all queries and before acting on them.
class StepArguments {
 public:
  explicit StepArguments(QJsonObject object) : object_(std::move(object)) {}

  [[nodiscard]] bool has(const QString& name);
  [[nodiscard]] QString text(const QString& name);
  [[nodiscard]] bool boolean(const QString& name);
  [[nodiscard]] double number(const QString& name, NumberRange range = {});
  [[nodiscard]] int integer(const QString& name, int least = std::numeric_limits<int>::min(),
                            int most = std::numeric_limits<int>::max());
  [[nodiscard]] bool isNull(const QString& name);
  /// Requires exactly `count` numbers.
  [[nodiscard]] std::vector<double> numbers(const QString& name, std::size_t count, NumberRange range = {});
  /// Any number of [x, y] pairs.
  [[nodiscard]] std::vector<std::array<double, 2>> points(const QString& name, NumberRange range = {});
  /// The index of a text in the list of allowed values.
  [[nodiscard]] int choice(const QString& name, const QStringList& allowed);

  void fail(const QString& reason);
  /// Fails with the first error, or for an argument that was never queried.
  [[nodiscard]] StepResult finish() const;

 private:
  [[nodiscard]] QJsonValue value(const QString& name);
  [[nodiscard]] double checked(const QString& name, const QJsonValue& value, NumberRange range);

  QJsonObject object_;
  QStringList asked_;
  QString failure_;
};

struct ScriptStep {
  QString command;
  QJsonObject arguments;
};

/// Fails with a message unless the text is an array of objects that each have a "do", without duplicate keys.
[[nodiscard]] tl::expected<std::vector<ScriptStep>, QString> parseScript(const QByteArray& text);

}  // namespace orvanel
