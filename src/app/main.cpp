#include <cstdio>
#include <memory>
#include <utility>

#include "app/DunmarrowApp.h"
#include "app/StartArguments.h"
#include "app/instance/InstanceHandover.h"
#include "raster/FatalFault.h"

namespace {

using namespace orvanel;

constexpr auto helpText = R"(Usage: orvanel [OPTION...] [FILE...]
Edit layered raster images. Each FILE, a document or an image, opens in its own tab: of the window
that is already open on this screen, if there is one, otherwise of a new window.

  --new-window        open a window of its own, in a process of its own
  --translation FILE  show the texts of a compiled translation (.qm), in a window of its own
  --help              show this help and exit
  --version           show the version and exit

Options of the toolkit, such as -platform or -style, are understood too.
)";

QStringList argumentsOf(int argc, char** argv) {
  QStringList arguments;
  for (int index = 1; index < argc; ++index) arguments << QString::fromLocal8Bit(argv[index]);
  return arguments;
}

/// Tries to become the process that later starts find. If there is one already, it gets the files, and
/// `isHandedOver` is set.
std::unique_ptr<InstanceClaim> meetOtherInstance(const StartArguments& start, bool& isHandedOver) {
  if (start.isUITesting) return nullptr;
  const auto address = InstanceAddress::ofSession();
  if (!address) return nullptr;
  std::unique_ptr<InstanceClaim> claim = InstanceClaim::take(*address);
  const bool needsOwnProcess = start.wantsNewWindow || start.hasOtherOptions || !start.translation.isEmpty();
  isHandedOver =
      claim == nullptr && !needsOwnProcess && handOver(*address, OpenRequest::ofThisProcess(start.files));
  return claim;
}

}  // namespace

int main(int argc, char** argv) {
  const StartArguments start = StartArguments::of(argumentsOf(argc, argv));
  // Answered without a display.
  if (start.wantsHelp) {
    std::fputs(helpText, stdout);
    return 0;
  }
  if (start.wantsVersion) {
    std::puts("Orvanel 0.1");
    return 0;
  }
  bool isHandedOver = false;
  std::unique_ptr<InstanceClaim> claim = meetOtherInstance(start, isHandedOver);
  if (isHandedOver) return 0;
  endFaultsOnTerminate();
  speakBeforeFaultSignals();
  DunmarrowApp application(argc, argv);
  return application.run(std::move(claim));
}
