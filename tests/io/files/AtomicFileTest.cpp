#include "io/files/AtomicFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <chrono>
#include <ctime>
#include <thread>

#include "io/TestBytes.h"
#include "io/files/FaultyDisk.h"
#include "raster/Background.h"

namespace orvanel {
namespace {

using testing::Bytes;
using testing::bytesOf;

class AtomicFileTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(directory_.isValid()); }

  QString path(const QString& name = QStringLiteral("picture.png")) const {
    return directory_.filePath(name);
  }
  QStringList files() const { return QDir(directory_.path()).entryList(QDir::Files | QDir::Hidden); }

  static void put(const QString& file, const QByteArray& bytes) {
    QFile out(file);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    ASSERT_EQ(out.write(bytes), bytes.size());
  }
  static QByteArray contents(const QString& file) {
    QFile in(file);
    return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
  }
  static mode_t permissions(const QString& file) {
    struct stat status {};
    ::stat(QFile::encodeName(file).constData(), &status);
    return status.st_mode & 07777;
  }

  QTemporaryDir directory_;
};

TEST_F(AtomicFileTest, createsAFile) {
  ASSERT_TRUE(replaceFile(path(), bytesOf("new")).has_value());
  EXPECT_EQ(contents(path()), "new");
  EXPECT_EQ(files(), QStringList{QStringLiteral("picture.png")});
}

TEST_F(AtomicFileTest, replacesAFileAndKeepsItsPermissions) {
  put(path(), "old");
  ASSERT_EQ(::chmod(QFile::encodeName(path()).constData(), 0640), 0);
  ASSERT_TRUE(replaceFile(path(), bytesOf("new")).has_value());
  EXPECT_EQ(contents(path()), "new");
  EXPECT_EQ(permissions(path()), 0640U);
}

TEST_F(AtomicFileTest, closesTheReplacedFileInTheBackground) {
  put(path(), "old");
  waitForBackgroundWork();
  const auto openFiles = [] {
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
  };
  const auto before = openFiles();
  ASSERT_TRUE(replaceFile(path(), bytesOf("new")).has_value());
  waitForBackgroundWork();
  EXPECT_EQ(openFiles(), before);
}

TEST_F(AtomicFileTest, newFileHasTheDefaultPermissions) {
  const mode_t mask = ::umask(0027);
  ASSERT_TRUE(replaceFile(path(), bytesOf("new")).has_value());
  ::umask(mask);
  EXPECT_EQ(permissions(path()), 0640U);
}

TEST_F(AtomicFileTest, followsALinkToAFile) {
  put(path(), "old");
  const QString link = path(QStringLiteral("link.png"));
  ASSERT_TRUE(QFile::link(path(), link));
  ASSERT_TRUE(replaceFile(link, bytesOf("new")).has_value());
  EXPECT_EQ(contents(path()), "new");
  EXPECT_EQ(QFile::symLinkTarget(link), path());
}

TEST_F(AtomicFileTest, writesUnderATemporaryNameBesideTheDestination) {
  const auto file = AtomicFile::create(path());
  ASSERT_TRUE(file.has_value());
  ASSERT_TRUE((*file)->write(bytesOf("abc")).has_value());
  const QStringList names = files();
  ASSERT_EQ(names.size(), 1);
  EXPECT_TRUE(
      QRegularExpression(QStringLiteral("^dunmarrow_save_[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.tmp$"))
          .match(names.front())
          .hasMatch())
      << names.front().toStdString();
}

TEST_F(AtomicFileTest, isRemovedUnlessCommitted) {
  put(path(), "old");
  {
    const auto file = AtomicFile::create(path());
    ASSERT_TRUE((*file)->write(bytesOf("half")).has_value());
  }
  EXPECT_EQ(contents(path()), "old");
  EXPECT_EQ(files().size(), 1);
}

TEST_F(AtomicFileTest, acceptsWritesAtEarlierPositions) {
  const Bytes body = testing::noise(9'000'000, 1);
  const auto file = AtomicFile::create(path());
  ASSERT_TRUE((*file)->write(bytesOf("head????")).has_value());
  ASSERT_TRUE((*file)->write(body).has_value());
  // This overlaps what is on the disk and what is in the buffer.
  for (const std::int64_t place : {4, 4'194'300, 8'999'000}) {
    (*file)->seek(place);
    ASSERT_TRUE((*file)->write(bytesOf("sizesize")).has_value());
  }
  (*file)->seek((*file)->size());
  ASSERT_TRUE((*file)->write(bytesOf("tail")).has_value());
  ASSERT_TRUE((*file)->commit([](const std::string&) { return Described<void>(); }).has_value());

  QByteArray expected = "head????";
  expected.append(reinterpret_cast<const char*>(body.data()), static_cast<qsizetype>(body.size()));
  for (const int place : {4, 4'194'300, 8'999'000}) expected.replace(place, 8, "sizesize");
  expected.append("tail");
  EXPECT_TRUE(contents(path()) == expected);
}

TEST_F(AtomicFileTest, leavesTheOldFileWhenTheDiskIsFull) {
  put(path(), "old");
  const Bytes bytes = testing::noise(10'000, 2);
  for (std::int64_t capacity = 0; capacity < 10'000; capacity += 499) {
    testing::FullDisk disk(capacity);
    const ScopedFileOperations scope(disk);
    const auto result = replaceFile(path(), bytes);
    ASSERT_FALSE(result.has_value());
    EXPECT_TRUE(result.error().contains(QStringLiteral("No space left on device")));
    EXPECT_EQ(contents(path()), "old");
    EXPECT_EQ(files().size(), 1);
  }
}

TEST_F(AtomicFileTest, leavesTheOldFileWhenALaterStepFails) {
  put(path(), "old");
  for (const auto step : {testing::FailingStep::Step::sync, testing::FailingStep::Step::rename}) {
    testing::FailingStep disk(step);
    const ScopedFileOperations scope(disk);
    EXPECT_FALSE(replaceFile(path(), bytesOf("new")).has_value());
    EXPECT_EQ(contents(path()), "old");
    EXPECT_EQ(files().size(), 1);
  }
}

TEST_F(AtomicFileTest, tellsThatTheDiskMayLoseTheRenaming) {
  put(path(), "old");
  testing::FailingStep disk(testing::FailingStep::Step::syncFolder);
  const ScopedFileOperations scope(disk);
  const auto result = replaceFile(path(), bytesOf("new"));
  ASSERT_TRUE(result.has_value());
  EXPECT_FALSE(result->doubt.isEmpty());
  EXPECT_EQ(result->identity, FileIdentity::of(path().toStdString()));
  EXPECT_EQ(contents(path()), "new");
  EXPECT_EQ(files().size(), 1);
  // Not every file system can do this for folders.
  disk.reason = EINVAL;
  EXPECT_TRUE(replaceFile(path(), bytesOf("newer"))->doubt.isEmpty());
}

TEST_F(AtomicFileTest, removesWhatKilledSavesLeftADayAgo) {
  const QString left = path(QStringLiteral("dunmarrow_save_0C1A7C2E-9F2B-4F9E-8E07-0D4C3C0B6D11.tmp"));
  put(left, "half");
  ASSERT_TRUE(replaceFile(path(), bytesOf("new")).has_value());
  EXPECT_TRUE(QFile::exists(left)) << "somebody may be writing it";
  const utimbuf dayBeforeYesterday{std::time(nullptr) - 48 * 3600, std::time(nullptr) - 48 * 3600};
  ASSERT_EQ(::utime(QFile::encodeName(left).constData(), &dayBeforeYesterday), 0);
  ASSERT_TRUE(replaceFile(path(), bytesOf("new")).has_value());
  EXPECT_FALSE(QFile::exists(left));
}

TEST_F(AtomicFileTest, leavesWhatIsNoTemporaryFileOfItsOwn) {
  put(path(), "mine");
  const QString notes = path(QStringLiteral("dunmarrow_save_notes.tmp"));
  put(notes, "mine");
  const utimbuf longAgo{1'000'000'000, 1'000'000'000};
  ASSERT_EQ(::utime(QFile::encodeName(notes).constData(), &longAgo), 0);
  const QString id = QStringLiteral("dunmarrow_save_0C1A7C2E-9F2B-4F9E-8E07-0D4C3C0B6D1%1.tmp");
  ASSERT_TRUE(QFile::link(notes, path(id.arg(1))));
  ASSERT_TRUE(QDir(directory_.path()).mkdir(id.arg(2)));
  ASSERT_TRUE(replaceFile(path(), bytesOf("new")).has_value());
  EXPECT_EQ(contents(notes), "mine");
  EXPECT_TRUE(QFileInfo(path(id.arg(1))).isSymLink());
  EXPECT_TRUE(QFileInfo(path(id.arg(2))).isDir());
}

TEST_F(AtomicFileTest, leavesTheOldFileWhenTheCheckFails) {
  put(path(), "old");
  const auto file = AtomicFile::create(path());
  ASSERT_TRUE((*file)->write(bytesOf("new")).has_value());
  EXPECT_FALSE(
      (*file)->commit([](const std::string&) { return because(QStringLiteral("No.")); }).has_value());
  EXPECT_EQ(contents(path()), "old");
}

TEST_F(AtomicFileTest, leavesAFileThatAnotherProgramWroteMeanwhile) {
  put(path(), "old");
  const auto file = AtomicFile::create(path());
  ASSERT_TRUE((*file)->write(bytesOf("new")).has_value());
  put(path(), "theirs");
  const auto result = (*file)->commit([](const std::string&) { return Described<void>(); });
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error(), QStringLiteral("The file was changed by another program."));
  EXPECT_EQ(contents(path()), "theirs");
}

TEST_F(AtomicFileTest, leavesAFileThatAnotherProgramMadeMeanwhile) {
  const auto file = AtomicFile::create(path());
  ASSERT_TRUE((*file)->write(bytesOf("new")).has_value());
  put(path(), "theirs");
  EXPECT_FALSE((*file)->commit([](const std::string&) { return Described<void>(); }).has_value());
  EXPECT_EQ(contents(path()), "theirs");
}

TEST_F(AtomicFileTest, makesAnewWhatAnotherProgramRemovedMeanwhile) {
  put(path(), "old");
  const auto file = AtomicFile::create(path());
  ASSERT_TRUE((*file)->write(bytesOf("new")).has_value());
  ASSERT_TRUE(QFile::remove(path()));
  EXPECT_TRUE((*file)->commit([](const std::string&) { return Described<void>(); }).has_value());
  EXPECT_EQ(contents(path()), "new");
}

TEST_F(AtomicFileTest, detectsAFileThatWasTruncatedOnTheDisk) {
  put(path(), "old");
  const auto file = AtomicFile::create(path());
  ASSERT_TRUE((*file)->write(testing::noise(5'000'000, 3)).has_value());
  (*file)->seek(0);
  // Another program modifies the file while it is being written.
  class Truncating final : public FileOperations {
    int sync(int handle) override { return ::ftruncate(handle, 100); }
  } disk;
  const ScopedFileOperations scope(disk);
  EXPECT_FALSE((*file)->commit([](const std::string&) { return Described<void>(); }).has_value());
  EXPECT_EQ(contents(path()), "old");
}

TEST_F(AtomicFileTest, refusesWhatAnotherProgramWroteDuringTheCheck) {
  put(path(), "old");
  const auto file = AtomicFile::create(path());
  ASSERT_TRUE(file.has_value());
  ASSERT_TRUE((*file)->write(bytesOf("new")).has_value());
  const auto result = (*file)->commit([](const std::string& temporary) -> Described<void> {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    put(QFile::decodeName(temporary.c_str()), "NEW");
    return {};
  });
  ASSERT_FALSE(result.has_value());
  EXPECT_TRUE(result.error().contains(QStringLiteral("differs from what was written")));
  EXPECT_EQ(contents(path()), "old");
}

TEST_F(AtomicFileTest, takesWhatIsWrittenAfterTheCheckForAnotherVersion) {
  struct WritingAtTheEnd final : FileOperations {
    int renameFile(const std::string& from, const std::string& to) override {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      put(QFile::decodeName(from.c_str()), "NEW");
      return FileOperations::renameFile(from, to);
    }
  } disk;
  const ScopedFileOperations scope(disk);
  const auto result = replaceFile(path(), bytesOf("new"));
  ASSERT_TRUE(result.has_value());
  ASSERT_TRUE(result->identity.has_value());
  EXPECT_FALSE(FileIdentity::of(path().toStdString())->isSameVersionAs(*result->identity));
}

TEST_F(AtomicFileTest, usesAnotherDirectoryOnlyIfItsOwnIsReadOnly) {
  put(path(), "old");
  testing::ReadOnlyDirectory disk(QFileInfo(directory_.path()).canonicalFilePath().toStdString());
  const ScopedFileOperations scope(disk);
  const auto result = replaceFile(path(), bytesOf("new"));
  ASSERT_FALSE(result.has_value());
  EXPECT_TRUE(result.error().contains(QStringLiteral("Permission denied")));
  EXPECT_TRUE(disk.created.starts_with(QDir::tempPath().toStdString() + "/dunmarrow_save_"));
  EXPECT_NE(::access(disk.created.c_str(), F_OK), 0);
  EXPECT_EQ(contents(path()), "old");
}

TEST_F(AtomicFileTest, refusesADirectoryAndAMissingOne) {
  EXPECT_FALSE(replaceFile(directory_.path(), bytesOf("new")).has_value());
  EXPECT_FALSE(replaceFile(path(QStringLiteral("missing/picture.png")), bytesOf("new")).has_value());
  EXPECT_TRUE(files().isEmpty());
}

}  // namespace
}  // namespace orvanel
