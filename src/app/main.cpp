#include <cstdio>
#include <string_view>

#include "app/DunmarrowApp.h"

namespace {

constexpr auto helpText = R"(Usage: orvanel [FILE...]
Edit layered raster images. Each FILE, a document or an image, opens in its own tab.

  --help     show this help and exit
  --version  show the version and exit
)";

/// Handles the options that work without a display.
bool answeredWithoutWindow(int argc, char** argv) {
  for (int index = 1; index < argc; ++index) {
    const std::string_view argument(argv[index]);
    if (argument == "--help") {
      std::fputs(helpText, stdout);
      return true;
    }
    if (argument == "--version") {
      std::puts("Orvanel 0.1");
      return true;
    }
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (answeredWithoutWindow(argc, argv)) return 0;
  orvanel::DunmarrowApp application(argc, argv);
  return application.run();
}
