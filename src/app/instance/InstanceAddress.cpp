#include "app/instance/InstanceAddress.h"

#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>
#include <QCryptographicHash>

namespace orvanel {

namespace {

bool isPrivate(const QByteArray& folder) {
  struct stat status {};
  constexpr mode_t others = 077;
  return folder.startsWith('/') && ::lstat(folder.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == ::geteuid() && (status.st_mode & others) == 0;
}

/// A short name for what decides on which screen a window appears.
std::string screenName() {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  for (const char* variable : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"}) {
    hash.addData(qgetenv(variable) + '\0');
  }
  constexpr qsizetype enough = 16;
  return hash.result().toHex().first(enough).toStdString();
}

}  // namespace

std::optional<InstanceAddress> InstanceAddress::ofSession() {
  const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
  if (!isPrivate(folder)) return std::nullopt;
  const std::string path = folder.toStdString() + "/orvanel-" + screenName();
  InstanceAddress address{path + ".socket", path + ".lock"};
  if (address.socket.size() >= sizeof(sockaddr_un::sun_path)) return std::nullopt;
  return address;
}

}  // namespace orvanel
