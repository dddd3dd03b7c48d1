#include "app/dialogs/ExportFormatHelper.h"

namespace orvanel {

QString nameFilterForRow(int row) {
  const ExportFormat& format = exportFormats.at(static_cast<std::size_t>(row));
  return QStringLiteral("%1 (%2)").arg(QLatin1String(format.title), QLatin1String(format.patterns));
}

ExportFormatHelper::ExportFormatHelper(QFileDialog& exportPanel, QString proposedName, bool completesNames)
    : panel(exportPanel), baseName(std::move(proposedName)), completesNames_(completesNames) {
  QStringList filters;
  for (std::size_t row = 0; row < exportFormats.size(); ++row)
    filters << nameFilterForRow(static_cast<int>(row));
  panel.setNameFilters(filters);
  connect(&panel, &QFileDialog::filterSelected, this, &ExportFormatHelper::formatChosen);
}

void ExportFormatHelper::selectRow(int row) {
  panel.selectNameFilter(nameFilterForRow(row));
  const QString extension = QLatin1String(exportFormats.at(static_cast<std::size_t>(row)).fileExtension);
  if (completesNames_) panel.setDefaultSuffix(extension);
  panel.selectFile(baseName + u'.' + extension);
}

int ExportFormatHelper::selectedRow() const {
  // A panel that hides the patterns may report the filter without them.
  const QString chosen = panel.selectedNameFilter();
  const int rows = static_cast<int>(exportFormats.size());
  for (int row = 0; row < rows; ++row) {
    const QLatin1String title(exportFormats.at(static_cast<std::size_t>(row)).title);
    if (chosen == title || chosen == nameFilterForRow(row)) return row;
  }
  return 0;
}

void ExportFormatHelper::formatChosen(const QString& /*nameFilter*/) {
  selectRow(selectedRow());
}

}  // namespace orvanel
