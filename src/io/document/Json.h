// Reading and writing JSON (RFC 8259) without a tree in between: a cursor that is asked for what is
// expected next, and a pretty printer. Memory and depth stay bounded whatever the text says. Any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <string_view>

namespace orvanel {

/// After the first failure every question is answered with a default and nothing moves any more.
class JsonReader {
 public:
  /// Nested deeper than this, a text is refused.
  static constexpr int maximumDepth = 8192;

  /// `text` outlives the reader.
  explicit JsonReader(std::string_view text);

  /// Calls `member(key)` for each member of the object that must come next; it takes the value.
  template <typename Member>
  void object(Member&& member) {
    if (!open('{')) return;
    while (nextItem('}')) {
      const QString key = string();
      expect(':');
      if (hasFailed()) return;
      member(key);
    }
  }
  /// Calls `element()` for each element of the array that must come next; it takes the value.
  template <typename Element>
  void array(Element&& element) {
    if (!open('[')) return;
    while (nextItem(']')) element();
  }

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
  bool open(char bracket);
  bool nextItem(char closing);
  void expect(char c);
  void passSpace();
  [[nodiscard]] char peek();
  bool takeWord(std::string_view word);
  std::string_view takeNumber();
  void appendEscape(QString& out);
  char16_t hexUnit();
  void skipString();
  void skipScalar();

  std::string_view text_;
  std::size_t at_ = 0;
  int depth_ = 0;
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
