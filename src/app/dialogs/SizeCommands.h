// Canvas Size and Image Size: ask, check what was typed, and call the document. Main thread only.
#pragma once

#include "model/Document.h"

namespace orvanel {

class Dialogs;

void askAndResizeCanvas(const DocumentPtr& document, Dialogs& dialogs);
void askAndResizeImage(const DocumentPtr& document, Dialogs& dialogs);

}  // namespace orvanel
