// Asks what to do with documents that an earlier process left unsaved. Main thread only.
#pragma once

#include <QDialog>
#include <vector>

#include "app/dialogs/Dialogs.h"
#include "recovery/Orphan.h"

class QComboBox;
class QPushButton;

namespace orvanel {

class RecoveryDialog : public QDialog {
  Q_OBJECT

 public:
  explicit RecoveryDialog(const OrphanList& orphans, QWidget* parent = nullptr);

  /// In the order of the documents; of a dialog that was accepted.
  [[nodiscard]] std::vector<RecoveryAnswer> answers() const;

  [[nodiscard]] const std::vector<QComboBox*>& choices() const { return choices_; }
  [[nodiscard]] QPushButton& continueButton() const { return *continueButton_; }
  [[nodiscard]] QPushButton& laterButton() const { return *laterButton_; }

 private:
  [[nodiscard]] QWidget* makeRow(const Orphan& orphan);

  std::vector<QComboBox*> choices_;
  QPushButton* continueButton_;
  QPushButton* laterButton_;
};

}  // namespace orvanel
