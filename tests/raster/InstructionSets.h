// Runs a check once for every instruction set that this machine has and the kernels were compiled for.
#pragma once

#include <gtest/gtest.h>

#include <hwy/targets.h>

#include <cstdint>
#include <functional>

namespace orvanel {

inline void forEveryInstructionSet(const std::function<void()>& check) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    check();
  }
  hwy::SetSupportedTargetsForTest(0);
}

}  // namespace orvanel
