#include "panels/inspector/InspectorPane.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPaintEvent>
#include <QSignalBlocker>
#include <QTest>
#include <QWheelEvent>
#include <set>

#include "panels/controls/DirectSlider.h"
#include "panels/controls/ElidedLabel.h"
#include "panels/controls/SliderDropdown.h"
#include "panels/controls/SymbolButton.h"
#include "panels/inspector/DocumentInfoSection.h"
#include "panels/inspector/NodePropertiesSection.h"

namespace orvanel {
namespace {

DocumentPtr makeDocument(int width = 100, int height = 80, ColorMode mode = ColorMode::rgb8) {
  return Document::create(QStringLiteral("Picture"), width, height, mode, MetalContext::shared());
}

class InspectorPaneTest : public testing::Test {
 protected:
  void SetUp() override {
    document->addFolder(QStringLiteral("Group"));
    document->selectNode(layer->id);
    document->setDirty(false);
    records = document->undoStack.operations().size();
    pane.resize(260, 400);
    pane.setDocument(document);
    pane.show();
    pane.activateWindow();
    static_cast<void>(QTest::qWaitForWindowActive(&pane));
  }

  DocumentInfoSection& info() { return pane.documentInfo(); }
  SliderDropdown& opacity() { return pane.nodeProperties().opacity(); }
  QComboBox& blendMode() { return pane.nodeProperties().blendMode(); }
  [[nodiscard]] std::size_t newRecords() const { return document->undoStack.operations().size() - records; }

  void typeOpacity(const QString& text) {
    opacity().beginTextEditing();
    QTest::keyClicks(&opacity().field(), text);
    QTest::keyClick(&opacity().field(), Qt::Key_Return);
  }
  void press(int percent) {
    opacity().openPanel();
    QTest::mousePress(&opacity().slider(), Qt::LeftButton, {}, placeOf(percent));
  }
  void moveTo(int percent) { QTest::mouseMove(&opacity().slider(), placeOf(percent)); }
  void release(int percent) {
    QTest::mouseRelease(&opacity().slider(), Qt::LeftButton, {}, placeOf(percent));
  }
  QPoint placeOf(int percent) {
    const DirectSlider& slider = opacity().slider();
    constexpr int handle = 14;
    return {handle / 2 + qRound((slider.width() - handle) * percent / 100.0), slider.height() / 2};
  }
  void choose(BlendMode mode) {
    blendMode().showPopup();
    QTest::keyClick(blendMode().view(), Qt::Key_Home);
    for (std::uint32_t i = 0; i < rawValue(mode); ++i) QTest::keyClick(blendMode().view(), Qt::Key_Down);
    QTest::keyClick(blendMode().view(), Qt::Key_Return);
  }

  DocumentPtr document = makeDocument();
  std::shared_ptr<Layer> layer = document->activeLayer();
  QUuid folderID() const { return document->rootNodes.value().back().id(); }
  std::size_t records = 0;
  InspectorPane pane;
};

TEST_F(InspectorPaneTest, TellsAboutTheDocument) {
  EXPECT_EQ(info().title(), "Document");
  EXPECT_EQ(info().sizeText(), QStringLiteral("100 × 80"));
  EXPECT_EQ(info().colorModeText(), "RGB 8-bit");
  EXPECT_EQ(info().layersText(), "1");
  EXPECT_EQ(info().zoomText(), "100%");
  EXPECT_FALSE(pane.noDocument().isVisible());
  QStringList labels;
  for (const QLabel* label : info().findChildren<QLabel*>()) {
    if (qobject_cast<const ElidedLabel*>(label) == nullptr) labels << label->text();
  }
  EXPECT_EQ(labels, (QStringList{"Size:", "Color Mode:", "Source:", "Layers:", "Zoom:"}));
}

TEST_F(InspectorPaneTest, FollowsTheDocument) {
  document->addLayer(QStringLiteral("Second"));
  EXPECT_EQ(info().layersText(), "2");
  document->undo();
  EXPECT_EQ(info().layersText(), "1");
  document->setZoom(2.0);
  EXPECT_EQ(info().zoomText(), "200%");
  document->resizeCanvas(30, 20, 0, 0);
  EXPECT_EQ(info().sizeText(), QStringLiteral("30 × 20"));
  document->changeColorMode(ColorMode::grayscale16);
  EXPECT_EQ(info().colorModeText(), "Grayscale 16-bit");
}

TEST_F(InspectorPaneTest, TheSourceIsShownOnlyWithAFile) {
  const auto isSourceShown = [this] {
    for (const QLabel* label : info().findChildren<QLabel*>()) {
      if (label->text() == QStringLiteral("Source:")) return label->isVisible();
    }
    return false;
  };
  EXPECT_FALSE(isSourceShown());
  document->setSource(QStringLiteral("/pictures/holiday.png"), Document::ImageFileFormat::png);
  EXPECT_TRUE(isSourceShown());
  EXPECT_EQ(info().sourceText(), "holiday.png");
  document->setSource(std::nullopt, std::nullopt);
  EXPECT_FALSE(isSourceShown());
}

TEST_F(InspectorPaneTest, ALongFileNameIsShortenedInTheMiddle) {
  const QString name = QStringLiteral("<b>") + QString(200, QLatin1Char('x')) + QStringLiteral("-end.png");
  document->setSource(QStringLiteral("/") + name, std::nullopt);
  QApplication::processEvents();
  EXPECT_EQ(info().sourceText(), name);
  for (const ElidedLabel* label : info().findChildren<ElidedLabel*>()) {
    if (label->text() != name) continue;
    EXPECT_TRUE(label->shownText().startsWith(QStringLiteral("<b>x")));
    EXPECT_TRUE(label->shownText().endsWith(QStringLiteral("-end.png")));
  }
  EXPECT_EQ(pane.width(), 260);
}

TEST_F(InspectorPaneTest, WithoutADocumentItSaysSo) {
  QLabel panel;
  pane.setLayerPanel(&panel);
  pane.setDocument(nullptr);
  QApplication::processEvents();
  EXPECT_TRUE(pane.noDocument().isVisible());
  EXPECT_EQ(pane.noDocument().text(), "No Document");
  EXPECT_FALSE(info().isVisible());
  EXPECT_FALSE(pane.nodeProperties().isVisible());
  EXPECT_TRUE(panel.isVisible());
  panel.setParent(nullptr);
}

TEST_F(InspectorPaneTest, DoesNotKeepAClosedDocumentAlive) {
  const std::weak_ptr<Document> watched = document;
  document.reset();
  EXPECT_TRUE(watched.expired());
  typeOpacity(QStringLiteral("50"));
}

TEST_F(InspectorPaneTest, ShowsTheActiveNode) {
  EXPECT_EQ(pane.nodeProperties().title(), "Layer");
  EXPECT_EQ(opacity().valueText(), "100%");
  document->setOpacity(folderID(), 0.25F);
  document->setBlendMode(folderID(), BlendMode::screen);
  EXPECT_EQ(opacity().valueText(), "100%") << "the change was another node's";
  document->selectNode(folderID());
  EXPECT_EQ(pane.nodeProperties().title(), "Folder");
  EXPECT_EQ(opacity().valueText(), "25%");
  EXPECT_EQ(blendMode().currentText(), "Screen");
  document->undo();
  EXPECT_EQ(blendMode().currentText(), "Normal");
  document->selectNode(std::nullopt);
  EXPECT_FALSE(pane.nodeProperties().isVisible());
}

TEST_F(InspectorPaneTest, Typing150Gives100Percent) {
  document->setOpacity(layer->id, 0.5F);
  typeOpacity(QStringLiteral("150"));
  EXPECT_EQ(layer->opacity.value(), 1.0F);
  EXPECT_EQ(opacity().valueText(), "100%");
}

TEST_F(InspectorPaneTest, WhatIsNoNumberChangesNothing) {
  typeOpacity(QStringLiteral("abc"));
  EXPECT_EQ(layer->opacity.value(), 1.0F);
  EXPECT_EQ(newRecords(), 0U);
  EXPECT_FALSE(opacity().isEditingText());
}

TEST_F(InspectorPaneTest, ADragIsSeenAtEveryStepAndIsOneRecord) {
  press(100);
  moveTo(80);
  EXPECT_EQ(layer->opacity.value(), 0.8F);
  moveTo(50);
  EXPECT_EQ(layer->opacity.value(), 0.5F);
  EXPECT_EQ(newRecords(), 0U);
  release(50);
  EXPECT_EQ(newRecords(), 1U);
  EXPECT_EQ(document->undoStack.undoActionName(), "Opacity");
  document->undo();
  EXPECT_EQ(opacity().valueText(), "100%");
}

TEST_F(InspectorPaneTest, ADragTo50PercentAndBackRecordsNothing) {
  press(100);
  moveTo(50);
  moveTo(100);
  release(100);
  EXPECT_EQ(layer->opacity.value(), 1.0F);
  EXPECT_EQ(newRecords(), 0U);
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(InspectorPaneTest, TwoSeparateEditsOfOneNodeAreOneRecord) {
  typeOpacity(QStringLiteral("50"));
  typeOpacity(QStringLiteral("20"));
  EXPECT_EQ(newRecords(), 1U);
  document->undo();
  EXPECT_EQ(layer->opacity.value(), 1.0F);
}

TEST_F(InspectorPaneTest, FoldersAreEditedLikeLayers) {
  document->selectNode(folderID());
  typeOpacity(QStringLiteral("40"));
  EXPECT_EQ(document->findNode(folderID())->opacity().value(), 0.4F);
  choose(BlendMode::multiply);
  EXPECT_EQ(document->findNode(folderID())->blendMode().value(), BlendMode::multiply);
  EXPECT_EQ(newRecords(), 2U);
}

TEST_F(InspectorPaneTest, UndoDuringADragEndsTheEdit) {
  press(100);
  moveTo(50);
  document->undo();
  EXPECT_EQ(opacity().valueText(), "100%");
  moveTo(30);
  EXPECT_EQ(layer->opacity.value(), 1.0F);
  EXPECT_EQ(opacity().valueText(), "100%") << "the control follows the document";
  release(30);
  EXPECT_EQ(newRecords(), 1U) << "what was undone";
  EXPECT_EQ(document->undoStack.redoActionName(), "Opacity");
}

TEST_F(InspectorPaneTest, ACropDuringADragKeepsWhatIsShown) {
  press(100);
  moveTo(50);
  document->crop({0, 0, 10, 10}, QStringLiteral("Crop"));
  release(50);
  EXPECT_EQ(layer->opacity.value(), 0.5F);
  EXPECT_EQ(newRecords(), 2U);
  document->undo();
  document->undo();
  EXPECT_EQ(layer->opacity.value(), 1.0F);
}

TEST_F(InspectorPaneTest, WhatWasTypedBelongsToTheNodeItWasTypedFor) {
  opacity().beginTextEditing();
  QTest::keyClicks(&opacity().field(), QStringLiteral("30"));
  document->selectNode(folderID());
  EXPECT_EQ(layer->opacity.value(), 0.3F);
  EXPECT_EQ(document->findNode(folderID())->opacity().value(), 1.0F);
  EXPECT_EQ(opacity().valueText(), "100%");
}

TEST_F(InspectorPaneTest, TheBlendModesAreEightAndAChoiceIsRecorded) {
  QStringList names;
  for (int i = 0; i < blendMode().count(); ++i) names << blendMode().itemText(i);
  EXPECT_EQ(names, (QStringList{"Normal", "Multiply", "Screen", "Overlay", "Darken", "Lighten", "Difference",
                                "Exclusion"}));
  choose(BlendMode::overlay);
  EXPECT_EQ(layer->blendMode.value(), BlendMode::overlay);
  EXPECT_EQ(newRecords(), 1U);
  EXPECT_EQ(document->undoStack.undoActionName(), "Blend Mode");
  choose(BlendMode::overlay);
  EXPECT_EQ(newRecords(), 1U) << "the same choice again";
  document->undo();
  EXPECT_EQ(blendMode().currentText(), "Normal");
}

TEST_F(InspectorPaneTest, TheWheelOverTheClosedChoiceChangesNothing) {
  const QPointF centre = QRectF(blendMode().rect()).center();
  QWheelEvent turn(centre, blendMode().mapToGlobal(centre), {}, QPoint(0, -120), {}, {}, Qt::NoScrollPhase,
                   false);
  QApplication::sendEvent(&blendMode(), &turn);
  EXPECT_EQ(layer->blendMode.value(), BlendMode::normal);
}

TEST_F(InspectorPaneTest, SectionsOpenAndClose) {
  QTest::mouseClick(&info().heading(), Qt::LeftButton);
  EXPECT_FALSE(info().isExpanded());
  const int closed = info().sizeHint().height();
  QTest::keyClick(&info().heading(), Qt::Key_Space);
  EXPECT_TRUE(info().isExpanded());
  EXPECT_GT(info().sizeHint().height(), closed);
}

TEST_F(InspectorPaneTest, ValuesOfAllSectionsLineUp) {
  QApplication::processEvents();
  const auto leftOf = [this](const QWidget& widget) { return widget.mapTo(&pane, QPoint()).x(); };
  std::set<int> lefts{leftOf(blendMode()), leftOf(*opacity().button().parentWidget())};
  for (const ElidedLabel* value : info().findChildren<ElidedLabel*>()) {
    if (value->isVisible()) lefts.insert(leftOf(*value));
  }
  EXPECT_EQ(lefts.size(), 1U);
}

/// Remembers which widgets were painted, and where.
class PaintWatch : public QObject {
 public:
  PaintWatch() { qApp->installEventFilter(this); }
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) {
      painted.emplace_back(static_cast<QWidget*>(watched), static_cast<QPaintEvent*>(event)->region());
    }
    return false;
  }
  std::vector<std::pair<const QWidget*, QRegion>> painted;
};

TEST_F(InspectorPaneTest, AnOpacityDragPaintsTheOpacityControlAlone) {
  press(100);
  QApplication::processEvents();
  PaintWatch watch;
  moveTo(70);
  QApplication::processEvents();
  moveTo(40);
  QApplication::processEvents();
  ASSERT_FALSE(watch.painted.empty());
  const QRect control(opacity().mapTo(&pane, QPoint()), opacity().size());
  for (const auto& [widget, region] : watch.painted) {
    if (widget->window() != &pane) continue;  // the slider's own panel
    const QRect area(widget->mapTo(&pane, region.boundingRect().topLeft()), region.boundingRect().size());
    EXPECT_TRUE(control.contains(area)) << widget->metaObject()->className();
  }
  EXPECT_LT(layer->opacity.value(), 0.5F);
}

}  // namespace
}  // namespace orvanel
