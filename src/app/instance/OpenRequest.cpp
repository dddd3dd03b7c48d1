#include "app/instance/OpenRequest.h"

#include <QDir>

#include "io/files/FileName.h"

namespace orvanel {

namespace {

// Fields end with a zero byte, the only one that a file name can't contain.
constexpr auto greeting = "orvanel open 1";
constexpr qsizetype fieldsBeforeFiles = 2;

}  // namespace

OpenRequest OpenRequest::ofThisProcess(const QStringList& files) {
  OpenRequest request;
  const QDir here = QDir::current();
  for (const QString& file : files) request.files << QDir::cleanPath(here.absoluteFilePath(file));
  request.activationToken = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
  return request;
}

QByteArray OpenRequest::encoded() const {
  QByteArray message(greeting);
  message += '\0';
  message += activationToken.toUtf8() + '\0';
  for (const QString& file : files) message += file.toUtf8() + '\0';
  return message;
}

std::optional<OpenRequest> OpenRequest::decode(const QByteArray& message) {
  if (message.size() > maximumBytes || !message.endsWith('\0')) return std::nullopt;
  if (!isUtf8({message.constData(), static_cast<std::size_t>(message.size())})) return std::nullopt;
  const QList<QByteArray> fields = message.chopped(1).split('\0');
  if (fields.size() < fieldsBeforeFiles || fields.at(0) != greeting) return std::nullopt;
  OpenRequest request;
  request.activationToken = QString::fromUtf8(fields.at(1));
  for (qsizetype i = fieldsBeforeFiles; i < fields.size(); ++i) {
    if (!fields.at(i).startsWith('/')) return std::nullopt;
    request.files << QString::fromUtf8(fields.at(i));
  }
  return request;
}

}  // namespace orvanel
