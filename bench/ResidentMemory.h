// Resident memory of this process.
#pragma once

#include <unistd.h>

#include <fstream>
#include <string>

namespace orvanel {

inline double residentBytes() {
  std::ifstream statm("/proc/self/statm");
  double total = 0;
  double resident = 0;
  statm >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// The largest resident size since the last `forgetPeak`.
inline double peakBytes() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) * 1024.0;
  }
  return 0.0;
}

inline void forgetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
}

}  // namespace orvanel
