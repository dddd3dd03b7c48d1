// Which language the program chooses, and what a translation of it must keep.
#include "app/Translations.h"

#include <QSet>
#include <QTranslator>
#include <algorithm>

#include "AppFixture.h"
#include "ClippedText.h"
#include "look/TranslationSources.h"
#include "model/Tool.h"

namespace orvanel {
namespace {

QString chosenFrom(const char* languages) {
  return translatedLanguage(QString::fromLatin1(languages).split(u' ', Qt::SkipEmptyParts));
}

TEST(Translations, TheFirstTranslatedLanguageIsChosen) {
  EXPECT_EQ(chosenFrom("de"), "de");
  EXPECT_EQ(chosenFrom("de-AT de"), "de");
  EXPECT_EQ(chosenFrom("xx-YY de-CH"), "de");
  EXPECT_EQ(chosenFrom("C"), "");
  EXPECT_EQ(chosenFrom(""), "");
}

TEST(Translations, EnglishComesBeforeWhatTheUserLikesLess) {
  EXPECT_EQ(chosenFrom("en-US en de"), "");
  EXPECT_EQ(chosenFrom("xx en de"), "");
  EXPECT_EQ(chosenFrom("de en"), "de");
}

TEST(Translations, EveryNameOfTheEngineIsListedForTranslators) {
  const auto names = look::translatableNames();
  const auto expectListed = [&](const std::string& name) {
    EXPECT_NE(std::ranges::find(names, name), names.end()) << name;
  };
  for (const Tool tool : allTools) expectListed(displayName(tool).toStdString());
  for (const ColorMode mode : allColorModes) expectListed(std::string(displayName(mode)));
  for (const BlendMode mode : allBlendModes) expectListed(std::string(displayName(mode)));
  // Put together from a verb and the kind of the node.
  for (const char* verb : {"Delete", "Duplicate"}) {
    for (const char* kind : {"", " Layer", " Folder"}) expectListed(std::string(verb) + kind);
  }
}

class GermanWindowTest : public AppFixture {
 protected:
  GermanWindowTest() {
    EXPECT_TRUE(german_.load(QStringLiteral(":/translations/orvanel_de.qm")));
    QApplication::installTranslator(&german_);
    showWindow();
  }

 private:
  QTranslator german_;
};

/// Each item of the menu and of its submenus has a letter after "&" that no other item of it has. Items with
/// data stand for files, and have none.
void expectALetterForEachItem(const QWidget& menu) {
  QStringList letters;
  for (const QAction* action : menu.actions()) {
    if (action->menu() != nullptr && qobject_cast<const QMenu*>(&menu) != nullptr) {
      expectALetterForEachItem(*action->menu());
    }
    if (action->isSeparator() || action->data().isValid()) continue;
    const qsizetype mark = action->text().indexOf(u'&');
    ASSERT_GE(mark, 0) << action->text().toStdString();
    letters << action->text().mid(mark + 1, 1).toLower();
  }
  EXPECT_EQ(QSet<QString>(letters.begin(), letters.end()).size(), letters.size())
      << letters.join(u',').toStdString();
}

void expectALetterForEachItem(const MainWindow& window) {
  expectALetterForEachItem(*window.menuBar());
  for (const QAction* entry : window.menuBar()->actions()) {
    // Menus get them as they open.
    Q_EMIT entry->menu()->aboutToShow();
    expectALetterForEachItem(*entry->menu());
  }
}

TEST_F(GermanWindowTest, MnemonicsAreUnique) {
  expectALetterForEachItem(*window);
}

/// A language whose texts are 40 % longer than the English ones.
class LongTexts : public QTranslator {
 public:
  [[nodiscard]] bool isEmpty() const override { return false; }
  [[nodiscard]] QString translate(const char* /*context*/, const char* source, const char* /*note*/,
                                  int /*count*/) const override {
    const QString text = QString::fromUtf8(source);
    return text + QString(text.size() * 2 / 5, u'~');
  }
};

class LongTextsTest : public AppFixture {
 protected:
  LongTextsTest() {
    QApplication::installTranslator(&longTexts_);
    showWindow();
    window->resize(1280, 720);
  }

 private:
  LongTexts longTexts_;
};

TEST_F(LongTextsTest, FitTheWindowWithAndWithoutADocument) {
  QApplication::processEvents();
  EXPECT_EQ(clippedText(*window), QString());
  addDocument(QStringLiteral("Photo"));
  for (const Tool tool : allTools) {
    state.toolState.selectTool(tool);
    QApplication::processEvents();
    EXPECT_EQ(clippedText(*window), QString()) << displayName(tool).toStdString();
  }
}

class EnglishWindowTest : public AppFixture {};

TEST_F(EnglishWindowTest, MnemonicsAreUniqueAndSpareNamesOfFiles) {
  state.recentDocuments.record(QStringLiteral("/pictures/Salt & Pepper.png"));
  showWindow();
  expectALetterForEachItem(*window);
  EXPECT_EQ(menu("File")->actions().at(2)->menu()->actions().at(0)->text(), "Salt && Pepper.png");
  state.recentDocuments.clear();
}

TEST_F(GermanWindowTest, NamesOfItemsHaveNoEllipsis) {
  const QAction* open = window->menuBar()->actions().constFirst()->menu()->actions().at(1);
  EXPECT_EQ(open->text(), QStringLiteral("Öffnen …"));
  EXPECT_EQ(open->iconText(), QStringLiteral("Öffnen"));
}

TEST_F(GermanWindowTest, UndoTellsWhatItDoes) {
  const DocumentPtr document =
      Document::create(QStringLiteral("One"), 8, 8, ColorMode::rgb8, state.metalContext);
  state.windowState.addDocument(document);
  document->selectAll();
  QApplication::processEvents();
  const QAction* undo = window->menuBar()->actions().at(1)->menu()->actions().constFirst();
  EXPECT_EQ(undo->text(), QStringLiteral("Rückgängig: Alles auswählen"));
}

}  // namespace
}  // namespace orvanel
