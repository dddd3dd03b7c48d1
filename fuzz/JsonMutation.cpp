#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <algorithm>
#include <array>

#include "Mutations.h"

namespace orvanel::fuzz {
namespace {

/// Every text and number of a document, to be put where another stands.
void collect(const QJsonValue& value, QList<QJsonValue>& found) {
  if (value.isObject()) {
    for (const QJsonValue& inner : value.toObject()) collect(inner, found);
  } else if (value.isArray()) {
    for (const QJsonValue& inner : value.toArray()) collect(inner, found);
  }
  found.append(value);
}

QJsonValue interestingNumber(Random& random) {
  constexpr std::array numbers{0.0,   1.0,   -1.0,         2.0,           3.0,          0.5,   1e-9,
                               0.1,   255.0, 256.0,        16384.0,       16385.0,      1e6,   -1e6,
                               1e30,  -1e30, 2147483647.0, -2147483648.0, 4294967296.0, 127.0, 128.0,
                               129.0, 7.0,   45.0,         90.0,          360.0,        9.99};
  return numbers[choose(random, numbers.size())];
}

QJsonValue changedValue(const QJsonValue& value, const QList<QJsonValue>& others, Random& random) {
  if (choose(random, 6) == 0) return others[static_cast<qsizetype>(choose(random, std::size(others)))];
  if (value.isBool()) return !value.toBool();
  if (value.isDouble()) {
    switch (choose(random, 5)) {
      case 0:
        return interestingNumber(random);
      case 1:
        return -value.toDouble();
      case 2:
        return value.toDouble() * 2.0;
      case 3:
        return value.toDouble() + (choose(random, 2) == 0 ? 1.0 : -1.0);
      default:
        return static_cast<double>(choose(random, 40)) - 4.0;
    }
  }
  if (value.isString()) {
    Bytes text;
    const QByteArray before = value.toString().toUtf8();
    text.assign(before.begin(), before.end());
    mutateBytes(text, text.size() + 8);
    return QString::fromUtf8(reinterpret_cast<const char*>(text.data()), static_cast<qsizetype>(text.size()));
  }
  return interestingNumber(random);
}

QJsonValue mutated(const QJsonValue& value, const QList<QJsonValue>& others, Random& random);

QJsonValue mutatedArray(QJsonArray array, const QList<QJsonValue>& others, Random& random) {
  const auto at = static_cast<qsizetype>(choose(random, static_cast<std::size_t>(array.size())));
  const auto to = static_cast<qsizetype>(choose(random, static_cast<std::size_t>(array.size()) + 1));
  if (array.isEmpty()) return QJsonArray{others[static_cast<qsizetype>(choose(random, std::size(others)))]};
  switch (choose(random, 6)) {
    case 0:
      array.removeAt(at);
      return array;
    case 1:
      array.insert(to, QJsonValue(array[at]));
      return array;
    case 2: {
      const QJsonValue moved = array.takeAt(at);
      array.insert(std::min(to, array.size()), moved);
      return array;
    }
    default:
      array[at] = mutated(array[at], others, random);
      return array;
  }
}

QJsonValue mutatedObject(QJsonObject object, const QList<QJsonValue>& others, Random& random) {
  if (object.isEmpty()) return object;
  const QStringList keys = object.keys();
  const QString& key = keys[static_cast<qsizetype>(choose(random, std::size(keys)))];
  if (choose(random, 12) == 0) {
    object.remove(key);
  } else {
    object[key] = mutated(object[key], others, random);
  }
  return object;
}

/// Recurses as deep as the parser does, which sets a limit.
QJsonValue mutated(const QJsonValue& value, const QList<QJsonValue>& others, Random& random) {
  if (value.isArray()) return mutatedArray(value.toArray(), others, random);
  if (value.isObject()) return mutatedObject(value.toObject(), others, random);
  return changedValue(value, others, random);
}

}  // namespace

void mutateJson(Bytes& text, Random& random) {
  const auto* start = reinterpret_cast<const char*>(text.data());
  const QJsonDocument document =
      QJsonDocument::fromJson(QByteArray(start, static_cast<qsizetype>(text.size())));
  if (document.isNull()) return;
  const QJsonValue root = document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
  QList<QJsonValue> values;
  collect(root, values);
  const QJsonValue changed = mutated(root, values, random);
  const QJsonDocument result =
      changed.isArray() ? QJsonDocument(changed.toArray()) : QJsonDocument(changed.toObject());
  const QByteArray written = result.toJson(QJsonDocument::Compact);
  text.assign(written.begin(), written.end());
}

}  // namespace orvanel::fuzz
