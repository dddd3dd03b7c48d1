// Keys as the user presses them in the real window: through shortcuts, the filter and the focus.
#include <QClipboard>
#include <QLineEdit>
#include <QMenuBar>
#include <QSpinBox>
#include <QTest>

#include "AppFixture.h"
#include "app/KeyHandlerView.h"
#include "canvas/CanvasPaneView.h"
#include "panels/controls/DirectSlider.h"
#include "panels/levels/LevelsWindow.h"

namespace orvanel {
namespace {

using testing::ElementsAre;

/// Remembers the keys that reach it.
class KeyReceiver : public QWidget {
 public:
  explicit KeyReceiver(QWidget* parent) : QWidget(parent) { setFocusPolicy(Qt::StrongFocus); }
  std::vector<int> keys;

 protected:
  void keyPressEvent(QKeyEvent* event) override { keys.push_back(event->key()); }
};

class KeyFilterTest : public AppFixture {
 protected:
  KeyFilterTest() {
    showWindow();
    QApplication::setActiveWindow(window.get());
    document = addDocument(QStringLiteral("One"));
    QApplication::processEvents();
    canvas().setFocus();
  }

  ScrollableMTKView& canvas() {
    return window->contentView().canvasPane().canvasView().container().mtkView();
  }
  /// To whatever has the focus, as the desktop delivers keys.
  static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWidget* focus = QApplication::focusWidget();
    QTest::keyClick(focus != nullptr ? focus : QApplication::activeWindow(), key, modifiers);
    QApplication::processEvents();
  }
  void pressWithCapsLock(Qt::Key key) {
    constexpr quint32 lock = 0x2;
    const QString text = key == Qt::Key_Delete ? QStringLiteral("\x7F") : QString(QChar(key));
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, 0, 0, lock, text);
    QApplication::sendEvent(&canvas(), &event);
  }
  [[nodiscard]] bool isKeptFromMenusWithCapsLock(Qt::Key key) {
    constexpr quint32 lock = 0x2;
    QKeyEvent question(QEvent::ShortcutOverride, key, Qt::NoModifier, 0, 0, lock);
    question.ignore();
    QApplication::sendEvent(&canvas(), &question);
    return question.isAccepted();
  }
  template <typename Field>
  Field& focusedField() {
    auto* field = new Field(&window->contentView());
    field->setGeometry(0, 0, 100, 30);
    field->show();
    field->setFocus();
    return *field;
  }
  [[nodiscard]] std::uint64_t pixel() const {
    return document->activeLayer()->texture.value()->pixelAt(3, 3);
  }
  [[nodiscard]] Tool tool() const { return state.toolState.currentTool(); }
  [[nodiscard]] QString activeName() const { return state.windowState.activeDocument()->name.value(); }

  DocumentPtr document;
};

constexpr std::uint64_t white = 0xFFFFFFFFU;
constexpr std::uint64_t blackPixel = 0xFF000000U;

TEST_F(KeyFilterTest, OneFilterServesAllViewsAndGoesWithTheLast) {
  EXPECT_EQ(KeyHandlerView::viewsInWindows(), 1);
  EXPECT_TRUE(KeyHandlerView::isFilterInstalled());
  {
    QWidget other;
    auto* view = new KeyHandlerView(state, &other);
    EXPECT_EQ(KeyHandlerView::viewsInWindows(), 2);
    delete view;
    EXPECT_TRUE(KeyHandlerView::isFilterInstalled());
  }
  window = nullptr;
  EXPECT_EQ(KeyHandlerView::viewsInWindows(), 0);
  EXPECT_FALSE(KeyHandlerView::isFilterInstalled());
}

TEST_F(KeyFilterTest, LettersSelectToolsWhereverTheFocusIs) {
  press(Qt::Key_V);
  EXPECT_EQ(tool(), Tool::move);
  auto* button = new QPushButton(&window->contentView());
  button->show();
  button->setFocus();
  press(Qt::Key_W);
  EXPECT_EQ(tool(), Tool::magicWand);
  press(Qt::Key_L);
  EXPECT_EQ(tool(), Tool::magicWand);
  for (const auto& [key, selected] : {std::pair(Qt::Key_H, Tool::hand),
                                      {Qt::Key_B, Tool::brush},
                                      {Qt::Key_E, Tool::eraser},
                                      {Qt::Key_I, Tool::eyedropper},
                                      {Qt::Key_Z, Tool::zoom}}) {
    press(key);
    EXPECT_EQ(tool(), selected);
  }
}

TEST_F(KeyFilterTest, MTwiceStepsFromTheRectangleToTheEllipse) {
  press(Qt::Key_M);
  EXPECT_EQ(tool(), Tool::rectangleSelect);
  press(Qt::Key_M);
  EXPECT_EQ(tool(), Tool::ellipseSelect);
  press(Qt::Key_V);
  press(Qt::Key_M);
  EXPECT_EQ(tool(), Tool::ellipseSelect) << "the group resumes its last member";
}

TEST_F(KeyFilterTest, XSwapsAndDResetsTheColours) {
  document->setForegroundColor({1.0F, 0.0F, 0.0F, 1.0F});
  press(Qt::Key_X);
  EXPECT_EQ(document->foregroundColor.value(), DisplayColor::white());
  EXPECT_EQ(document->backgroundColor.value(), (DisplayColor{1.0F, 0.0F, 0.0F, 1.0F}));
  press(Qt::Key_D);
  EXPECT_EQ(document->foregroundColor.value(), DisplayColor::black());
  EXPECT_EQ(document->backgroundColor.value(), DisplayColor::white());
}

TEST_F(KeyFilterTest, WithNothingOpenXIsConsumedAndHPassesOn) {
  state.windowState.closeDocument(document->id);
  QApplication::processEvents();
  const auto& receiver = focusedField<KeyReceiver>();
  for (const Qt::Key key : {Qt::Key_X, Qt::Key_D, Qt::Key_H}) press(key);
  EXPECT_THAT(receiver.keys, ElementsAre(Qt::Key_H));
  EXPECT_EQ(tool(), Tool::hand);
}

TEST_F(KeyFilterTest, CapsLockTurnsTheLettersOff) {
  pressWithCapsLock(Qt::Key_V);
  EXPECT_EQ(tool(), Tool::hand);
}

TEST_F(KeyFilterTest, TypingInAFieldTypes) {
  QLineEdit& field = focusedField<QLineEdit>();
  press(Qt::Key_H);
  press(Qt::Key_V);
  EXPECT_EQ(field.text(), "hv");
  press(Qt::Key_Backspace);
  EXPECT_EQ(field.text(), "h");
  press(Qt::Key_Home);
  press(Qt::Key_Delete);
  EXPECT_EQ(field.text(), "");
  EXPECT_EQ(tool(), Tool::hand);
  EXPECT_EQ(pixel(), white);
}

TEST_F(KeyFilterTest, TheClipboardKeysOfAFieldMoveItsText) {
  document->selectAll();
  QLineEdit& field = focusedField<QLineEdit>();
  field.setText(QStringLiteral("name"));
  press(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(field.selectedText(), "name");
  press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "name");
  press(Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(field.text(), "");
  press(Qt::Key_V, Qt::ControlModifier);
  press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(field.text(), "namename");
  EXPECT_FALSE(state.pixelClipboard.value().has_value());
  EXPECT_EQ(pixel(), white);
  EXPECT_EQ(document->layerCount(), 1);
}

TEST_F(KeyFilterTest, ASpinBoxIsATextFieldToo) {
  QSpinBox& box = focusedField<QSpinBox>();
  box.setValue(42);
  press(Qt::Key_A, Qt::ControlModifier);
  press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "42");
  press(Qt::Key_7);
  EXPECT_EQ(box.value(), 7);
}

TEST_F(KeyFilterTest, UndoInAFieldUndoesTheDocument) {
  document->invertActive();
  QLineEdit& field = focusedField<QLineEdit>();
  press(Qt::Key_H);
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(field.text(), "h");
  EXPECT_EQ(pixel(), white);
}

TEST_F(KeyFilterTest, AReadOnlyFieldKeepsItsKeys) {
  QLineEdit& field = focusedField<QLineEdit>();
  field.setReadOnly(true);
  press(Qt::Key_V);
  press(Qt::Key_Delete);
  EXPECT_EQ(tool(), Tool::hand);
  EXPECT_EQ(pixel(), white);
}

TEST_F(KeyFilterTest, TabStepsThroughTheTabsButNotFromAField) {
  addDocument(QStringLiteral("Two"));
  addDocument(QStringLiteral("Three"));
  press(Qt::Key_Tab);
  EXPECT_EQ(activeName(), "One");
  press(Qt::Key_Tab, Qt::ShiftModifier);
  EXPECT_EQ(activeName(), "Three");
  focusedField<QLineEdit>();
  press(Qt::Key_Tab);
  EXPECT_EQ(activeName(), "Three");
}

TEST_F(KeyFilterTest, EscapeDeselects) {
  document->selectAll();
  press(Qt::Key_Escape);
  EXPECT_EQ(document->activeSelection(), nullptr);
  EXPECT_EQ(document->undoStack.undoActionName(), "Deselect");
}

TEST_F(KeyFilterTest, BackspaceAndDeleteClearOnce) {
  for (const Qt::Key key : {Qt::Key_Backspace, Qt::Key_Delete}) {
    press(key);
    EXPECT_EQ(pixel(), 0U);
    EXPECT_EQ(document->undoStack.undoActionName(), "Clear");
    document->undo();
    EXPECT_EQ(pixel(), white);
    EXPECT_EQ(document->undoStack.undoActionName(), std::nullopt) << "one record";
  }
}

TEST_F(KeyFilterTest, ModifiedBackspaceFills) {
  document->setBackgroundColor({0.0F, 0.0F, 1.0F, 1.0F});
  press(Qt::Key_Backspace, Qt::AltModifier);
  EXPECT_EQ(pixel(), blackPixel);
  EXPECT_EQ(document->undoStack.undoActionName(), "Fill");
  press(Qt::Key_Backspace, Qt::ControlModifier);
  EXPECT_EQ(pixel(), 0xFFFF0000U);
  document->undo();
  for (const Qt::Key key : {Qt::Key_Backspace, Qt::Key_Delete}) {
    press(key, Qt::ShiftModifier);
    EXPECT_EQ(pixel(), blackPixel);
    EXPECT_EQ(document->undoStack.redoActionName(), "Fill") << "nothing was recorded";
  }
}

TEST_F(KeyFilterTest, DuringATransformEscapeAndReturnAreItsOwn) {
  std::vector<std::string> posted;
  for (const std::string_view name : {notification::freeTransformApply, notification::freeTransformCancel}) {
    subscriptions.push_back(NotificationCenter::standard().observe(
        name, [&posted, name](const std::any&) { posted.emplace_back(name); }));
  }
  document->selectAll();
  state.toolState.pushTool(Tool::freeTransform);
  KeyHandlerView* view = window->findChild<KeyHandlerView*>();
  view->offerToGesture = nullptr;
  for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) {
    if (tool() != Tool::freeTransform) state.toolState.pushTool(Tool::freeTransform);
    press(key);
  }
  EXPECT_THAT(posted, ElementsAre("freeTransformCancel", "freeTransformApply", "freeTransformApply"));
  EXPECT_NE(document->activeSelection(), nullptr);
}

TEST_F(KeyFilterTest, AnOpenGestureTakesItsKeysBeforeTheyMeanAnythingElse) {
  document->selectAll();
  std::vector<int> offered;
  KeyHandlerView* view = window->findChild<KeyHandlerView*>();
  view->offerToGesture = [&offered](const EventRecord& key) {
    offered.push_back(key.key);
    return true;
  };
  for (const Qt::Key key :
       {Qt::Key_Escape, Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Return, Qt::Key_Space}) {
    press(key);
  }
  EXPECT_THAT(offered, ElementsAre(keyCode::escape, keyCode::backspace, keyCode::forwardDelete,
                                   keyCode::returnKey, keyCode::space));
  EXPECT_NE(document->activeSelection(), nullptr);
  EXPECT_EQ(pixel(), white);
  press(Qt::Key_V);
  EXPECT_EQ(tool(), Tool::move) << "other keys aren't offered";
}

TEST_F(KeyFilterTest, AGestureIsNotOfferedWhatIsTyped) {
  KeyHandlerView* view = window->findChild<KeyHandlerView*>();
  view->offerToGesture = [](const EventRecord&) { return true; };
  QLineEdit& field = focusedField<QLineEdit>();
  press(Qt::Key_H);
  press(Qt::Key_Backspace);
  EXPECT_EQ(field.text(), "");
}

TEST_F(KeyFilterTest, SingleKeysRestWhileAMenuIsOpen) {
  document->selectAll();
  QMenu& menu = *window->menuBar()->actions().front()->menu();
  menu.popup(QPoint(10, 10));
  QTest::keyClick(&menu, Qt::Key_Escape);
  QApplication::processEvents();
  EXPECT_FALSE(menu.isVisible());
  EXPECT_NE(document->activeSelection(), nullptr);
}

TEST_F(KeyFilterTest, SingleKeysRestWhileTheMenuBarHasTheKeyboard) {
  document->selectAll();
  QMenuBar& bar = *window->menuBar();
  bar.setFocus(Qt::MenuBarFocusReason);
  ASSERT_EQ(QApplication::focusWidget(), &bar);
  press(Qt::Key_V);
  EXPECT_EQ(tool(), Tool::hand);
  if (QWidget* open = QApplication::activePopupWidget()) open->close();
  bar.setFocus(Qt::MenuBarFocusReason);
  press(Qt::Key_Escape);
  EXPECT_NE(document->activeSelection(), nullptr);
  EXPECT_EQ(pixel(), white);
}

TEST_F(KeyFilterTest, WithCapsLockDeleteIsTheMenusUnlessAGestureIsOpen) {
  EXPECT_FALSE(isKeptFromMenusWithCapsLock(Qt::Key_Delete));
  state.toolState.selectTool(Tool::polygonalLassoSelect);
  EXPECT_FALSE(isKeptFromMenusWithCapsLock(Qt::Key_Delete));
  QTest::mouseClick(&canvas(), Qt::LeftButton, Qt::NoModifier, canvas().rect().center());
  EXPECT_TRUE(isKeptFromMenusWithCapsLock(Qt::Key_Delete));
  pressWithCapsLock(Qt::Key_Delete);
  EXPECT_FALSE(isKeptFromMenusWithCapsLock(Qt::Key_Delete)) << "its only corner is gone";
  EXPECT_EQ(pixel(), white);
}

TEST_F(KeyFilterTest, SuperTurnsTheSingleKeysOff) {
  press(Qt::Key_V, Qt::MetaModifier);
  EXPECT_EQ(tool(), Tool::hand);
  document->selectAll();
  press(Qt::Key_Escape, Qt::MetaModifier);
  EXPECT_NE(document->activeSelection(), nullptr);
}

TEST_F(KeyFilterTest, SingleKeysRestWhileAnotherWindowIsActive) {
  document->selectAll();
  window->levels().openFor(document);
  QApplication::setActiveWindow(&window->levels());
  LevelsContentView& levels = window->levels().content();
  levels.black.slider->setFocus();
  press(Qt::Key_V);
  press(Qt::Key_Delete);
  EXPECT_EQ(tool(), Tool::hand);
  EXPECT_EQ(pixel(), white);
  press(Qt::Key_Tab);
  EXPECT_NE(QApplication::focusWidget(), levels.black.slider) << "Tab goes to the next field";
  levels.black.slider->setFocus();
  press(Qt::Key_Escape);
  EXPECT_FALSE(window->levels().isOpen());
  EXPECT_NE(document->activeSelection(), nullptr);
}

}  // namespace
}  // namespace orvanel
