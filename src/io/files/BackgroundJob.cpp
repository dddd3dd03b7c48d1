#include "io/files/BackgroundJob.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>
#include <memory>

namespace orvanel {

void runInBackground(std::function<void()> work) {
  QThreadPool::globalInstance()->start(std::move(work));
}

void runOnMainThread(std::function<void()> call) {
  QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(call), Qt::QueuedConnection);
}

Progress progressOnMainThread(QObject* receiver, std::function<void(double)> progressChanged,
                              CancellationPtr cancellation) {
  if (!progressChanged) return Progress({}, std::move(cancellation));
  constexpr double step = 0.01;
  const auto last = std::make_shared<double>(0.0);
  auto passOn = [last, guard = QPointer(receiver),
                 progressChanged = std::move(progressChanged)](double done) {
    if (done < *last + step) return;
    *last = done;
    runOnMainThread([guard, progressChanged, done] {
      if (!guard.isNull()) progressChanged(done);
    });
  };
  return Progress(std::move(passOn), std::move(cancellation));
}

}  // namespace orvanel
