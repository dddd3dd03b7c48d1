// How screen readers see the tabs of documents: pages of a list, of which one is selected. Main thread only.
#pragma once

namespace orvanel {

/// Has the toolkit describe tab bars this way; further calls do nothing.
void describeTabsToScreenReaders();

}  // namespace orvanel
