#include "app/ProgressLine.h"

#include <QKeyEvent>

#include "AppFixture.h"

namespace orvanel {
namespace {

class ProgressLineTest : public testing::Test {
 protected:
  ProgressLineTest() {
    line.onCancel = [this] { ++cancelled; };
    window.resize(400, 300);
    line.placeIn(window.rect());
    window.show();
  }

  FileActivity activity;
  QWidget window;
  ProgressLine line{activity, &window};
  CancelButton& button = line.cancelButton();
  int cancelled = 0;
};

TEST_F(ProgressLineTest, LongWorkShowsTheLineAndThenTheButton) {
  EXPECT_FALSE(line.isVisible());
  EXPECT_FALSE(button.isVisible());
  const FileActivity::Work work = activity.begin();
  EXPECT_FALSE(line.isVisible());
  ASSERT_TRUE(waitUntil([&] { return line.isVisible(); }));
  ASSERT_TRUE(waitUntil([&] { return button.isVisible(); }));
  activity.end(work);
  EXPECT_FALSE(line.isVisible());
  EXPECT_FALSE(button.isVisible());
}

TEST_F(ProgressLineTest, WorkThatIsShownElsewhereIsLeftOut) {
  const FileActivity::Work opening = activity.begin();
  ASSERT_TRUE(waitUntil([&] { return line.isVisible(); }));
  line.leaveOut(opening);
  EXPECT_FALSE(line.isVisible());
  const FileActivity::Work saving = activity.begin();
  EXPECT_TRUE(waitUntil([&] { return line.isVisible(); }));
  activity.end(saving);
  EXPECT_FALSE(line.isVisible());
  line.leaveOut(std::nullopt);
  EXPECT_TRUE(waitUntil([&] { return line.isVisible(); }));
  activity.end(opening);
}

TEST_F(ProgressLineTest, TheButtonLiesInTheCornerBelowTheLine) {
  line.placeIn({0, 40, 400, 260});
  EXPECT_EQ(line.geometry(), QRect(0, 40, 400, ProgressLine::thickness));
  EXPECT_TRUE(QRect(340, 43, 60, 60).contains(button.geometry()));
}

TEST_F(ProgressLineTest, TheButtonHasANameAndTakesTheFocus) {
  EXPECT_EQ(button.accessibleName(), "Cancel reading and writing files");
  EXPECT_EQ(button.toolTip(), "Cancel reading and writing files");
  EXPECT_EQ(button.focusPolicy(), Qt::TabFocus);
}

TEST_F(ProgressLineTest, AClickOrSpaceOrEscapeCancels) {
  const FileActivity::Work work = activity.begin();
  button.show();
  button.click();
  EXPECT_EQ(cancelled, 1);
  for (const int key : {Qt::Key_Space, Qt::Key_Escape}) {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QKeyEvent event(type, key, Qt::NoModifier);
      QApplication::sendEvent(&button, &event);
    }
  }
  EXPECT_EQ(cancelled, 3);
  activity.end(work);
}

TEST_F(ProgressLineTest, EscapeTriggersNoShortcutWhileTheButtonHasTheFocus) {
  QKeyEvent escape(QEvent::ShortcutOverride, Qt::Key_Escape, Qt::NoModifier);
  escape.ignore();
  QApplication::sendEvent(&button, &escape);
  EXPECT_TRUE(escape.isAccepted());
  QKeyEvent letter(QEvent::ShortcutOverride, Qt::Key_S, Qt::ControlModifier);
  letter.ignore();
  QApplication::sendEvent(&button, &letter);
  EXPECT_FALSE(letter.isAccepted());
}

}  // namespace
}  // namespace orvanel
