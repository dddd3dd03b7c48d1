#include "io/document/Json.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "io/files/FileName.h"

namespace orvanel {
namespace {

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

JsonReader::JsonReader(std::string_view text) : text_(text) {
  if (!isUtf8(text)) fail(QStringLiteral("its text is not UTF-8"));
}

void JsonReader::fail(const QString& reason) {
  if (failure_.isEmpty()) failure_ = reason;
}

void JsonReader::passSpace() {
  while (at_ < text_.size() && isSpace(text_[at_])) ++at_;
}

char JsonReader::peek() {
  passSpace();
  return at_ < text_.size() ? text_[at_] : '\0';
}

void JsonReader::expect(char c) {
  if (hasFailed()) return;
  if (peek() != c || at_ >= text_.size()) {
    fail(QStringLiteral("\"%1\" is expected at byte %2").arg(QLatin1Char(c)).arg(at_));
    return;
  }
  ++at_;
}

void JsonReader::open(char bracket) {
  expect(bracket);
  isFirst_ = true;
}

std::optional<QString> JsonReader::nextKey() {
  if (!nextItem('}')) return std::nullopt;
  QString key = string();
  expect(':');
  if (hasFailed()) return std::nullopt;
  return key;
}

JsonReader::Kind JsonReader::kind() {
  switch (peek()) {
    case '{':
      return Kind::object;
    case '[':
      return Kind::array;
    case '"':
      return Kind::string;
    case 't':
    case 'f':
      return Kind::boolean;
    case 'n':
      return Kind::null;
    default:
      return Kind::number;
  }
}

bool JsonReader::nextItem(char closing) {
  if (hasFailed()) return false;
  const bool isFirst = std::exchange(isFirst_, false);
  if (peek() == closing) {
    ++at_;
    return false;
  }
  if (!isFirst) expect(',');
  return !hasFailed();
}

bool JsonReader::takeWord(std::string_view word) {
  if (hasFailed()) return false;
  passSpace();
  if (!text_.substr(at_).starts_with(word)) return false;
  at_ += word.size();
  return true;
}

bool JsonReader::takeNull() {
  return takeWord("null");
}

bool JsonReader::boolean() {
  if (takeWord("true")) return true;
  if (!takeWord("false")) fail(QStringLiteral("true or false is expected at byte %1").arg(at_));
  return false;
}

/// The characters of a number by the grammar of JSON.
std::string_view JsonReader::takeNumber() {
  if (hasFailed()) return {};
  passSpace();
  const std::size_t start = at_;
  const auto digits = [this] {
    const std::size_t first = at_;
    while (at_ < text_.size() && isDigit(text_[at_])) ++at_;
    return at_ > first;
  };
  const auto take = [this](char c) {
    if (at_ >= text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  };
  take('-');
  bool isSound = take('0') || digits();
  if (take('.')) isSound = digits() && isSound;
  if (take('e') || take('E')) {
    if (!take('-')) take('+');
    isSound = digits() && isSound;
  }
  if (!isSound) {
    fail(QStringLiteral("a number is expected at byte %1").arg(start));
    return {};
  }
  return text_.substr(start, at_ - start);
}

double JsonReader::number() {
  const std::string_view digits = takeNumber();
  if (digits.empty()) return 0.0;
  double value = 0.0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (result.ec != std::errc() || !std::isfinite(value)) {
    fail(QStringLiteral("the number at byte %1 is out of range").arg(at_ - digits.size()));
    return 0.0;
  }
  return value;
}

std::int64_t JsonReader::integer() {
  const double value = number();
  constexpr double largest = 9007199254740992.0;
  if (value != std::floor(value) || std::abs(value) > largest) {
    fail(QStringLiteral("the number before byte %1 is not an integer").arg(at_));
    return 0;
  }
  return static_cast<std::int64_t>(value);
}

char16_t JsonReader::hexUnit() {
  unsigned value = 0;
  const std::string_view digits = text_.substr(at_, 4);
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (digits.size() != 4 || result.ptr != digits.data() + 4)
    fail(QStringLiteral("an escape sequence is invalid"));
  at_ += digits.size();
  return static_cast<char16_t>(value);
}

void JsonReader::appendEscape(QString& out) {
  constexpr std::string_view letters = "\"\\/bfnrt";
  constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
  const char c = at_ < text_.size() ? text_[at_++] : '\0';
  if (const std::size_t index = letters.find(c); index != std::string_view::npos) {
    out.append(QLatin1Char(meanings[index]));
    return;
  }
  if (c != 'u') {
    fail(QStringLiteral("an escape sequence is invalid"));
    return;
  }
  const char16_t unit = hexUnit();
  if (!QChar::isSurrogate(unit)) {
    out.append(QChar(unit));
    return;
  }
  const bool isPair = QChar::isHighSurrogate(unit) && text_.substr(at_).starts_with("\\u");
  if (isPair) at_ += 2;
  const char16_t second = isPair ? hexUnit() : u'\0';
  if (!QChar::isLowSurrogate(second)) {
    fail(QStringLiteral("an escape sequence is invalid"));
    return;
  }
  out.append(QChar(unit)).append(QChar(second));
}

QString JsonReader::string() {
  expect('"');
  QString out;
  while (!hasFailed()) {
    const std::size_t start = at_;
    while (at_ < text_.size() && text_[at_] != '"' && text_[at_] != '\\' &&
           static_cast<unsigned char>(text_[at_]) >= 0x20) {
      ++at_;
    }
    out.append(QString::fromUtf8(text_.data() + start, static_cast<qsizetype>(at_ - start)));
    const char c = at_ < text_.size() ? text_[at_] : '\0';
    ++at_;
    if (c == '"') return out;
    if (c == '\\') {
      appendEscape(out);
    } else {
      fail(QStringLiteral("a string is not terminated"));
    }
  }
  return {};
}

void JsonReader::skipScalar() {
  switch (kind()) {
    case Kind::string:
      static_cast<void>(string());
      return;
    case Kind::boolean:
      static_cast<void>(boolean());
      return;
    default:
      if (!takeNull()) static_cast<void>(takeNumber());
  }
}

void JsonReader::skip() {
  // The closing brackets still expected. An explicit stack, because the file decides its depth.
  QByteArray awaited;
  do {
    const char c = peek();
    if (c == '{' || c == '[') {
      open(c);
      awaited.append(c == '{' ? '}' : ']');
    } else {
      skipScalar();
    }
    while (!awaited.isEmpty() && !hasFailed()) {
      if (awaited.back() == '}' ? nextKey().has_value() : nextElement()) break;
      awaited.chop(1);
    }
  } while (!awaited.isEmpty() && !hasFailed());
}

void JsonReader::end() {
  if (hasFailed()) return;
  passSpace();
  if (at_ != text_.size()) fail(QStringLiteral("there is text after its end"));
}

void JsonWriter::newLine() {
  if (layout_ == Layout::oneLine) return;
  // Without a limit, the size of deep texts would grow with the square of their depth.
  constexpr int deepestMargin = 64;
  text_.append('\n');
  text_.append(2 * std::min(depth_, deepestMargin), ' ');
}

void JsonWriter::beginValue() {
  if (std::exchange(followsKey_, false) || depth_ == 0) return;
  if (!std::exchange(isFirst_, false)) text_.append(',');
  newLine();
}

void JsonWriter::open(char bracket) {
  beginValue();
  text_.append(bracket);
  ++depth_;
  isFirst_ = true;
}

void JsonWriter::close(char bracket) {
  --depth_;
  if (!std::exchange(isFirst_, false)) newLine();
  text_.append(bracket);
}

void JsonWriter::key(std::string_view name) {
  beginValue();
  text_.append('"').append(name.data(), static_cast<qsizetype>(name.size())).append("\" : ");
  followsKey_ = true;
}

void JsonWriter::string(const QString& value) {
  beginValue();
  text_.append('"');
  for (const char c : value.toUtf8()) {
    switch (c) {
      case '"':
      case '\\':
        text_.append('\\').append(c);
        break;
      case '\n':
        text_.append("\\n");
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          text_.append("\\u00").append(QByteArray::number(static_cast<int>(c), 16).rightJustified(2, '0'));
        } else {
          text_.append(c);
        }
    }
  }
  text_.append('"');
}

void JsonWriter::boolean(bool value) {
  beginValue();
  text_.append(value ? "true" : "false");
}

void JsonWriter::null() {
  beginValue();
  text_.append("null");
}

void JsonWriter::integer(std::int64_t value) {
  beginValue();
  text_.append(QByteArray::number(value));
}

void JsonWriter::number(float value) {
  beginValue();
  char digits[32];
  const auto result = std::to_chars(std::begin(digits), std::end(digits), value);
  text_.append(digits, result.ptr - digits);
}

}  // namespace orvanel
