#include "app/ExportFormatHelper.h"

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
  const qsizetype row = panel.nameFilters().indexOf(panel.selectedNameFilter());
  return row < 0 ? 0 : static_cast<int>(row);
}

void ExportFormatHelper::formatChosen(const QString& /*nameFilter*/) {
  selectRow(selectedRow());
}

}  // namespace orvanel
