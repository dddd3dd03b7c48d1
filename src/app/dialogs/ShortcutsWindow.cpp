#include "app/dialogs/ShortcutsWindow.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>

#include "app/GlobalKeyHandler.h"
#include "look/Look.h"
#include "tools/GestureHints.h"

namespace orvanel {

namespace {

constexpr QSize firstSize{560, 600};

QString keysOf(const QAction& item) {
  QStringList keys;
  for (const QKeySequence& key : item.shortcuts()) keys << key.toString(QKeySequence::NativeText);
  return keys.join(ShortcutsWindow::tr(" or "));
}

void addRowsOf(const QMenu& menu, ShortcutGroup& group) {
  for (const QAction* item : menu.actions()) {
    if (item->menu() != nullptr) {
      addRowsOf(*item->menu(), group);
    } else if (!item->shortcuts().isEmpty()) {
      group.rows.push_back({item->iconText(), keysOf(*item)});
    }
  }
}

ShortcutGroup singleKeys() {
  ShortcutGroup group{ShortcutsWindow::tr("Tools and single keys"), {}};
  for (const ListedKey& listed : listedKeys()) group.rows.push_back({listed.meaning, listed.key});
  return group;
}

ShortcutGroup translated(const GestureGroup& gestures) {
  const auto inWords = [](const char* text) { return QCoreApplication::translate("gestures", text); };
  ShortcutGroup group{inWords(gestures.title), {}};
  for (const GestureHint& hint : gestures.hints) {
    group.rows.push_back({inWords(hint.effect), inWords(hint.input)});
  }
  return group;
}

QLabel* makeLabel(const QString& text, const QColor& color) {
  auto* label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  look::setTextColor(*label, color);
  return label;
}

void addGroup(QGridLayout& grid, const ShortcutGroup& group) {
  int row = grid.rowCount();
  if (row > 1) grid.setRowMinimumHeight(row++, look::space::wide);
  QLabel* title = makeLabel(group.title, look::color::text);
  title->setFont(look::font(look::type::heading, QFont::DemiBold));
  grid.addWidget(title, row++, 0, 1, 2);
  for (const ShortcutGroup::Row& shortcut : group.rows) {
    grid.addWidget(makeLabel(shortcut.meaning, look::color::text), row, 0);
    grid.addWidget(makeLabel(shortcut.keys, look::color::secondaryText), row++, 1);
  }
}

}  // namespace

std::vector<ShortcutGroup> shortcutGroups(const QMenuBar& menuBar) {
  std::vector<ShortcutGroup> groups{singleKeys()};
  for (const GestureGroup& gestures : gestureGroups()) groups.push_back(translated(gestures));
  for (const QAction* entry : menuBar.actions()) {
    if (entry->menu() == nullptr) continue;
    ShortcutGroup group{entry->text().remove(u'&'), {}};
    addRowsOf(*entry->menu(), group);
    if (!group.rows.empty()) groups.push_back(std::move(group));
  }
  return groups;
}

ShortcutsWindow::ShortcutsWindow(const std::vector<ShortcutGroup>& groups, QWidget* parent)
    : QDialog(parent) {
  setObjectName(QStringLiteral("shortcuts"));
  setWindowTitle(tr("Keyboard Shortcuts"));
  auto* list = new QWidget;
  auto* grid = new QGridLayout(list);
  constexpr int margin = look::space::dialogMargin;
  grid->setContentsMargins(margin, margin, margin, margin);
  grid->setHorizontalSpacing(look::space::section);
  grid->setVerticalSpacing(look::space::tight);
  grid->setColumnStretch(0, 1);
  for (const ShortcutGroup& group : groups) addGroup(*grid, group);
  grid->setRowStretch(grid->rowCount(), 1);

  auto* area = new QScrollArea;
  area->setWidget(list);
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::StrongFocus);
  area->setAccessibleName(tr("List of shortcuts"));
  area->verticalScrollBar()->setAccessibleName(area->accessibleName());
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(area);
  // Rolling sideways would separate the keys from what they do.
  const int wide = list->sizeHint().width() + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  resize(firstSize.expandedTo({wide, 0}).boundedTo(screen()->availableSize()));
}

}  // namespace orvanel
