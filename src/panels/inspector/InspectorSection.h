// A part of the inspector: a heading that opens and closes what is below it, rows of labels with values or
// controls, and a hairline at the end. Owned by the inspector; main thread only.
#pragma once

#include <QString>
#include <QWidget>

class QAbstractButton;
class QGridLayout;
class QLabel;

namespace orvanel {

class InspectorSection : public QWidget {
  Q_OBJECT

 public:
  [[nodiscard]] QString title() const;
  [[nodiscard]] bool isExpanded() const;
  void setExpanded(bool isExpanded);
  /// Checked while the section is open.
  [[nodiscard]] QAbstractButton& heading() { return *heading_; }

  /// The room that the labels of the rows need.
  [[nodiscard]] virtual int labelWidth() const;
  /// One width for the sections of a column, so that their values line up.
  virtual void setLabelWidth(int width);

 protected:
  explicit InspectorSection(QWidget* parent);
  void setTitle(const QString& title);
  /// Adds a row whose label, right-aligned beside the value, also names it.
  QLabel* addRow(const QString& label, QWidget* value);
  /// Adds a row without a label of its own.
  void addWideRow(QWidget* value);
  void paintEvent(QPaintEvent* event) override;

 private:
  QAbstractButton* heading_;
  QWidget* contents_;
  QGridLayout* rows_;
};

}  // namespace orvanel
