#include "tools/GestureHints.h"

#include <QtGlobal>
#include <array>

namespace orvanel {

namespace {

constexpr std::array view{
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Wheel"), QT_TRANSLATE_NOOP("gestures", "Scroll")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Shift+Wheel"),
                QT_TRANSLATE_NOOP("gestures", "Scroll sideways")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Alt+Wheel or Ctrl+Wheel"),
                QT_TRANSLATE_NOOP("gestures", "Zoom about the pointer")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Middle button"),
                QT_TRANSLATE_NOOP("gestures", "Pan while it is held")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Space"),
                QT_TRANSLATE_NOOP("gestures", "Hand tool while it is held")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Ctrl+Tab"),
                QT_TRANSLATE_NOOP("gestures", "The document used before")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Ctrl+Shift+Tab"),
                QT_TRANSLATE_NOOP("gestures", "The document used longest ago")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Esc or Ctrl+W (Opening)"),
                QT_TRANSLATE_NOOP("gestures", "Stop opening the file that is shown")},
};

constexpr std::array selection{
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Shift"),
                QT_TRANSLATE_NOOP("gestures", "Add to the selection")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Alt"),
                QT_TRANSLATE_NOOP("gestures", "Subtract from the selection")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Shift+Alt"),
                QT_TRANSLATE_NOOP("gestures", "Intersect with the selection")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Ctrl"),
                QT_TRANSLATE_NOOP("gestures", "Square or circle while drawing")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Space"),
                QT_TRANSLATE_NOOP("gestures", "Move the shape while drawing")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Drag inside"),
                QT_TRANSLATE_NOOP("gestures", "Move the selection")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Double-click"),
                QT_TRANSLATE_NOOP("gestures", "Close a polygon")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Backspace"),
                QT_TRANSLATE_NOOP("gestures", "Take back a polygon's last corner")},
};

constexpr std::array transform{
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Shift at a handle"),
                QT_TRANSLATE_NOOP("gestures", "Scale without keeping the proportions")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Shift while turning"),
                QT_TRANSLATE_NOOP("gestures", "Turn in steps")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Arrow keys"),
                QT_TRANSLATE_NOOP("gestures", "Move by a pixel (Move tool)")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Shift+Arrow keys"),
                QT_TRANSLATE_NOOP("gestures", "Move by ten pixels (Move tool)")},
};

constexpr std::array pointing{
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Alt (Eyedropper)"),
                QT_TRANSLATE_NOOP("gestures", "Pick the background color")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Alt (Zoom)"), QT_TRANSLATE_NOOP("gestures", "Zoom out")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Drag (Zoom)"),
                QT_TRANSLATE_NOOP("gestures", "Show a part, or zoom by dragging")},
};

constexpr std::array panels{
    GestureHint{QT_TRANSLATE_NOOP("gestures", "F2 or Return (Layers)"),
                QT_TRANSLATE_NOOP("gestures", "Rename a layer or folder")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Space"),
                QT_TRANSLATE_NOOP("gestures", "Show or hide a layer, folder or channel")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Drag over eyes"),
                QT_TRANSLATE_NOOP("gestures", "Show or hide several in one go")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Shift+Space (Layers)"),
                QT_TRANSLATE_NOOP("gestures", "Lock or unlock a layer or folder")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Ctrl+Shift+Space (Layers)"),
                QT_TRANSLATE_NOOP("gestures", "Link a mask to its layer, or unlink it")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Ctrl+Click on a thumbnail"),
                QT_TRANSLATE_NOOP("gestures", "Select what a layer, mask or channel holds")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Return (Channels)"),
                QT_TRANSLATE_NOOP("gestures", "Show a channel alone")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Ctrl+Return (Channels)"),
                QT_TRANSLATE_NOOP("gestures", "Select what a channel holds")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Hold, Alt+Click or Alt+Down (Tools)"),
                QT_TRANSLATE_NOOP("gestures", "Show all tools of a group")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Up or Down"),
                QT_TRANSLATE_NOOP("gestures", "Change a value by a small step")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Shift+Up or Shift+Down"),
                QT_TRANSLATE_NOOP("gestures", "Change a value by a large step")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Alt+Down (value)"),
                QT_TRANSLATE_NOOP("gestures", "Open the slider of a value")},
};

// Tab steps through the documents.
constexpr std::array focus{
    GestureHint{QT_TRANSLATE_NOOP("gestures", "F6"),
                QT_TRANSLATE_NOOP("gestures", "Next area of the window")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Ctrl+F6"), QT_TRANSLATE_NOOP("gestures", "Next control")},
    GestureHint{QT_TRANSLATE_NOOP("gestures", "Ctrl+Shift+F6"),
                QT_TRANSLATE_NOOP("gestures", "Previous control")},
};

constexpr std::array groups{
    GestureGroup{QT_TRANSLATE_NOOP("gestures", "Canvas"), view},
    GestureGroup{QT_TRANSLATE_NOOP("gestures", "Selection tools"), selection},
    GestureGroup{QT_TRANSLATE_NOOP("gestures", "Move and Free Transform"), transform},
    GestureGroup{QT_TRANSLATE_NOOP("gestures", "Eyedropper and Zoom"), pointing},
    GestureGroup{QT_TRANSLATE_NOOP("gestures", "Panels"), panels},
    GestureGroup{QT_TRANSLATE_NOOP("gestures", "Keyboard focus"), focus},
};

}  // namespace

std::span<const GestureGroup> gestureGroups() {
  return groups;
}

}  // namespace orvanel
