#include "model/BackgroundCall.h"

#include <QCoreApplication>
#include <QThreadPool>
#include <utility>

namespace orvanel {

void runInBackground(std::function<void()> work) {
  QThreadPool::globalInstance()->start(std::move(work));
}

void runOnMainThread(std::function<void()> call) {
  QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(call), Qt::QueuedConnection);
}

}  // namespace orvanel
