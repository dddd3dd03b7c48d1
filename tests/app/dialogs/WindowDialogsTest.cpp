#include "app/dialogs/WindowDialogs.h"

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <functional>
#include <queue>

#include "app/AppFixture.h"
#include "app/dialogs/CanvasSizeDialog.h"
#include "app/dialogs/FilePanels.h"
#include "app/dialogs/ImageSizeDialog.h"
#include "app/dialogs/NewDocumentDialog.h"
#include "app/dialogs/PreviewPane.h"
#include "app/dialogs/ShortcutsWindow.h"

namespace orvanel {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// Answers each dialog as soon as it is shown, with the given steps in order.
class WindowDialogsTest : public testing::Test {
 protected:
  template <typename DialogType>
  void whenShown(std::function<void(DialogType&)> answer) {
    steps_.push([answer = std::move(answer)](QWidget& widget) {
      auto* dialog = qobject_cast<DialogType*>(&widget);
      ASSERT_NE(dialog, nullptr);
      answer(*dialog);
    });
    if (!timer_.isActive()) timer_.start();
  }

  static QLineEdit& nameField(const QFileDialog& panel) {
    return *panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  }

  static void chooseFormat(const QFileDialog& panel, int row) {
    auto* formats = panel.findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
    formats->setCurrentIndex(row);
    Q_EMIT formats->textActivated(formats->currentText());
  }

  /// Types a name and accepts the panel, as pressing Return does.
  void typeName(const QString& name) {
    whenShown<QFileDialog>([name](QFileDialog& panel) {
      nameField(panel).setText(name);
      // Later, because the panel may show a question of its own, which the timer has to answer.
      QMetaObject::invokeMethod(&panel, "accept", Qt::QueuedConnection);
    });
  }

  void press(const QString& text) {
    whenShown<QMessageBox>([text](QMessageBox& box) {
      for (QAbstractButton* button : box.buttons()) {
        if (button->text() == text) return button->click();
      }
      FAIL() << "no button " << text.toStdString();
    });
  }

  WindowDialogsTest() {
    timer_.setInterval(5);
    QObject::connect(&timer_, &QTimer::timeout, [this] { answerNext(); });
  }
  ~WindowDialogsTest() override { EXPECT_TRUE(steps_.empty()) << "an expected dialog was not shown"; }

  [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }
  void write(const char* name, const QByteArray& bytes) {
    QFile file(path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
  }

  QTemporaryDir folder;
  WindowDialogs dialogs;

 private:
  void answerNext() {
    QWidget* dialog = QApplication::activeModalWidget();
    if (dialog == nullptr || dialog == answered_) return;
    answered_ = dialog;
    if (steps_.empty()) {
      ADD_FAILURE() << "unexpected dialog";
      dialog->close();
      return;
    }
    const auto step = std::move(steps_.front());
    steps_.pop();
    QObject::connect(dialog, &QObject::destroyed, dialog, [this] { answered_ = nullptr; });
    step(*dialog);
  }

  std::queue<std::function<void(QWidget&)>> steps_;
  QWidget* answered_ = nullptr;
  QTimer timer_;
};

// Alerts.

TEST_F(WindowDialogsTest, TheQuestionAboutAChangedFileOffersAWayOutFirst) {
  const auto ask = [this] { return dialogs.askToOverwrite(QStringLiteral("What"), QStringLiteral("Why")); };
  press(QStringLiteral("Save Anyway"));
  EXPECT_EQ(ask(), OverwriteAnswer::saveAnyway);
  press(QString::fromUtf8("Save As..."));
  EXPECT_EQ(ask(), OverwriteAnswer::saveAs);
  press(QStringLiteral("Cancel"));
  EXPECT_EQ(ask(), OverwriteAnswer::cancel);
  whenShown<QMessageBox>([](QMessageBox& box) {
    EXPECT_EQ(box.defaultButton()->text(), QString::fromUtf8("Save As..."));
    QTest::keyClick(&box, Qt::Key_Escape);
  });
  EXPECT_EQ(ask(), OverwriteAnswer::cancel);
}

TEST_F(WindowDialogsTest, WhileTheSessionEndsNothingIsOverwrittenWithoutAQuestion) {
  dialogs.holdWarnings();
  EXPECT_EQ(dialogs.askToOverwrite(QStringLiteral("What"), QStringLiteral("Why")), OverwriteAnswer::cancel);
  dialogs.releaseWarnings();
}

TEST_F(WindowDialogsTest, AnAlertShowsItsTextsAsPlainText) {
  whenShown<QMessageBox>([](QMessageBox& box) {
    EXPECT_EQ(box.text(), "Failed to Save");
    EXPECT_EQ(box.informativeText(), "<b>photo</b>: The disk is full.");
    EXPECT_EQ(box.textFormat(), Qt::PlainText);
    box.accept();
  });
  dialogs.showWarning(QStringLiteral("Failed to Save"), QStringLiteral("<b>photo</b>: The disk is full."));
}

TEST_F(WindowDialogsTest, AWarningHeldBackIsShownAfterTheRelease) {
  dialogs.holdWarnings();
  dialogs.showWarning(QStringLiteral("Failed to Save"), QStringLiteral("photo: The disk is full."));
  dialogs.releaseWarnings();
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  whenShown<QMessageBox>([](QMessageBox& box) {
    EXPECT_EQ(box.informativeText(), "photo: The disk is full.");
    box.accept();
  });
  QApplication::processEvents();
}

TEST_F(WindowDialogsTest, AnEditRefusedForLackOfMemorySaysSo) {
  whenShown<QMessageBox>([](QMessageBox& box) {
    EXPECT_EQ(box.text(), "Not Enough Memory");
    EXPECT_EQ(box.informativeText(), "The image can't be enlarged.");
    box.accept();
  });
  dialogs.showNotEnoughMemory(QStringLiteral("The image can't be enlarged."));
}

TEST_F(WindowDialogsTest, ALongListOfFailuresIsShortened) {
  QStringList lines;
  for (int i = 1; i <= 20; ++i) lines << QStringLiteral("photo %1.png: damaged").arg(i);
  whenShown<QMessageBox>([&](QMessageBox& box) {
    EXPECT_THAT(box.informativeText().toStdString(), HasSubstr("photo 16.png"));
    EXPECT_THAT(box.informativeText().toStdString(), Not(HasSubstr("photo 17.png")));
    EXPECT_THAT(box.informativeText().toStdString(), HasSubstr("and 4 more"));
    EXPECT_EQ(box.detailedText(), lines.join(u'\n'));
    box.accept();
  });
  dialogs.showWarning(QStringLiteral("Failed to Open 20 Files"), lines.join(u'\n'));
}

TEST_F(WindowDialogsTest, TheQuestionAboutChangesHasThreeAnswers) {
  const auto ask = [&] { return dialogs.askToSave(QStringLiteral("Save?"), QString()); };
  press(QStringLiteral("Save"));
  EXPECT_EQ(ask(), SaveAnswer::save);
  press(QStringLiteral("Don't Save"));
  EXPECT_EQ(ask(), SaveAnswer::dontSave);
  press(QStringLiteral("Cancel"));
  EXPECT_EQ(ask(), SaveAnswer::cancel);
  whenShown<QMessageBox>([](QMessageBox& box) { box.reject(); });
  EXPECT_EQ(ask(), SaveAnswer::cancel);
}

TEST_F(WindowDialogsTest, ReturnSavesAndEscapeCancels) {
  const auto ask = [&] { return dialogs.askToSave(QStringLiteral("Save?"), QString()); };
  whenShown<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); });
  EXPECT_EQ(ask(), SaveAnswer::save);
  whenShown<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
  EXPECT_EQ(ask(), SaveAnswer::cancel);
}

TEST_F(WindowDialogsTest, TheButtonsStandInTheOrderOfTheQuestion) {
  whenShown<QMessageBox>([](QMessageBox& box) {
    QList<QAbstractButton*> buttons = box.buttons();
    std::ranges::sort(buttons, {}, [](const QAbstractButton* button) { return button->x(); });
    QStringList texts;
    for (const QAbstractButton* button : buttons) texts << button->text();
    EXPECT_EQ(texts, (QStringList{"Save", "Don't Save", "Cancel"}));
    box.reject();
  });
  EXPECT_EQ(dialogs.askToSave(QStringLiteral("Save?"), QString()), SaveAnswer::cancel);
}

TEST_F(WindowDialogsTest, ReturnAndEscapeCloseAWarning) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    whenShown<QMessageBox>([key](QMessageBox& box) {
      QTest::keyClick(&box, key);
      EXPECT_FALSE(box.isVisible());
      box.reject();
    });
    dialogs.showWarning(QStringLiteral("Failed to Save"), QString());
  }
}

// Windows that don't block the others.

TEST_F(WindowDialogsTest, AboutAndTheShortcutsBlockNothing) {
  dialogs.showAbout();
  dialogs.showShortcuts({{QStringLiteral("File"), {{QStringLiteral("New"), QStringLiteral("Ctrl+N")}}}});
  const auto shown = [] {
    QStringList names;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible()) names << widget->objectName();
    }
    names.sort();
    return names;
  };
  EXPECT_EQ(shown(), (QStringList{"about", "shortcuts"}));
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  dialogs.showAbout();
  EXPECT_EQ(shown().size(), 2) << "the one that is open comes forward";
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (widget->isVisible()) QTest::keyClick(widget, Qt::Key_Escape);
  }
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(shown().isEmpty());
}

// Opening.

TEST_F(WindowDialogsTest, SeveralFilesCanBeOpened) {
  for (const char* name : {"a.png", "b.tessel"}) write(name, {});
  whenShown<QFileDialog>([&](QFileDialog& panel) {
    EXPECT_EQ(panel.windowTitle(), "Select documents or image files to open");
    panel.setDirectory(folder.path());
    nameField(panel).setText(QStringLiteral("\"a.png\" \"b.tessel\""));
    QMetaObject::invokeMethod(&panel, "accept");
  });
  EXPECT_EQ(dialogs.askForFilesToOpen(folder.path()), QStringList({path("a.png"), path("b.tessel")}));
}

TEST_F(WindowDialogsTest, TheOpenPanelShowsWhatTheChosenFileLooksLike) {
  QImage image(40, 30, QImage::Format_RGB32);
  image.fill(Qt::red);
  ASSERT_TRUE(image.save(path("a.png")));
  whenShown<OpenPanel>([&](OpenPanel& panel) {
    EXPECT_EQ(panel.directory().path(), folder.path());
    const auto showsPicture = [&] { return !panel.previewPane()->picture().isNull(); };
    Q_EMIT panel.currentChanged(path("a.png"));
    EXPECT_TRUE(waitUntil(showsPicture));
    EXPECT_EQ(panel.previewPane()->picture().size(), QSize(40, 30));
    Q_EMIT panel.currentChanged(path("missing.png"));
    EXPECT_FALSE(showsPicture());
    nameField(panel).setText(QStringLiteral("a.png"));
    EXPECT_TRUE(waitUntil(showsPicture)) << "a typed name";
    panel.reject();
  });
  EXPECT_THAT(dialogs.askForFilesToOpen(folder.path()), IsEmpty());
}

TEST_F(WindowDialogsTest, ACancelledPanelReturnsNothing) {
  for (int i = 0; i < 3; ++i) whenShown<QFileDialog>([](QFileDialog& panel) { panel.reject(); });
  EXPECT_THAT(dialogs.askForFilesToOpen(folder.path()), IsEmpty());
  EXPECT_EQ(dialogs.askWhereToSave(path("a.tessel")), std::nullopt);
  EXPECT_EQ(dialogs.askWhereToExport(path("a")), std::nullopt);
}

// Saving.

TEST_F(WindowDialogsTest, TheSavePanelProposesAndCompletesTheName) {
  whenShown<QFileDialog>([](QFileDialog& panel) {
    EXPECT_EQ(nameField(panel).text(), "photo.tessel");
    nameField(panel).setText(QStringLiteral("other"));
    QMetaObject::invokeMethod(&panel, "accept");
  });
  EXPECT_EQ(dialogs.askWhereToSave(path("photo.tessel")), path("other.tessel"));
}

TEST_F(WindowDialogsTest, AnotherExtensionIsKeptBeforeTheDocuments) {
  typeName(QStringLiteral("photo.png"));
  EXPECT_EQ(dialogs.askWhereToSave(path("photo.tessel")), path("photo.png.tessel"));
  typeName(QStringLiteral("Photo.TESSEL"));
  EXPECT_EQ(dialogs.askWhereToSave(path("photo.tessel")), path("Photo.TESSEL"));
}

TEST_F(WindowDialogsTest, OverwritingACompletedNameIsConfirmed) {
  write("photo.tessel", "kept");
  typeName(QStringLiteral("photo"));
  press(QStringLiteral("&No"));
  whenShown<QFileDialog>([](QFileDialog& panel) { panel.reject(); });
  EXPECT_EQ(dialogs.askWhereToSave(path("other.tessel")), std::nullopt);
  typeName(QStringLiteral("photo"));
  press(QStringLiteral("&Yes"));
  EXPECT_EQ(dialogs.askWhereToSave(path("other.tessel")), path("photo.tessel"));
}

TEST_F(WindowDialogsTest, TheNameOfAFolderLeadsIntoIt) {
  ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("inner")));
  whenShown<QFileDialog>([&](QFileDialog& panel) {
    nameField(panel).setText(QStringLiteral("inner"));
    QMetaObject::invokeMethod(&panel, "accept");
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.directory().path(), path("inner"));
    panel.reject();
  });
  EXPECT_EQ(dialogs.askWhereToSave(path("photo.tessel")), std::nullopt);
}

TEST_F(WindowDialogsTest, AFolderInTheHomeFolderIsOneToo) {
  ASSERT_TRUE(QDir::home().mkpath(QStringLiteral("pictures")));
  for (const char* typed : {"~/pictures", "~/pictures/"}) {
    whenShown<QFileDialog>([typed](QFileDialog& panel) {
      nameField(panel).setText(QString::fromLatin1(typed));
      QMetaObject::invokeMethod(&panel, "accept");
      EXPECT_TRUE(panel.isVisible());
      EXPECT_EQ(panel.directory().path(), QDir::home().filePath(QStringLiteral("pictures")));
      panel.reject();
    });
    EXPECT_EQ(dialogs.askWhereToSave(path("photo.tessel")), std::nullopt);
  }
  typeName(QStringLiteral("~/pictures/sea"));
  EXPECT_EQ(dialogs.askWhereToSave(path("photo.tessel")),
            QDir::home().filePath(QStringLiteral("pictures/sea.tessel")));
}

TEST_F(WindowDialogsTest, AFolderThatIsntThereIsNoName) {
  whenShown<QFileDialog>([](QFileDialog& panel) {
    nameField(panel).setText(QStringLiteral("new/"));
    QMetaObject::invokeMethod(&panel, "accept");
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(nameField(panel).selectedText(), "new/");
    panel.reject();
  });
  EXPECT_EQ(dialogs.askWhereToSave(path("photo.tessel")), std::nullopt);
}

TEST_F(WindowDialogsTest, APanelFitsTheScreenWhateverIsStored) {
  UserDefaults().setValue("savePanelSize", QSize(100000, 100000));
  whenShown<QFileDialog>([](QFileDialog& panel) {
    EXPECT_EQ(panel.size(), panel.screen()->availableSize());
    panel.reject();
  });
  static_cast<void>(dialogs.askWhereToSave(path("photo.tessel")));
}

TEST_F(WindowDialogsTest, APanelRemembersItsSize) {
  whenShown<QFileDialog>([](QFileDialog& panel) {
    panel.resize(701, 502);
    panel.reject();
  });
  static_cast<void>(dialogs.askWhereToSave(path("photo.tessel")));
  whenShown<QFileDialog>([](QFileDialog& panel) {
    EXPECT_EQ(panel.size(), QSize(701, 502));
    panel.reject();
  });
  static_cast<void>(dialogs.askWhereToSave(path("photo.tessel")));
}

TEST_F(WindowDialogsTest, APanelHasRoomForTheNamesOfPlaces) {
  whenShown<QFileDialog>([](QFileDialog& panel) {
    const auto* places = panel.findChild<QWidget*>(QStringLiteral("sidebar"));
    ASSERT_NE(places, nullptr);
    EXPECT_GE(places->width(), 150);
    panel.reject();
  });
  static_cast<void>(dialogs.askWhereToSave(path("photo.tessel")));
}

// Exporting.

TEST_F(WindowDialogsTest, AnExportStartsWithTheFirstFormat) {
  whenShown<QFileDialog>([](QFileDialog& panel) {
    EXPECT_EQ(nameField(panel).text(), "photo.png");
    QMetaObject::invokeMethod(&panel, "accept");
  });
  const auto target = dialogs.askWhereToExport(path("photo"));
  ASSERT_TRUE(target.has_value());
  EXPECT_EQ(target->path, path("photo.png"));
  EXPECT_EQ(target->formatRow, 0);
}

TEST_F(WindowDialogsTest, TheExtensionOfATypedNameChoosesTheFormat) {
  typeName(QStringLiteral("typed.jpg"));
  const auto target = dialogs.askWhereToExport(path("photo"));
  ASSERT_TRUE(target.has_value());
  EXPECT_EQ(target->path, path("typed.jpg"));
  EXPECT_EQ(target->formatRow, 1);
}

TEST_F(WindowDialogsTest, AnUnknownExtensionGetsThatOfTheChosenFormat) {
  whenShown<QFileDialog>([](QFileDialog& panel) {
    chooseFormat(panel, 1);
    EXPECT_EQ(nameField(panel).text(), "photo.jpg") << "the document's name, not what was typed";
    nameField(panel).setText(QStringLiteral("holiday.2024"));
    QMetaObject::invokeMethod(&panel, "accept");
  });
  const auto target = dialogs.askWhereToExport(path("photo"));
  ASSERT_TRUE(target.has_value());
  EXPECT_EQ(target->path, path("holiday.2024.jpg"));
  EXPECT_EQ(target->formatRow, 1);
}

// Sizes.

TEST_F(WindowDialogsTest, TheSizesAreThoseThatWereTyped) {
  whenShown<NewDocumentDialog>([](NewDocumentDialog& dialog) {
    dialog.widthField->setText(QStringLiteral("abc"));
    dialog.accept();
  });
  EXPECT_EQ(dialogs.askForNewDocument()->width, "abc");
  const DocumentPtr document =
      Document::create(QStringLiteral("Picture"), 100, 50, ColorMode::rgb8, MetalContext::shared());
  whenShown<CanvasSizeDialog>([](CanvasSizeDialog& dialog) {
    dialog.relativeCheckbox->click();
    dialog.accept();
  });
  EXPECT_TRUE(dialogs.askForCanvasSize(document)->isRelative);
  whenShown<ImageSizeDialog>([](ImageSizeDialog& dialog) { dialog.reject(); });
  EXPECT_EQ(dialogs.askForImageSize(document), std::nullopt);
}

}  // namespace
}  // namespace orvanel
