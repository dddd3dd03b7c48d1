#include "io/files/BackgroundJob.h"

#include <QPointer>
#include <memory>

namespace orvanel {

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
