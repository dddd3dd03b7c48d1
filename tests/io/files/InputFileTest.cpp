#include "io/files/InputFile.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cstring>

#include "io/document/DocumentIO.h"
#include "io/image/FlatImage.h"

namespace orvanel {
namespace {

class InputFileTest : public ::testing::Test {
 protected:
  QString path(const char* name) const { return directory_.filePath(QString::fromUtf8(name)); }
  std::string nativePath(const char* name) const { return QFile::encodeName(path(name)).toStdString(); }

  QString written(const char* name, const QByteArray& bytes) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    return file.fileName();
  }

  static void expectRefused(const QString& irregular) {
    EXPECT_FALSE(InputFile::open(irregular).has_value());
    MetalContext& context = MetalContext::shared();
    EXPECT_FALSE(readFlatImage(irregular, context).has_value());
    EXPECT_FALSE(DocumentIO::loadSynchronously(irregular, context).has_value());
  }

 private:
  QTemporaryDir directory_;
};

TEST_F(InputFileTest, readsFromAnywhere) {
  const auto file = InputFile::open(written("bytes", "0123456789"));
  ASSERT_TRUE(file.has_value());
  EXPECT_EQ((*file)->size(), 10);
  EXPECT_EQ((*file)->read(3), "012");
  EXPECT_EQ((*file)->peek(2), "34");
  EXPECT_TRUE((*file)->seek(8));
  EXPECT_EQ((*file)->readAll(), "89");
  EXPECT_TRUE((*file)->seek(0));
  EXPECT_EQ((*file)->readAll(), "0123456789");
}

TEST_F(InputFileTest, readsAndSeeksAcrossItsBuffer) {
  QByteArray bytes(100'000, '\0');
  for (qsizetype i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + i / 251);
  const auto file = InputFile::open(written("bytes", bytes));
  ASSERT_TRUE(file.has_value());
  for (const qint64 position : {10LL, 16'000LL, 16'383LL, 5LL, 99'990LL, 40'000LL, 40'010LL}) {
    ASSERT_TRUE((*file)->seek(position));
    EXPECT_EQ((*file)->read(20),
              bytes.sliced(position).first(std::min<qsizetype>(20, bytes.size() - position)));
    char next = '\0';
    EXPECT_EQ((*file)->getChar(&next), position + 20 < bytes.size());
    EXPECT_EQ(next, position + 20 < bytes.size() ? bytes[position + 20] : '\0');
  }
}

TEST_F(InputFileTest, cancelledWorkReadsNoMore) {
  const auto cancellation = std::make_shared<Cancellation>();
  const auto file = InputFile::open(written("bytes", QByteArray(100'000, 'x')), Progress({}, cancellation));
  EXPECT_EQ((*file)->read(5).size(), 5);
  cancellation->cancel();
  EXPECT_LT((*file)->readAll().size(), 20'000);
}

TEST_F(InputFileTest, aPipeIsRejectedAtOnce) {
  ASSERT_EQ(::mkfifo(nativePath("pipe").c_str(), 0600), 0);
  expectRefused(path("pipe"));
}

TEST_F(InputFileTest, aDirectoryIsRejected) {
  ASSERT_EQ(::mkdir(nativePath("folder.png").c_str(), 0700), 0);
  expectRefused(path("folder.png"));
}

TEST_F(InputFileTest, aSocketIsRejected) {
  const std::string name = nativePath("socket");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(name.size(), sizeof address.sun_path);
  std::strncpy(address.sun_path, name.c_str(), sizeof address.sun_path - 1);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  expectRefused(path("socket"));
  ::close(socket);
}

TEST_F(InputFileTest, aDeviceIsRejected) {
  expectRefused(QStringLiteral("/dev/zero"));
}

}  // namespace
}  // namespace orvanel
