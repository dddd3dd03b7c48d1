// Streaming JSON (RFC 8259): a pull parser and a writer. Neither recurses, so values may be nested to any
// depth. Any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvanel {

/// After the first failure all functions return defaults and the position no longer changes.
class JsonReader {
 public:
  /// The type of a value, judged by its first character.
  enum class Kind { object, array, string, boolean, null, number };

  /// `text` must outlive the reader.
  explicit JsonReader(std::string_view text);

  /// Reads an object: calls `member(key)` for each member, which must consume the value.
  template <typename Member>
  void object(Member&& member) {
    beginObject();
    while (const auto key = nextKey()) member(*key);
  }
  /// Reads an array: calls `element()` for each element, which must consume it.
  template <typename Element>
  void array(Element&& element) {
    beginArray();
    while (nextElement()) element();
  }

  // The same for callers that keep their own stack.
  void beginObject() { open('{'); }
  /// The key of the object's next member; nothing after the last.
  [[nodiscard]] std::optional<QString> nextKey();
  void beginArray() { open('['); }
  /// Whether another element comes next.
  [[nodiscard]] bool nextElement() { return nextItem(']'); }

  /// The type of the next value. An invalid one counts as a number, and reading it will fail.
  [[nodiscard]] Kind kind();

  [[nodiscard]] QString string();
  [[nodiscard]] bool boolean();
  /// Any number that a double can hold.
  [[nodiscard]] double number();
  /// An integer of at most 53 bits.
  [[nodiscard]] std::int64_t integer();
  /// Consumes a null if it comes next.
  [[nodiscard]] bool takeNull();
  /// Skips one value of any type.
  void skip();
  /// Fails if anything but white space follows.
  void end();

  void fail(const QString& reason);
  [[nodiscard]] bool hasFailed() const { return !failure_.isEmpty(); }
  [[nodiscard]] const QString& failure() const { return failure_; }

 private:
  void open(char bracket);
  bool nextItem(char closing);
  void expect(char c);
  void passSpace();
  [[nodiscard]] char peek();
  bool takeWord(std::string_view word);
  std::string_view takeNumber();
  void appendEscape(QString& out);
  char16_t hexUnit();
  void skipScalar();

  std::string_view text_;
  std::size_t at_ = 0;
  bool isFirst_ = false;
  QString failure_;
};

/// Indents by two spaces, or writes everything on one line. Keys are written in the caller's order.
class JsonWriter {
 public:
  enum class Layout { pretty, oneLine };
  explicit JsonWriter(Layout layout = Layout::pretty) : layout_(layout) {}

  void openObject() { open('{'); }
  void closeObject() { close('}'); }
  void openArray() { open('['); }
  void closeArray() { close(']'); }
  void key(std::string_view name);
  void string(const QString& value);
  void boolean(bool value);
  void null();
  void integer(std::int64_t value);
  /// The shortest representation that reads back as the same finite number.
  void number(float value);

  [[nodiscard]] const QByteArray& text() const { return text_; }

 private:
  void open(char bracket);
  void close(char bracket);
  void beginValue();
  void newLine();

  Layout layout_;
  QByteArray text_;
  int depth_ = 0;
  bool isFirst_ = true;
  bool followsKey_ = false;
};

}  // namespace orvanel
