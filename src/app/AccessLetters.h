// The letters that choose the items of an open menu from the keyboard. They are found in the texts as they
// are shown, in any language, so that no two items of a menu share one. Main thread only.
#pragma once

class QMenu;

namespace orvanel {

/// Marks a letter in each item of the menu and of its submenus, except for names of files.
void giveAccessLetters(QMenu& menu);

}  // namespace orvanel
