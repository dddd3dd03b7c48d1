// Small pictures of files, made in the background one after the other and kept until the file changes. Owned
// by whoever shows them; main thread only.
#pragma once

#include <QImage>
#include <QObject>
#include <QString>
#include <deque>
#include <functional>
#include <map>
#include <memory>

namespace orvanel {

class Cancellation;

struct FilePreview {
  /// False unless it is a regular file.
  bool exists = false;
  /// Null for a file without a picture.
  QImage picture;
  /// Time and size of the file that the picture was made of.
  qint64 modified = -1;
  qint64 bytes = -1;
};

class FilePreviews : public QObject {
  Q_OBJECT

 public:
  using Done = std::function<void(const FilePreview&)>;

  /// `side` is the largest width and height, in pixels.
  explicit FilePreviews(int side, QObject* parent = nullptr) : QObject(parent), side_(side) {}
  ~FilePreviews() override;

  /// `done` runs later, unless the request is dropped.
  void request(const QString& path, Done done);
  /// Drops all requests.
  void cancel();

 private:
  struct Request {
    QString path;
    Done done;
  };
  void startNext();
  void ended(const QString& path, const FilePreview& preview, const Done& done);

  int side_;
  std::map<QString, FilePreview> kept_;
  std::deque<Request> waiting_;
  /// Null while nothing runs.
  std::shared_ptr<Cancellation> running_;
};

}  // namespace orvanel
