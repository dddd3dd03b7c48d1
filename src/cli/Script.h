// A script of the headless program: an array of objects, each with "do" and its arguments. Here a script is
// read and its arguments are checked; what the steps do is in `ScriptCommands`. Main thread only.
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

/// Failures are sentences for the user.
using StepResult = tl::expected<void, QString>;

/// Both ends included. At most what the 32-bit floats of the kernels hold.
struct NumberRange {
  double least = -static_cast<double>(std::numeric_limits<float>::max());
  double most = static_cast<double>(std::numeric_limits<float>::max());
};

/// The arguments of one step, asked for by name. The first fault is kept and every later question is
/// answered with a default; `finish` tells, after all questions and before anything is done.
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
  /// Exactly `count` numbers.
  [[nodiscard]] std::vector<double> numbers(const QString& name, std::size_t count, NumberRange range = {});
  /// Any count of [x, y].
  [[nodiscard]] std::vector<std::array<double, 2>> points(const QString& name, NumberRange range = {});
  /// The index of a text in a list of allowed ones.
  [[nodiscard]] int choice(const QString& name, const QStringList& allowed);

  void fail(const QString& reason);
  /// Fails for the first fault, or for an argument that nobody asked for.
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

/// Fails with a sentence for what is no array of objects that each have a "do", and nothing twice.
[[nodiscard]] tl::expected<std::vector<ScriptStep>, QString> parseScript(const QByteArray& text);

}  // namespace orvanel
