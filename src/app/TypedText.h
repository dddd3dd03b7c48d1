// What is being typed into a field that takes it over only when it is left. Main thread only.
#pragma once

namespace orvanel {

/// Has the field with the keyboard, in whichever window, take over what has been typed. A field that is open
/// only while it is typed into closes, as if it were left.
void keepTypedText();

}  // namespace orvanel
