// What becomes of a journal once its document has been restored from it.
#include <QRegularExpression>

#include "io/files/FileOperations.h"
#include "recovery/Recovery.h"
#include "recovery/RecoveryFixture.h"

namespace orvanel {
namespace {

using testing::firstDifference;
using testing::unsavedDocument;

class RestoredDocumentTest : public testing::RecoveryTest {
 protected:
  /// Null if that fails.
  static DocumentPtr restore(Recovery& recovery, const QString& orphanID) {
    QObject receiver;
    DocumentPtr back;
    bool isDone = false;
    recovery.restore(orphanID, MetalContext::shared(), &receiver,
                     [&](const FileResult<RestoredDocument>& result) {
                       back = result ? result->document : nullptr;
                       isDone = true;
                     });
    EXPECT_TRUE(waitUntil([&] { return isDone; }));
    return back;
  }
};

TEST_F(RestoredDocumentTest, anOrphanStaysUntilItsDocumentHasARecordOfItsOwn) {
  const DocumentPtr document = unsavedDocument();
  crashWith(document);
  const QString orphanID = store().orphans().at(0).id;
  {
    Recovery recovery(settings());
    const DocumentPtr back = restore(recovery, orphanID);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(firstDifference(*document, *back), "");
    EXPECT_EQ(store().orphans().size(), 0U) << "it is claimed";
  }
  EXPECT_EQ(store().orphans().size(), 1U) << "the second process has ended as well";
  {
    Recovery recovery(settings());
    const DocumentPtr back = restore(recovery, orphanID);
    recovery.follow(back);
    recovery.recordNow();
  }
  ASSERT_EQ(store().orphans().size(), 1U);
  EXPECT_NE(store().orphans().at(0).id, orphanID);
  EXPECT_EQ(firstDifference(*document, *restored()), "");
}

/// Looks at the store in the moments in which a journal takes its place.
class LookingDisk final : public FileOperations {
 public:
  explicit LookingDisk(std::function<void()> look) : look_(std::move(look)) {}
  int renameFile(const std::string& from, const std::string& to) override {
    const bool isOfJournal = to.ends_with(".journal");
    if (isOfJournal) look_();
    const int result = FileOperations::renameFile(from, to);
    if (isOfJournal) look_();
    return result;
  }

 private:
  std::function<void()> look_;
};

TEST_F(RestoredDocumentTest, aRestoredDocumentIsAlwaysInOneJournal) {
  const DocumentPtr document = unsavedDocument();
  crashWith(document);
  const QString orphanID = store().orphans().at(0).id;
  // As a process finds it that starts after a kill: locks have gone.
  RecoverySettings afterKill = settings();
  std::vector<OrphanList> found;
  LookingDisk disk([&] {
    afterKill.folder = directory.filePath(QStringLiteral("killed%1").arg(found.size()));
    ASSERT_TRUE(QDir().mkpath(afterKill.folder));
    for (const QString& name : files())
      ASSERT_TRUE(QFile::copy(settings().folder + u'/' + name, afterKill.folder + u'/' + name));
    found.push_back(RecoveryStore(afterKill).orphans());
  });
  const ScopedFileOperations scope(disk);
  Recovery recovery(settings());
  const DocumentPtr back = restore(recovery, orphanID);
  recovery.follow(back);
  recovery.recordNow();
  ASSERT_EQ(found.size(), 2U);
  ASSERT_EQ(found[0].size(), 1U);
  EXPECT_EQ(found[0][0].id, orphanID) << "before the new one is complete";
  ASSERT_EQ(found[1].size(), 1U);
  EXPECT_NE(found[1][0].id, orphanID) << "from then on, although the old one is still there";
}

/// A disk that has no links to the user's files, and room for so many copies of them.
class DiskOfStore final : public FileOperations {
 public:
  int linkFile(const std::string& file, const std::string& to) override {
    if (!file.starts_with("/proc/")) return FileOperations::linkFile(file, to);
    errno = EXDEV;
    return -1;
  }
  int createFile(const std::string& path, mode_t mode) override {
    if (!path.ends_with(".base.part") || copies-- > 0) return FileOperations::createFile(path, mode);
    errno = ENOSPC;
    return -1;
  }

  int copies = 1;
};

TEST_F(RestoredDocumentTest, aRestoredDocumentKeepsTheCopyOfItsFile) {
  DiskOfStore disk;
  const ScopedFileOperations scope(disk);
  const DocumentPtr document = unsavedDocument();
  const QString path = directory.filePath(QStringLiteral("image.tessel"));
  ASSERT_TRUE(DocumentIO::saveSynchronously(document, path, MetalContext::shared()).has_value());
  document->setSource(path, std::nullopt);
  {
    Recovery recovery(settings());
    recovery.follow(document);
    recovery.recordNow();
    ASSERT_TRUE(waitUntil([&] { return !files().filter(QRegularExpression("base$")).isEmpty(); }));
  }
  {
    Recovery recovery(settings());
    const DocumentPtr back = restore(recovery, store().orphans().at(0).id);
    recovery.follow(back);
    recovery.recordNow();
  }
  ASSERT_TRUE(QFile::remove(path));
  const DocumentPtr back = restored();
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(firstDifference(*document, *back), "");
}

}  // namespace
}  // namespace orvanel
