// Cut, copy and paste of pixels, among documents and with other programs. Our own pixels keep their place on
// the canvas; an image of another program goes to the centre of the view. Whichever was copied last is
// pasted. Main thread only.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointF>
#include <functional>

#include "app/AppState.h"
#include "app/dialogs/Dialogs.h"
#include "io/files/FileError.h"

class QMimeData;

namespace orvanel {

class PixelPasteboard : public QObject {
  Q_OBJECT

 public:
  /// Both must outlive this object.
  PixelPasteboard(AppState& appState, Dialogs& dialogs, QObject* parent = nullptr);

  /// Called when `canPaste` may have changed.
  std::function<void()> onChanged;

  /// Without a selection these leave both clipboards as they are.
  void copy(const DocumentPtr& document);
  void cut(const DocumentPtr& document);
  /// Adds a layer with what was copied last. An image that can't be read leaves the document unchanged, with
  /// a message. `viewCentre` is in document coordinates.
  void paste(const DocumentPtr& document, QPointF viewCentre);

  /// Whether there is anything to paste. Until `look` the desktop's clipboard counts as holding an image.
  [[nodiscard]] bool canPaste() const;
  /// Asks what the desktop's clipboard holds, which can take a round trip to another program.
  void look();

 private:
  enum class DesktopContents { unknown, nothing, image };

  void offer(const std::optional<PixelClipboard>& copied);
  [[nodiscard]] bool holdsOurPixels(const QMimeData& data) const;
  [[nodiscard]] Described<PixelClipboard> pixelsOf(const Surface& image) const;

  AppState& appState_;
  Dialogs& dialogs_;
  /// Of the pixels that were copied last.
  QByteArray identity_;
  DesktopContents desktop_ = DesktopContents::unknown;
};

}  // namespace orvanel
