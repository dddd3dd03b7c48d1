// Linked into every test program that uses the engine: work that is still queued when a program ends would
// count as leaked.
#include <gtest/gtest.h>

#include "raster/Background.h"

namespace orvanel {
namespace {

class BackgroundWork : public testing::Environment {
 public:
  void TearDown() override { waitForBackgroundWork(); }
};

[[maybe_unused]] const testing::Environment* const registered =
    testing::AddGlobalTestEnvironment(new BackgroundWork);

}  // namespace
}  // namespace orvanel
