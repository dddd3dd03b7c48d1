// The user's guide lists the keys that the program has.
#include <QRegularExpression>

#include "../AppFixture.h"
#include "app/dialogs/ShortcutsWindow.h"

namespace orvanel {
namespace {

QString tablesOf(const std::vector<ShortcutGroup>& groups) {
  QString text;
  for (const ShortcutGroup& group : groups) {
    text += QStringLiteral("\n### %1\n\n| | |\n|---|---|\n").arg(group.title);
    for (const ShortcutGroup::Row& row : group.rows) {
      text += QStringLiteral("| %1 | %2 |\n").arg(row.meaning, row.keys);
    }
  }
  return text + u'\n';
}

/// What stands between the marks around the guide's tables.
QString tablesOfGuide() {
  QFile file(QStringLiteral(ORVANEL_SOURCE_DIR "/docs/user-guide.md"));
  if (!file.open(QIODevice::ReadOnly)) return {};
  static const QRegularExpression marks(QStringLiteral("<!-- shortcuts -->\n(.*)<!-- end of shortcuts -->"),
                                        QRegularExpression::DotMatchesEverythingOption);
  return marks.match(QString::fromUtf8(file.readAll())).captured(1);
}

class UserGuideTest : public AppFixture {};

TEST_F(UserGuideTest, ListsTheKeysOfTheMenusToolsAndGestures) {
  showWindow();
  const QString tables = tablesOf(shortcutGroups(*window->menuBar()));
  EXPECT_EQ(tablesOfGuide().toStdString(), tables.toStdString());
}

}  // namespace
}  // namespace orvanel
