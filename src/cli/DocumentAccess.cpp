#include "cli/DocumentAccess.h"

#include <QFileInfo>

#include "cli/Output.h"
#include "io/document/DocumentIO.h"
#include "io/files/FileName.h"
#include "io/image/FlatImage.h"
#include "io/image/ImageMetadata.h"
#include "model/DocumentCompositor.h"

namespace orvanel {

namespace {

tl::unexpected<CommandFailure> failed(const QString& path, const QString& reason) {
  return tl::make_unexpected(CommandFailure{path, reason});
}

/// Whether both paths lead to the same existing file, through symbolic links or not.
bool isSameFile(const QString& a, const QString& b) {
  const QString target = QFileInfo(a).canonicalFilePath();
  return !target.isEmpty() && target == QFileInfo(b).canonicalFilePath();
}

}  // namespace

tl::expected<DocumentPtr, CommandFailure> readDocument(const QString& path, const QString& destination) {
  MetalContext& context = MetalContext::shared();
  if (DocumentIO::isDocumentPath(path)) {
    FileResult<DocumentPtr> document = DocumentIO::loadSynchronously(path, context);
    if (!document) return failed(path, document.error().message);
    return std::move(*document);
  }
  const FileResult<FlatImage> image = readFlatImage(path, context);
  if (!image) return failed(path, image.error().message);
  if (!image->warning.isEmpty()) {
    if (isSameFile(path, destination)) {
      return failed(path, image->warning + QStringLiteral(" Write the result to another file."));
    }
    printErrorLine(path + QStringLiteral(": ") + image->warning);
  }
  return documentOfFlatImage(*image, path, context);
}

CommandResult checkWritableName(const QString& path) {
  if (isDocumentName(path) || imageFileFormat(path)) return {};
  return failed(path, QStringLiteral("The extension must be tessel, png, jpg, jpeg, tiff, tif, gif or bmp."));
}

CommandResult writeDocument(Document& document, const QString& path) {
  const std::optional<Document::ImageFileFormat> format = imageFileFormat(path);
  const FileResult<void> written =
      format ? writeFlatImage(document.freezeComposite().get(), document.colorMode.value(), *format, path,
                              document.context(), {}, ImageMetadata::of(document).get())
                   .and_then([](const ReplacedFile& file) { return judgeDoubt(file.doubt); })
             : DocumentIO::saveSynchronously(document.shared_from_this(), path, document.context());
  if (!written) return failed(path, written.error().message);
  return {};
}

}  // namespace orvanel
