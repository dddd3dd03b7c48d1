// What the engine says, translated after its values have been filled in.
#include "look/TranslatedSentence.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTranslator>

#include "look/TranslationSources.h"

namespace orvanel::look {
namespace {

/// Puts every sentence into angle brackets.
class Brackets : public QTranslator {
 public:
  [[nodiscard]] bool isEmpty() const override { return false; }
  [[nodiscard]] QString translate(const char* context, const char* source, const char* /*disambiguation*/,
                                  int /*count*/) const override {
    if (QLatin1String(context) != QLatin1String("sentences")) return {};
    return u'<' + QString::fromUtf8(source) + u'>';
  }
};

class TranslatedSentenceTest : public testing::Test {
 protected:
  void translate() { QCoreApplication::installTranslator(&brackets_); }

 private:
  int argumentCount_ = 0;
  QCoreApplication application_{argumentCount_, nullptr};
  Brackets brackets_;
};

std::string translated(const char* text) {
  return translatedSentence(QString::fromUtf8(text)).toStdString();
}

TEST_F(TranslatedSentenceTest, WithoutATranslationEverySentenceStaysAsItIs) {
  for (const char* source : translatableSentences()) {
    QString text = QString::fromUtf8(source);
    text.replace(QStringLiteral("%1"), QStringLiteral("a.png"))
        .replace(QStringLiteral("%2"), QStringLiteral("7"));
    EXPECT_EQ(translatedSentence(text), text);
  }
}

TEST_F(TranslatedSentenceTest, KeepsWhatTheEngineFilledIn) {
  translate();
  EXPECT_EQ(translated("The file is empty."), "<The file is empty.>");
  EXPECT_EQ(translated("The file can't be opened: Permission denied."),
            "<The file can't be opened: Permission denied.>");
}

TEST_F(TranslatedSentenceTest, TranslatesASentenceWithinAnother) {
  translate();
  EXPECT_EQ(translated("The entry \"layers/1\" can't be read. It is too long."),
            "<The entry \"layers/1\" can't be read. <It is too long.>>");
}

TEST_F(TranslatedSentenceTest, TranslatesSentencesThatFollowOneAnother) {
  translate();
  EXPECT_EQ(
      translated("The file is damaged or incomplete: part of the image is missing. Only the first of 3 "
                 "pictures was opened."),
      "<The file is damaged or incomplete: part of the image is missing.> <Only the first of 3 pictures was "
      "opened.>");
}

TEST_F(TranslatedSentenceTest, NamesThatLookLikePlacesStayAsTheyAre) {
  translate();
  EXPECT_EQ(translated("The entry \"%2\" can't be read. It is too long."),
            "<The entry \"%2\" can't be read. <It is too long.>>");
}

TEST_F(TranslatedSentenceTest, WhatIsNotKnownStaysAsItIs) {
  translate();
  EXPECT_EQ(translated("Unknown marker."), "Unknown marker.");
  EXPECT_EQ(translated(""), "");
}

}  // namespace
}  // namespace orvanel::look
