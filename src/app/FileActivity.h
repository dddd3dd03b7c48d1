// What is being read and written in the background, as one number for the window to show. Owned by the
// file commands; main thread only.
#pragma once

#include <QProperty>
#include <map>
#include <optional>

namespace orvanel {

class FileActivity {
 public:
  using Work = int;

  /// 0 to 1 over all running work; nothing while none runs.
  QProperty<std::optional<double>> fraction;

  [[nodiscard]] Work begin();
  void advance(Work work, double workFraction);
  void end(Work work);

 private:
  void publish();

  std::map<Work, double> running_;
  Work nextWork_ = 1;
};

}  // namespace orvanel
