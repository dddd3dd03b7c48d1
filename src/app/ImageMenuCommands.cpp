#include <QActionGroup>
#include <array>

#include "app/MenuCommands.h"
#include "app/dialogs/SizeCommands.h"
#include "look/TranslatedName.h"
#include "panels/levels/LevelsWindow.h"

namespace orvanel {

namespace {

void addModes(QMenu& menu, const CommandContext& context) {
  constexpr std::array modes{ColorMode::rgb8, ColorMode::rgb16, ColorMode::grayscale8,
                             ColorMode::grayscale16};
  auto* group = new QActionGroup(&menu);
  for (const ColorMode mode : modes) {
    QAction* item = context.items.add(
        menu, look::translatedName(displayName(mode)), {},
        onActiveDocument(context.appState,
                         [mode](const DocumentPtr& document) { document->changeColorMode(mode); }),
        hasDocument);
    item->setCheckable(true);
    group->addAction(item);
    context.items.follow(*item, [mode](QAction& followed, const MenuFacts& facts) {
      followed.setChecked(facts.colorMode == mode);
    });
  }
}

void addAdjustments(QMenu& menu, const CommandContext& context) {
  const MenuItems::Rule hasLayer = [](const MenuFacts& facts) { return facts.hasActiveLayer; };
  context.items.add(
      menu, ImageMenuCommands::tr("Levels..."), {QKeySequence(Qt::CTRL | Qt::Key_L)},
      onActiveDocument(context.appState,
                       [&levels = context.levels](const DocumentPtr& document) { levels.openFor(document); }),
      hasLayer);
  menu.addSeparator();
  context.items.add(
      menu, ImageMenuCommands::tr("Invert"), {QKeySequence(Qt::CTRL | Qt::Key_I)},
      onActiveDocument(context.appState, [](const DocumentPtr& document) { document->invertActive(); }),
      hasLayer);
}

void addSizes(QMenu& menu, const CommandContext& context) {
  const auto add = [&](const QString& title, void (*command)(const DocumentPtr&, Dialogs&)) {
    context.items.add(
        menu, title, {},
        onActiveDocument(context.appState, [command, &dialogs = context.dialogs](
                                               const DocumentPtr& document) { command(document, dialogs); }),
        hasDocument);
  };
  add(ImageMenuCommands::tr("Canvas Size..."), askAndResizeCanvas);
  add(ImageMenuCommands::tr("Image Size..."), askAndResizeImage);
}

}  // namespace

void ImageMenuCommands::addTo(QMenu& menu, const CommandContext& context) {
  addModes(*menu.addMenu(tr("Mode")), context);
  menu.addSeparator();
  addAdjustments(*menu.addMenu(tr("Adjustments")), context);
  menu.addSeparator();
  addSizes(menu, context);
  context.items.add(
      menu, tr("Crop"), {},
      onActiveDocument(context.appState, [](const DocumentPtr& document) { document->cropToSelection(); }),
      [](const MenuFacts& facts) { return facts.hasSelection; });
  context.items.add(menu, tr("Trim"), {QKeySequence(Qt::CTRL | Qt::Key_Period)},
                    onActiveDocument(context.appState,
                                     [&dialogs = context.dialogs](const DocumentPtr& document) {
                                       if (!document->trim()) dialogs.beep();
                                     }),
                    hasDocument);
}

}  // namespace orvanel
