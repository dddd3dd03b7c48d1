#include "panels/bars/TabAccessibility.h"

#include <QAccessibleWidget>

#include "panels/bars/DocumentTabBar.h"

namespace orvanel {

namespace {

class AccessibleTab : public QAccessibleWidget {
 public:
  explicit AccessibleTab(DocumentTab& tab) : QAccessibleWidget(&tab, QAccessible::PageTab), tab_(tab) {}

  [[nodiscard]] QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.selectable = true;
    state.selected = tab_.isSelected();
    return state;
  }
  [[nodiscard]] QStringList actionNames() const override { return {pressAction(), showMenuAction()}; }
  void doAction(const QString& name) override {
    if (name == pressAction()) tab_.click();
    if (name == showMenuAction()) tab_.openMenu(tab_.mapToGlobal(QPoint(0, tab_.height())));
  }

 private:
  DocumentTab& tab_;
};

QAccessibleInterface* describe(const QString& className, QObject* object) {
  if (className == QLatin1String(DocumentTab::staticMetaObject.className())) {
    return new AccessibleTab(*static_cast<DocumentTab*>(object));  // owned by the toolkit
  }
  if (className == QLatin1String(TabStrip::staticMetaObject.className())) {
    return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::PageTabList);
  }
  return nullptr;
}

}  // namespace

void describeTabsToScreenReaders() {
  static const bool isInstalled = [] {
    QAccessible::installFactory(describe);
    return true;
  }();
  static_cast<void>(isInstalled);
}

}  // namespace orvanel
