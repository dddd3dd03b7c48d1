#include "io/files/SaveTemporary.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QUuid>
#include <ctime>
#include <string_view>

namespace orvanel {
namespace {

constexpr std::string_view prefix = "dunmarrow_save_";
constexpr std::string_view suffix = ".tmp";
constexpr std::time_t secondsOfGrace = 24 * 60 * 60;

bool isOurName(const std::string& name) {
  if (!name.starts_with(prefix) || !name.ends_with(suffix)) return false;
  const std::string unique = name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
  const QString text = QString::fromStdString(unique);
  return QUuid::fromString(text).toString(QUuid::WithoutBraces).toUpper() == text;
}

bool isAbandoned(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
         status.st_mtime < std::time(nullptr) - secondsOfGrace;
}

}  // namespace

std::string newTemporaryName() {
  const QString unique = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
  return std::string(prefix) + unique.toStdString() + std::string(suffix);
}

void removeAbandonedTemporaries(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::directory_iterator entry(folder, failure);
  for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
    if (!isOurName(entry->path().filename())) continue;
    const std::string path = entry->path();
    if (isAbandoned(path)) ::unlink(path.c_str());
  }
}

}  // namespace orvanel
