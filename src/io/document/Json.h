// Reading and writing JSON (RFC 8259) without a tree in between: a cursor that is asked for what is
// expected next, and a pretty printer. Neither recurses, so a text may be nested to any depth. Any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvanel {

/// After the first failure every question is answered with a default and nothing moves any more.
class JsonReader {
 public:
  /// What a value is, by its first character.
  enum class Kind { object, array, string, boolean, null, number };

  /// `text` outlives the reader.
  explicit JsonReader(std::string_view text);

  /// Calls `member(key)` for each member of the object that must come next; it takes the value.
  template <typename Member>
  void object(Member&& member) {
    beginObject();
    while (const auto key = nextKey()) member(*key);
  }
  /// Calls `element()` for each element of the array that must come next; it takes the value.
  template <typename Element>
  void array(Element&& element) {
    beginArray();
    while (nextElement()) element();
  }

  // The same for callers that keep their own stack.
  void beginObject() { open('{'); }
  /// The key of the object's next member, whose value comes next; nothing after the last.
  [[nodiscard]] std::optional<QString> nextKey();
  void beginArray() { open('['); }
  /// Whether another element comes next.
  [[nodiscard]] bool nextElement() { return nextItem(']'); }

  /// Of the value that comes next. A damaged one counts as a number, which reading it will refuse.
  [[nodiscard]] Kind kind();

  [[nodiscard]] QString string();
  [[nodiscard]] bool boolean();
  /// Any number that a double can hold.
  [[nodiscard]] double number();
  /// A number without a fraction, of at most 53 bits.
  [[nodiscard]] std::int64_t integer();
  /// Takes a null if one comes next.
  [[nodiscard]] bool takeNull();
  /// Passes over one value of any kind.
  void skip();
  /// Nothing may follow.
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

/// Writes with two spaces a level, or all on one line. The caller gives keys in the order they are to have.
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
  /// The shortest text that reads back as the same finite number.
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
