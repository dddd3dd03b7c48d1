#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include "model/Tool.h"

namespace orvanel {
namespace {

QString fileOf(const QString& symbolName) {
  return QStringLiteral(":/icons/%1.svg").arg(symbolName);
}

QDirIterator symbolFiles() {
  return {QStringLiteral(":/icons"), {QStringLiteral("*.svg")}, QDir::Files, QDirIterator::Subdirectories};
}

/// The attributes of a drawing's outermost element, which its strokes inherit.
QXmlStreamAttributes attributesOf(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  QXmlStreamReader xml(&file);
  return xml.readNextStartElement() ? xml.attributes() : QXmlStreamAttributes();
}

/// Those with a purpose of their own: what lies on the accent, and a drawing for an empty window.
bool isInFamily(const QString& name) {
  return !name.endsWith(QLatin1String(".on")) && name != QLatin1String("doc.badge.plus.large");
}

TEST(ToolSymbolTest, EveryToolHasADrawing) {
  for (const Tool tool : allTools) {
    EXPECT_TRUE(QSvgRenderer(fileOf(iconName(tool))).isValid()) << iconName(tool).toStdString();
  }
}

TEST(ToolSymbolTest, EverySymbolIsOfTheFamily) {
  int count = 0;
  for (QDirIterator files = symbolFiles(); files.hasNext();) {
    const QFileInfo file(files.next());
    if (!isInFamily(file.completeBaseName())) continue;
    SCOPED_TRACE(file.fileName().toStdString());
    ++count;
    const QXmlStreamAttributes attributes = attributesOf(file.filePath());
    EXPECT_EQ(attributes.value(QLatin1String("viewBox")).toString(), "0 0 16 16");
    EXPECT_EQ(attributes.value(QLatin1String("stroke-width")).toString(), "1.5");
    EXPECT_EQ(attributes.value(QLatin1String("stroke")).toString(), "#3a3a3a");
    EXPECT_EQ(attributes.value(QLatin1String("stroke-linecap")).toString(), "round");
    EXPECT_EQ(attributes.value(QLatin1String("stroke-linejoin")).toString(), "round");
  }
  EXPECT_GE(count, static_cast<int>(allTools.size()));
}

TEST(ToolSymbolTest, EverySymbolKeepsWithinItsGrid) {
  constexpr int scale = 8;
  constexpr int margin = scale / 2;
  for (QDirIterator files = symbolFiles(); files.hasNext();) {
    const QFileInfo file(files.next());
    if (!isInFamily(file.completeBaseName())) continue;
    QSvgRenderer renderer(file.filePath());
    ASSERT_TRUE(renderer.isValid()) << file.fileName().toStdString();
    QImage picture(16 * scale, 16 * scale, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    renderer.render(&painter);
    painter.end();
    bool isDrawn = false;
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) {
        if (picture.pixelColor(x, y).alpha() < 128) continue;
        isDrawn = true;
        ASSERT_TRUE(picture.rect().adjusted(margin, margin, -margin, -margin).contains(x, y))
            << file.fileName().toStdString() << " at " << x << ", " << y;
      }
    }
    EXPECT_TRUE(isDrawn) << file.fileName().toStdString();
  }
}

/// The share of the drawing's box that is inked, at a scale of the screen.
double inkOf(const QString& path, double scale) {
  QImage picture(QSize(16, 16) * scale, QImage::Format_ARGB32_Premultiplied);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  QSvgRenderer(path).render(&painter);
  painter.end();
  int ink = 0;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) ink += picture.pixelColor(x, y).alpha();
  }
  return static_cast<double>(ink) / (255.0 * picture.width() * picture.height());
}

TEST(ToolSymbolTest, SymbolsAreAsStrongAtEveryScale) {
  for (QDirIterator files = symbolFiles(); files.hasNext();) {
    const QFileInfo file(files.next());
    if (!isInFamily(file.completeBaseName())) continue;
    const double drawn = inkOf(file.filePath(), 16.0);
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
      EXPECT_NEAR(inkOf(file.filePath(), scale), drawn, drawn * 0.05)
          << file.fileName().toStdString() << " at " << scale;
    }
  }
}

}  // namespace
}  // namespace orvanel
