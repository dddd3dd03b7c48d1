// A test fixture with an application state, scripted dialogs, the file commands and, on request, a main
// window.
#pragma once

#include <gmock/gmock.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QMenuBar>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "ScriptedDialogs.h"
#include "app/AppState.h"
#include "app/DocumentFiles.h"
#include "app/MainWindow.h"
#include "panels/bars/DocumentTabBar.h"

namespace orvanel {

/// Processes events until the condition holds. False if it doesn't within 30 seconds.
inline bool waitUntil(const std::function<bool()>& condition) {
  QElapsedTimer timer;
  timer.start();
  while (!condition()) {
    if (timer.elapsed() > 30000) return false;
    QApplication::processEvents(QEventLoop::AllEvents, 20);
  }
  return true;
}

class AppFixture : public testing::Test {
 protected:
  AppFixture() {
    for (const char* key : {UserDefaults::confirmUnsavedChangesKey, UserDefaults::inspectorWidthKey,
                            UserDefaults::lastFolderKey}) {
      UserDefaults().removeValue(key);
    }
  }
  ~AppFixture() override { files.settleWrites(); }

  void showWindow() {
    window = std::make_unique<MainWindow>(state, files, dialogs, [this] { ++quitRequests; });
    window->show();
    QApplication::processEvents();
  }

  /// Adds new documents to the state, as the window does when there is one.
  void observeNotifications() {
    const auto add = [this](const std::any& object) {
      state.windowState.addDocument(std::any_cast<DocumentPtr>(object));
    };
    subscriptions.push_back(NotificationCenter::standard().observe(notification::openedImageDocument, add));
    subscriptions.push_back(NotificationCenter::standard().observe(notification::createdNewDocument, add));
  }

  [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

  QString writeImage(const char* name, int width = 20, int height = 10, QColor color = Qt::red) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    EXPECT_TRUE(image.save(path(name)));
    return path(name);
  }

  QString writeText(const char* name, const QByteArray& text) {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
    return path(name);
  }

  DocumentPtr addDocument(const QString& name, int width = 16, int height = 12) {
    const DocumentPtr document = Document::create(name, width, height, ColorMode::rgb8, state.metalContext);
    state.windowState.addDocument(document);
    return document;
  }

  [[nodiscard]] std::vector<std::string> openNames() const {
    std::vector<std::string> names;
    for (const DocumentPtr& document : state.windowState.documents.value()) {
      names.push_back(document->name.value().toStdString());
    }
    return names;
  }

  // The menus of the window.
  [[nodiscard]] QMenu* menu(const char* title) const {
    for (const QAction* entry : window->menuBar()->actions()) {
      if (entry->text().remove(u'&') == QLatin1String(title)) return entry->menu();
    }
    return nullptr;
  }
  /// An item of the menu or of its submenus, with or without a letter that chooses it.
  [[nodiscard]] static QAction* itemIn(const QMenu& menu, const char* title) {
    for (QAction* action : menu.actions()) {
      if (action->text().remove(u'&') == QLatin1String(title)) return action;
      QAction* inner = action->menu() != nullptr ? itemIn(*action->menu(), title) : nullptr;
      if (inner != nullptr) return inner;
    }
    return nullptr;
  }
  [[nodiscard]] QAction* item(const char* menuTitle, const char* title) const {
    return itemIn(*menu(menuTitle), title);
  }
  [[nodiscard]] static std::vector<std::string> titles(const QWidget& menu) {
    std::vector<std::string> result;
    for (const QAction* action : menu.actions()) {
      result.push_back(action->isSeparator() ? "-" : action->text().toStdString());
    }
    return result;
  }

  bool waitForFiles() {
    return waitUntil([this] { return !files.activity.fraction.value().has_value(); });
  }

  QTemporaryDir folder;
  ScriptedDialogs dialogs;
  AppState state{MetalContext::shared()};
  DocumentFiles files{state, dialogs};
  int quitRequests = 0;
  std::unique_ptr<MainWindow> window;
  std::vector<NotificationCenter::Subscription> subscriptions;
};

}  // namespace orvanel
