// A second start of the program and the first one, as two ends of a socket.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <future>

#include "app/AppFixture.h"
#include "app/instance/InstanceServer.h"

namespace orvanel {
namespace {

constexpr std::chrono::milliseconds ample{30000};
constexpr std::chrono::milliseconds brief{50};

OpenRequest asking(const QStringList& files) {
  return {files, QStringLiteral("token")};
}

const OpenRequest plainRequest = asking({QStringLiteral("/pictures/a.png")});

class InstanceTest : public testing::Test {
 protected:
  std::unique_ptr<InstanceServer> serve() {
    auto claim = InstanceClaim::take(address);
    if (claim == nullptr) return nullptr;
    auto server = std::make_unique<InstanceServer>(std::move(claim));
    server->mayOpen = [this] { return mayOpen; };
    server->open = [this](const OpenRequest& request) { opened.push_back(request); };
    return server;
  }

  /// Hands over from another thread, as another process would, while events are processed.
  bool handOverWhileServing(const OpenRequest& request) {
    auto done = std::async(std::launch::async, [&] { return handOver(address, request, ample); });
    EXPECT_TRUE(
        waitUntil([&] { return done.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    return done.get();
  }

  /// Sends any bytes from another thread. Whether the server says that it takes them.
  bool isTaken(const QByteArray& bytes) {
    auto done = std::async(std::launch::async, [&] {
      const Descriptor connection = connectTo(address.socket);
      ::fcntl(connection.number(), F_SETFL, 0);
      ::send(connection.number(), bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL);
      ::shutdown(connection.number(), SHUT_WR);
      char answer = 0;
      return ::recv(connection.number(), &answer, 1, 0) == 1;
    });
    EXPECT_TRUE(
        waitUntil([&] { return done.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    return done.get();
  }

  QTemporaryDir folder;
  InstanceAddress address{folder.filePath(QStringLiteral("o.socket")).toStdString(),
                          folder.filePath(QStringLiteral("o.lock")).toStdString()};
  bool mayOpen = true;
  std::vector<OpenRequest> opened;
};

TEST_F(InstanceTest, ASecondStartHandsItsFilesToTheFirst) {
  const auto first = serve();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(InstanceClaim::take(address), nullptr);
  const OpenRequest request =
      asking({QStringLiteral("/a b.png"), QString::fromUtf8("/Bild – 写真\nzwei.tessel")});
  EXPECT_TRUE(handOverWhileServing(request));
  ASSERT_TRUE(waitUntil([&] { return !opened.empty(); }));
  EXPECT_EQ(opened, std::vector{request});
  EXPECT_TRUE(handOverWhileServing({}));
  ASSERT_TRUE(waitUntil([&] { return opened.size() == 2; }));
  EXPECT_TRUE(opened.back().files.isEmpty());
}

TEST_F(InstanceTest, AStartThatComesBeforeTheFirstServesWaitsForIt) {
  auto claim = InstanceClaim::take(address);
  ASSERT_NE(claim, nullptr);
  auto done = std::async(std::launch::async, [&] { return handOver(address, plainRequest, ample); });
  InstanceServer server(std::move(claim));
  server.mayOpen = [] { return true; };
  server.open = [this](const OpenRequest& request) { opened.push_back(request); };
  ASSERT_TRUE(waitUntil([&] { return !opened.empty(); }));
  EXPECT_TRUE(done.get());
}

TEST_F(InstanceTest, WithoutAFirstThereIsNobodyToTakeTheFiles) {
  EXPECT_FALSE(handOver(address, plainRequest, brief));
}

TEST_F(InstanceTest, WhatACrashLeavesBehindIsReplaced) {
  // A socket that nobody listens at, and a lock that nobody holds.
  { const Descriptor dead = listenAt(address.socket); }
  { QFile(QString::fromStdString(address.lock)).open(QIODevice::WriteOnly); }
  EXPECT_FALSE(handOver(address, plainRequest, brief));
  const auto first = serve();
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(handOverWhileServing(plainRequest));
}

TEST_F(InstanceTest, AProgramThatHangsIsNotWaitedFor) {
  auto claim = InstanceClaim::take(address);
  ASSERT_NE(claim, nullptr);
  EXPECT_FALSE(handOver(address, plainRequest, brief));
  // When it comes round, the files are open elsewhere.
  InstanceServer server(std::move(claim));
  server.mayOpen = [] { return true; };
  server.open = [this](const OpenRequest& request) { opened.push_back(request); };
  const OpenRequest later = asking({QStringLiteral("/later.png")});
  EXPECT_TRUE(handOverWhileServing(later));
  ASSERT_TRUE(waitUntil([&] { return !opened.empty(); }));
  EXPECT_EQ(opened, std::vector{later});
}

TEST_F(InstanceTest, AProgramThatIsEndingTakesNoFiles) {
  mayOpen = false;
  const auto first = serve();
  EXPECT_FALSE(handOverWhileServing(plainRequest));
  EXPECT_TRUE(opened.empty());
}

TEST_F(InstanceTest, TheNextProgramCanBeTheFirstAgain) {
  serve().reset();
  EXPECT_FALSE(QFile::exists(QString::fromStdString(address.socket)));
  EXPECT_NE(serve(), nullptr);
}

TEST_F(InstanceTest, OnlyItsUserCanReachTheSocket) {
  const auto first = serve();
  for (const std::string& path : {address.socket, address.lock}) {
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 077U, 0U) << path;
  }
}

TEST_F(InstanceTest, WhatIsNoRequestIsIgnored) {
  const auto first = serve();
  const QByteArray whole = plainRequest.encoded();
  const QByteArray header = OpenRequest().encoded();
  for (const QByteArray& bytes :
       {QByteArray(), QByteArray("GET / HTTP/1.0\r\n\r\n"), whole.chopped(1),
        QByteArray(whole).replace("1", "2"), header + QByteArray("relative.png\0", 13),
        header + QByteArray("/\xFF\xFE\0", 4), QByteArray(OpenRequest::maximumBytes + 100000, 'a')}) {
    EXPECT_FALSE(isTaken(bytes)) << bytes.left(40).toStdString();
  }
  EXPECT_TRUE(isTaken(whole));
  ASSERT_TRUE(waitUntil([&] { return !opened.empty(); }));
  EXPECT_EQ(opened, std::vector{plainRequest});
}

TEST_F(InstanceTest, SendersThatStaySilentDoNotKeepOthersOut) {
  const auto first = serve();
  std::vector<Descriptor> silent;
  for (std::size_t i = 0; i + 1 < InstanceServer::mostSenders; ++i)
    silent.push_back(connectTo(address.socket));
  EXPECT_TRUE(handOverWhileServing(plainRequest));
}

TEST_F(InstanceTest, ARequestThatIsTooLongIsNotSent) {
  const auto first = serve();
  EXPECT_FALSE(handOver(address, asking({u'/' + QString(OpenRequest::maximumBytes, u'a')}), ample));
}

TEST(OpenRequest, namesFilesFromTheRoot) {
  const OpenRequest request = OpenRequest::ofThisProcess(
      {QStringLiteral("a.png"), QStringLiteral("../b.png"), QStringLiteral("/c//d.png")});
  const QDir here = QDir::current();
  EXPECT_EQ(request.files, QStringList({here.absoluteFilePath(QStringLiteral("a.png")),
                                        QDir::cleanPath(here.absoluteFilePath(QStringLiteral("../b.png"))),
                                        QStringLiteral("/c/d.png")}));
}

class InstanceAddressTest : public testing::Test {
 protected:
  InstanceAddressTest() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder.path())); }
  ~InstanceAddressTest() override { qputenv("XDG_RUNTIME_DIR", before); }

  static std::string socket() {
    const auto address = InstanceAddress::ofSession();
    return address ? address->socket : std::string();
  }

  QByteArray before = qgetenv("XDG_RUNTIME_DIR");
  QTemporaryDir folder;
};

TEST_F(InstanceAddressTest, StandsInTheSessionsPrivateFolder) {
  EXPECT_TRUE(socket().starts_with(folder.path().toStdString() + "/orvanel-"));
}

TEST_F(InstanceAddressTest, IsAnotherOneForEachScreen) {
  const QByteArray screen = qgetenv("DISPLAY");
  qputenv("DISPLAY", ":1");
  const std::string first = socket();
  EXPECT_EQ(socket(), first);
  qputenv("DISPLAY", ":2");
  EXPECT_NE(socket(), first);
  qputenv("DISPLAY", screen);
}

TEST_F(InstanceAddressTest, NeedsAFolderThatOthersCannotEnter) {
  QFile::setPermissions(folder.path(),
                        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ExeGroup);
  EXPECT_EQ(socket(), "");
  qputenv("XDG_RUNTIME_DIR", "/nonexistent");
  EXPECT_EQ(socket(), "");
  qputenv("XDG_RUNTIME_DIR", ".");
  EXPECT_EQ(socket(), "");
  qunsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(socket(), "");
  QTemporaryDir deep;
  const QString path = deep.filePath(QString(100, u'a'));
  ASSERT_TRUE(QDir().mkpath(path));
  QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  qputenv("XDG_RUNTIME_DIR", QFile::encodeName(path));
  EXPECT_EQ(socket(), "");
}

}  // namespace
}  // namespace orvanel
