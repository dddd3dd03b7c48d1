#include "raster/fragments/Fragments.h"

namespace orvanel::fragments {

void selectionOverlay(const FragmentInvocation&, const FragmentBand&) {}
void dragPath(const FragmentInvocation&, const FragmentBand&) {}
void moveTool(const FragmentInvocation&, const FragmentBand&) {}
void freeTransform(const FragmentInvocation&, const FragmentBand&) {}

}  // namespace orvanel::fragments
