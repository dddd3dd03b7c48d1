#include "recovery/Recovery.h"

#include <utility>

namespace orvanel {

class Recovery::Impl {
 public:
  explicit Impl(RecoverySettings chosen) : settings(std::move(chosen)) {}
  RecoverySettings settings;
  RecoveryStatus status;
  Signal<const RecoveryStatus&> statusChanged;
};

Recovery::Recovery(RecoverySettings settings) : impl_(std::make_unique<Impl>(std::move(settings))) {}
Recovery::~Recovery() = default;

void Recovery::findOrphans(QObject* /*receiver*/, OrphansFound /*done*/) {}
void Recovery::restore(const QString& /*orphanID*/, MetalContext& /*context*/, QObject* /*receiver*/,
                       RestoreDone /*done*/, ProgressChanged /*progressChanged*/,
                       CancellationPtr /*cancellation*/) {}
void Recovery::discard(const QString& /*orphanID*/) {}
void Recovery::follow(const DocumentPtr& /*document*/) {}
void Recovery::saved(const Document& /*document*/) {}
void Recovery::closed(const Document& /*document*/) {}
void Recovery::recordNow() {}

const RecoveryStatus& Recovery::status() const {
  return impl_->status;
}

Subscription Recovery::observeStatus(std::function<void(const RecoveryStatus&)> changed) {
  return impl_->statusChanged.observe(std::move(changed));
}

RecoveryFigures Recovery::figures() const {
  return {};
}

}  // namespace orvanel
