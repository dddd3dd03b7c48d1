// What is being typed when a document is saved, exported or closed belongs to it.
#include "app/TypedText.h"

#include <QLineEdit>
#include <QTest>

#include "AppFixture.h"
#include "canvas/CanvasPaneView.h"
#include "panels/color/HexField.h"
#include "panels/controls/SliderDropdown.h"
#include "panels/controls/ValueField.h"
#include "panels/inspector/NodePropertiesSection.h"
#include "panels/layers/LayerNSOutlineView.h"
#include "panels/levels/LevelsWindow.h"

namespace orvanel {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class TypedTextTest : public AppFixture {
 protected:
  TypedTextTest() {
    showWindow();
    QApplication::setActiveWindow(window.get());
    document = addDocument(QStringLiteral("Photo"));
    document->setSource(path("Photo.tessel"), std::nullopt);
    document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
    QApplication::processEvents();
  }

  template <typename Widget>
  Widget& find() {
    return *window->findChild<Widget*>();
  }
  [[nodiscard]] QWidget* canvas() {
    return &window->contentView().canvasPane().canvasView().container().mtkView();
  }
  [[nodiscard]] QString layerName() const { return document->activeLayer()->name.value(); }
  [[nodiscard]] static QWidget* focus() { return QApplication::focusWidget(); }

  static void turnTo(QWidget& panel) {
    QApplication::processEvents();
    QApplication::setActiveWindow(&panel);
  }
  void typeName(const QString& name) {
    auto& layers = find<LayerNSOutlineView>();
    layers.beginRename(layers.treeModel().index(0, 0));
    ASSERT_NE(qobject_cast<QLineEdit*>(focus()), nullptr);
    QTest::keyClicks(focus(), name);
  }
  void typeOpacity(const QString& number) {
    auto& opacity = *find<NodePropertiesSection>().findChild<SliderDropdown*>();
    opacity.beginTextEditing();
    ASSERT_EQ(focus(), &opacity.field());
    QTest::keyClicks(focus(), number);
  }
  void typeBlackPoint(const QString& number) {
    LevelsWindow& levels = window->levels();
    levels.openFor(document);
    turnTo(levels);
    levels.content().black.field->setFocus();
    levels.content().black.field->selectAll();
    QTest::keyClicks(levels.content().black.field, number);
  }
  [[nodiscard]] std::uint32_t firstPixel() const {
    document->settle();
    return document->activeLayer()->texture.value()->pixelAt(0, 0);
  }

  DocumentPtr document;
};

TEST_F(TypedTextTest, ASaveKeepsTheName) {
  typeName(QStringLiteral("Typed"));
  files.save(document);
  EXPECT_EQ(layerName(), "Typed");
  EXPECT_EQ(focus(), canvas());
  ASSERT_TRUE(waitForFiles());
  EXPECT_FALSE(document->isDirty.value()) << "and it is in the file";
  state.windowState.closeDocument(document->id);
  EXPECT_THAT(dialogs.questions, IsEmpty());
}

TEST_F(TypedTextTest, ANameIsAChangeToAskAboutWhenClosing) {
  document->setDirty(false);
  typeName(QStringLiteral("Typed"));
  state.windowState.closeDocument(document->id);
  EXPECT_EQ(layerName(), "Typed");
  EXPECT_THAT(dialogs.questions, SizeIs(1));
}

TEST_F(TypedTextTest, QuittingAsksAboutANumber) {
  document->setDirty(false);
  typeOpacity(QStringLiteral("40"));
  EXPECT_FALSE(state.windowState.confirmAll());
  EXPECT_EQ(document->activeLayer()->opacity.value(), 0.4F);
  EXPECT_THAT(dialogs.questions, SizeIs(1));
  EXPECT_EQ(focus(), canvas());
}

TEST_F(TypedTextTest, SaveAsAndExportKeepWhatIsTypedBeforeTheyAsk) {
  typeName(QStringLiteral("Typed"));
  files.saveAs(document);
  EXPECT_EQ(layerName(), "Typed");
  typeOpacity(QStringLiteral("40"));
  files.exportImage(document);
  EXPECT_EQ(document->activeLayer()->opacity.value(), 0.4F);
}

TEST_F(TypedTextTest, ASaveKeepsALevelThatIsBeingTyped) {
  typeBlackPoint(QStringLiteral("200"));
  files.save(document);
  EXPECT_EQ(firstPixel(), 0xFF000000U);
  EXPECT_EQ(document->undoStack.undoActionName(), "Levels");
  EXPECT_TRUE(waitUntil([this] { return !window->levels().isVisible(); }));
  ASSERT_TRUE(waitForFiles());
  EXPECT_EQ(firstPixel(), 0xFF000000U);
}

TEST_F(TypedTextTest, AFieldThatStaysOpenKeepsTheKeyboard) {
  ColorPickerWindow picker(window.get());
  picker.open(QStringLiteral("Foreground Color"), DisplayColor::black(),
              [](const DisplayColor& /*color*/) {});
  turnTo(picker);
  ValueField& field = picker.content().hex->field();
  field.setFocus();
  field.selectAll();
  QTest::keyClicks(&field, QStringLiteral("FF0000"));
  ASSERT_EQ(focus(), &field);
  keepTypedText();
  EXPECT_EQ(picker.model().rgb().red, 255);
  EXPECT_EQ(focus(), &field);
}

TEST_F(TypedTextTest, WhoeverEditsByKeysStaysWhereTheyWere) {
  auto& layers = find<LayerNSOutlineView>();
  layers.setFocus(Qt::TabFocusReason);
  QTest::keyClick(&layers, Qt::Key_F2);
  QTest::keyClicks(focus(), QStringLiteral("Typed"));
  keepTypedText();
  EXPECT_EQ(layerName(), "Typed");
  EXPECT_EQ(focus(), &layers);
}

TEST_F(TypedTextTest, WithoutAFieldNothingMoves) {
  canvas()->setFocus();
  keepTypedText();
  EXPECT_EQ(focus(), canvas());
}

}  // namespace
}  // namespace orvanel
