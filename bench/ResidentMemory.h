// Resident memory of this process, for benchmarks that count it.
#pragma once

#include <unistd.h>

#include <fstream>

namespace orvanel {

inline double residentBytes() {
  std::ifstream statm("/proc/self/statm");
  double total = 0;
  double resident = 0;
  statm >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

}  // namespace orvanel
