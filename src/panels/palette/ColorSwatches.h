// The foreground over the background colour of the active document, with buttons that swap and reset them.
// Owned by the tool palette; observes the document. Main thread only.
#pragma once

#include <QAbstractButton>
#include <QWidget>
#include <functional>
#include <memory>

#include "model/Document.h"

namespace orvanel {

class SymbolButton;

enum class Swatch { foreground, background };

/// A button that shows a colour, or nothing while it is disabled.
class ColorSwatch : public QAbstractButton {
  Q_OBJECT

 public:
  /// `name` says whose colour it is.
  explicit ColorSwatch(QString name, QWidget* parent = nullptr);

  [[nodiscard]] const DisplayColor& color() const { return color_; }
  void setColor(const DisplayColor& color);
  /// Of no document: its name tells no colour.
  void clearColor();

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString name_;
  DisplayColor color_;
};

class ColorSwatches : public QWidget {
  Q_OBJECT

 public:
  explicit ColorSwatches(QWidget* parent = nullptr);

  /// A swatch was clicked.
  std::function<void(Swatch)> onChooseColor;

  /// Null without a document: the swatches are empty and disabled.
  void setDocument(const DocumentPtr& document);

  [[nodiscard]] ColorSwatch& swatch(Swatch which) const;
  [[nodiscard]] QAbstractButton& swapButton() const;
  [[nodiscard]] QAbstractButton& resetButton() const;

 private:
  [[nodiscard]] ColorSwatch* makeSwatch(Swatch which, const QString& name);
  [[nodiscard]] SymbolButton* makeButton(const QString& symbolName, const QString& name, const QString& help,
                                         void (Document::*command)());
  void showColors();

  std::weak_ptr<Document> document_;
  ChangeStream::Subscription changes_;
  ColorSwatch* background_;
  ColorSwatch* foreground_;
  SymbolButton* swapButton_;
  SymbolButton* resetButton_;
};

}  // namespace orvanel
