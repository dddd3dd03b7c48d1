#include "io/document/Json.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <string>
#include <vector>

namespace orvanel {
namespace {

QString readString(std::string_view text) {
  JsonReader json(text);
  QString value = json.string();
  json.end();
  return json.hasFailed() ? QStringLiteral("failed") : value;
}

/// Whether the text is one valid value.
bool isSound(std::string_view text) {
  JsonReader json(text);
  json.skip();
  json.end();
  return !json.hasFailed();
}

TEST(JsonReader, readsStrings) {
  EXPECT_EQ(readString(R"("plain")"), QStringLiteral("plain"));
  EXPECT_EQ(readString(R"(  ""  )"), QString());
  EXPECT_EQ(readString(R"("\"\\\/\b\f\n\r\t")"), QStringLiteral("\"\\/\b\f\n\r\t"));
  EXPECT_EQ(readString(R"("\u00e9\ud83c\udfa8")"), QString::fromUtf8("é🎨"));
  EXPECT_EQ(readString("\"é🎨\""), QString::fromUtf8("é🎨"));
}

TEST(JsonReader, rejectsInvalidStrings) {
  for (const char* text :
       {R"("open)", R"("\x")", R"("\u12")", R"("\u12g4")", R"("\ud83c")", R"("\ud83c\u0041")", R"("\udfa8")",
        "\"line\nbreak\"", "\"\xC3\x28\"", "\"\xED\xA0\x80\"", "plain", ""}) {
    EXPECT_EQ(readString(text), QStringLiteral("failed")) << text;
  }
}

TEST(JsonReader, readsNumbers) {
  const auto read = [](std::string_view text) {
    JsonReader json(text);
    const double value = json.number();
    json.end();
    return json.hasFailed() ? -999.0 : value;
  };
  EXPECT_EQ(read("0"), 0.0);
  EXPECT_EQ(read("-12.5e1"), -125.0);
  EXPECT_EQ(read("1E+2"), 100.0);
  EXPECT_EQ(read("0.1"), 0.1);
  for (const char* text :
       {"NaN", "Infinity", "-", "01", "1.", ".5", "+1", "1e", "1e400", "-1e999", "0x10", ""}) {
    EXPECT_EQ(read(text), -999.0) << text;
  }
}

TEST(JsonReader, readsIntegersOnly) {
  const auto read = [](std::string_view text) {
    JsonReader json(text);
    const std::int64_t value = json.integer();
    return json.hasFailed() ? std::int64_t{-999} : value;
  };
  EXPECT_EQ(read("3"), 3);
  EXPECT_EQ(read("3.0"), 3);
  EXPECT_EQ(read("-7"), -7);
  for (const char* text : {"3.5", "99999999999999999999", "1e300", "true", "\"3\""}) {
    EXPECT_EQ(read(text), -999) << text;
  }
}

TEST(JsonReader, walksObjectsAndArrays) {
  JsonReader json(R"({"a": [1, 2, 3], "b": {"c": null}, "d": true})");
  std::vector<std::int64_t> numbers;
  QStringList keys;
  bool flag = false;
  json.object([&](const QString& key) {
    keys.append(key);
    if (key == u"a") {
      json.array([&] { numbers.push_back(json.integer()); });
    } else if (key == u"d") {
      flag = json.boolean();
    } else {
      json.skip();
    }
  });
  json.end();
  EXPECT_FALSE(json.hasFailed()) << json.failure().toStdString();
  EXPECT_EQ(numbers, (std::vector<std::int64_t>{1, 2, 3}));
  EXPECT_EQ(keys, (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("d")}));
  EXPECT_TRUE(flag);
}

TEST(JsonReader, skipsValidValues) {
  for (const char* text : {"null", "[]", "{}", "[[],{}]", R"({"a":{"b":[1,"x",{"c":null}]},"d":[]})",
                           "[1,[2,[3]]]", R"([{"a":1},{"b":[true,false]}])", " [ ] "}) {
    EXPECT_TRUE(isSound(text)) << text;
  }
  for (const char* text : {"[", "{", "[1,]", "[,1]", "[1 2]", "{\"a\"}", "{\"a\":}", "{a:1}", "{\"a\":1,}",
                           "[1}", "{]", "nul", "tru", "[]]", "1 2", R"({"a":1 "b":2})", ""}) {
    EXPECT_FALSE(isSound(text)) << text;
  }
}

TEST(JsonReader, skipsValuesOfAnyDepth) {
  constexpr std::size_t depth = 1'000'000;
  EXPECT_TRUE(isSound(std::string(depth, '[') + std::string(depth, ']')));
  EXPECT_FALSE(isSound(std::string(depth, '[') + std::string(depth - 1, ']')));
}

TEST(JsonReader, readsNothingAfterAFailure) {
  JsonReader json("[1, oops, 2]");
  int elements = 0;
  json.array([&] {
    static_cast<void>(json.integer());
    ++elements;
  });
  EXPECT_EQ(elements, 2);
  EXPECT_TRUE(json.hasFailed());
  const QString reason = json.failure();
  static_cast<void>(json.boolean());
  EXPECT_EQ(json.failure(), reason);
}

TEST(JsonWriter, printsPrettily) {
  JsonWriter json;
  json.openObject();
  json.key("array");
  json.openArray();
  json.integer(1);
  json.boolean(false);
  json.closeArray();
  json.key("empty");
  json.openArray();
  json.closeArray();
  json.key("text");
  json.string(QStringLiteral("a \"b\"\n\x01"));
  json.closeObject();
  EXPECT_EQ(json.text(),
            "{\n  \"array\" : [\n    1,\n    false\n  ],\n  \"empty\" : [],\n  \"text\" : \"a "
            "\\\"b\\\"\\n\\u0001\"\n}");
}

TEST(JsonWriter, numbersReadBackAsTheSameFloat) {
  for (const float value : {0.0F, 1.0F, 0.7F, 0.1F, 1.0F / 3.0F, 1e-30F, 123456.79F}) {
    JsonWriter writer;
    writer.number(value);
    JsonReader reader({writer.text().constData(), static_cast<std::size_t>(writer.text().size())});
    EXPECT_EQ(static_cast<float>(reader.number()), value);
  }
  JsonWriter writer;
  writer.number(0.7F);
  EXPECT_EQ(writer.text(), "0.7");
}

}  // namespace
}  // namespace orvanel
