#include "app/dialogs/ExportFormatHelper.h"

namespace orvanel {

namespace {

const ExportFormat& formatOf(int row) {
  return exportFormats.at(static_cast<std::size_t>(row));
}

}  // namespace

QString nameFilterForRow(int row) {
  const ExportFormat& format = formatOf(row);
  return QStringLiteral("%1 (%2)").arg(QLatin1String(format.title), QLatin1String(format.patterns));
}

ExportFormatHelper::ExportFormatHelper(QFileDialog& exportPanel, QString proposedName)
    : panel(exportPanel), baseName(std::move(proposedName)) {
  QStringList filters;
  for (std::size_t row = 0; row < exportFormats.size(); ++row)
    filters << nameFilterForRow(static_cast<int>(row));
  panel.setNameFilters(filters);
  connect(&panel, &QFileDialog::filterSelected, this, &ExportFormatHelper::formatChosen);
}

void ExportFormatHelper::selectRow(int row) {
  panel.selectNameFilter(nameFilterForRow(row));
  const QString extension = QLatin1String(formatOf(row).fileExtension);
  panel.selectFile(baseName + u'.' + extension);
}

int ExportFormatHelper::selectedRow() const {
  // A panel that hides the patterns may report the filter without them.
  const QString chosen = panel.selectedNameFilter();
  const int rows = static_cast<int>(exportFormats.size());
  for (int row = 0; row < rows; ++row) {
    const QLatin1String title(formatOf(row).title);
    if (chosen == title || chosen == nameFilterForRow(row)) return row;
  }
  return 0;
}

QString ExportFormatHelper::completedName(const QString& typed) {
  const std::optional<int> named = exportRowForName(typed);
  if (!named) return typed + u'.' + QLatin1String(formatOf(selectedRow()).fileExtension);
  panel.selectNameFilter(nameFilterForRow(*named));
  return typed;
}

void ExportFormatHelper::formatChosen(const QString& /*nameFilter*/) {
  selectRow(selectedRow());
}

}  // namespace orvanel
