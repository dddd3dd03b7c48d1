#include "cli/Script.h"

#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <string_view>

#include "io/document/Json.h"

namespace orvanel {
namespace {

QString quoted(const QString& name) {
  return u'"' + name + u'"';
}

/// Reads an argument's value. Nothing nests deeper than points, which are arrays of arrays.
QJsonValue readValue(JsonReader& json, int depth = 0) {
  constexpr int deepest = 2;
  switch (json.kind()) {
    case JsonReader::Kind::string:
      return json.string();
    case JsonReader::Kind::boolean:
      return json.boolean();
    case JsonReader::Kind::number:
      return json.number();
    case JsonReader::Kind::null:
      return json.takeNull() ? QJsonValue() : json.number();
    case JsonReader::Kind::array: {
      QJsonArray elements;
      if (depth == deepest) json.fail(QStringLiteral("an argument is nested too deeply"));
      json.array([&] { elements.append(readValue(json, depth + 1)); });
      return elements;
    }
    case JsonReader::Kind::object:
      json.skip();
      return QJsonObject();
  }
  return {};
}

/// Reads the next step's members; a duplicate is an error.
QJsonObject readStep(JsonReader& json, std::size_t number) {
  QJsonObject step;
  json.object([&](const QString& name) {
    if (step.contains(name)) {
      json.fail(QStringLiteral("step %1: %2 is given twice").arg(number).arg(quoted(name)));
    }
    step.insert(name, readValue(json));
  });
  return step;
}

}  // namespace

void StepArguments::fail(const QString& reason) {
  if (failure_.isEmpty()) failure_ = reason;
}

bool StepArguments::has(const QString& name) {
  asked_ << name;
  return object_.contains(name);
}

QJsonValue StepArguments::value(const QString& name) {
  asked_ << name;
  const QJsonValue found = object_.value(name);
  if (found.isUndefined()) fail(QStringLiteral("%1 is missing").arg(quoted(name)));
  return found;
}

QString StepArguments::text(const QString& name) {
  const QJsonValue found = value(name);
  if (!found.isString()) fail(QStringLiteral("%1 must be a string").arg(quoted(name)));
  return found.toString();
}

bool StepArguments::boolean(const QString& name) {
  const QJsonValue found = value(name);
  if (!found.isBool()) fail(QStringLiteral("%1 must be true or false").arg(quoted(name)));
  return found.toBool();
}

bool StepArguments::isNull(const QString& name) {
  return value(name).isNull();
}

double StepArguments::checked(const QString& name, const QJsonValue& value, NumberRange range) {
  const double number = value.toDouble();
  if (!value.isDouble() || !std::isfinite(number)) {
    fail(QStringLiteral("%1 must be a number").arg(quoted(name)));
  } else if (number < range.least || number > range.most) {
    fail(QStringLiteral("%1 must lie between %2 and %3").arg(quoted(name)).arg(range.least).arg(range.most));
  } else {
    return number;
  }
  return std::clamp(0.0, range.least, range.most);
}

double StepArguments::number(const QString& name, NumberRange range) {
  return checked(name, value(name), range);
}

int StepArguments::integer(const QString& name, int least, int most) {
  const double found = number(name, {static_cast<double>(least), static_cast<double>(most)});
  if (found != std::floor(found)) fail(QStringLiteral("%1 must be a whole number").arg(quoted(name)));
  return static_cast<int>(found);
}

std::vector<double> StepArguments::numbers(const QString& name, std::size_t count, NumberRange range) {
  const QJsonValue found = value(name);
  const QJsonArray array = found.toArray();
  if (!found.isArray() || static_cast<std::size_t>(array.size()) != count) {
    fail(QStringLiteral("%1 must be an array of %2 numbers").arg(quoted(name)).arg(count));
    return std::vector<double>(count, 0.0);
  }
  std::vector<double> result;
  for (const QJsonValue element : array) result.push_back(checked(name, element, range));
  return result;
}

std::vector<std::array<double, 2>> StepArguments::points(const QString& name, NumberRange range) {
  const QJsonValue found = value(name);
  std::vector<std::array<double, 2>> result;
  if (!found.isArray()) fail(QStringLiteral("%1 must be an array of [x, y] pairs").arg(quoted(name)));
  for (const QJsonValue element : found.toArray()) {
    const QJsonArray point = element.toArray();
    if (point.size() != 2) fail(QStringLiteral("%1 must be an array of [x, y] pairs").arg(quoted(name)));
    result.push_back({checked(name, point.at(0), range), checked(name, point.at(1), range)});
  }
  return result;
}

int StepArguments::choice(const QString& name, const QStringList& allowed) {
  const qsizetype index = allowed.indexOf(text(name));
  if (index < 0)
    fail(QStringLiteral("%1 must be %2").arg(quoted(name), allowed.join(QStringLiteral(" or "))));
  return static_cast<int>(std::max<qsizetype>(index, 0));
}

StepResult StepArguments::finish() const {
  if (!failure_.isEmpty()) return tl::make_unexpected(failure_);
  for (const QString& name : object_.keys()) {
    if (!asked_.contains(name)) {
      return tl::make_unexpected(QStringLiteral("unknown argument %1").arg(quoted(name)));
    }
  }
  return {};
}

tl::expected<std::vector<ScriptStep>, QString> parseScript(const QByteArray& text) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  std::string_view characters(text.constData(), static_cast<std::size_t>(text.size()));
  if (characters.starts_with(byteOrderMark)) characters.remove_prefix(byteOrderMark.size());
  JsonReader json(characters);
  if (!json.hasFailed() && json.kind() != JsonReader::Kind::array) {
    json.fail(QStringLiteral("a script must be an array of steps"));
  }
  std::vector<ScriptStep> steps;
  json.array([&] {
    const std::size_t number = steps.size() + 1;
    const bool isObject = json.kind() == JsonReader::Kind::object;
    QJsonObject step = isObject ? readStep(json, number) : QJsonObject();
    const QJsonValue command = step.take(QStringLiteral("do"));
    if (!command.isString()) {
      json.fail(QStringLiteral("step %1: a step must be an object with a \"do\"").arg(number));
    }
    steps.push_back({command.toString(), step});
  });
  json.end();
  if (json.hasFailed()) return tl::make_unexpected(json.failure());
  return steps;
}

}  // namespace orvanel
