#include "app/LoadingPlace.h"

#include <chrono>
#include <utility>

namespace orvanel {

namespace {

constexpr std::chrono::milliseconds appearance{60};

}  // namespace

LoadingPlace::LoadingPlace(WindowState& windowState, DocumentFiles& files, QObject* parent)
    : QObject(parent), windowState_(windowState), files_(files) {
  appearance_.setSingleShot(true);
  appearance_.setInterval(appearance);
  // The default type may be late by a twentieth and more.
  appearance_.setTimerType(Qt::PreciseTimer);
  connect(&appearance_, &QTimer::timeout, this, [this] {
    isShown_ = true;
    bringForward();
  });
  files_.onLoadingChanged = [this] { loadingChanged(); };
}

LoadingPlace::~LoadingPlace() {
  files_.onLoadingChanged = nullptr;
}

LoadingFilePtr LoadingPlace::file() const {
  return isShown_ ? files_.loadingFile() : nullptr;
}

bool LoadingPlace::isInFront() const {
  return file() != nullptr && windowState_.activeDocument() == nullptr;
}

void LoadingPlace::bringForward() {
  windowState_.setAsideActiveDocument();
  if (onChanged) onChanged();
}

void LoadingPlace::cancel() {
  files_.cancelLoading();
}

void LoadingPlace::add(const DocumentPtr& document) {
  const LoadingFilePtr awaited = file();
  const bool staysInFront =
      isInFront() && document->sourceFileURL.value().value_or(QString()) != awaited->path;
  windowState_.addDocument(document);
  if (staysInFront) windowState_.setAsideActiveDocument();
}

void LoadingPlace::loadingChanged() {
  const LoadingFilePtr now = files_.loadingFile();
  if (now == nullptr) {
    appearance_.stop();
    isShown_ = false;
    seen_.clear();
    showLastDocument();
  } else if (seen_.emplace(now->work, now->path).second) {
    appearance_.start();
  }
  if (onChanged) onChanged();
}

bool LoadingPlace::leave() {
  return file() != nullptr && showLastDocument();
}

/// False if a document is shown, or none is open.
bool LoadingPlace::showLastDocument() {
  const auto& order = windowState_.mruOrder.value();
  if (windowState_.activeDocument() != nullptr || order.empty()) return false;
  windowState_.switchToDocument(order.front());
  return true;
}

}  // namespace orvanel
