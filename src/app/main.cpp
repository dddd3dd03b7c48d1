#include <cstdio>
#include <string_view>

#include "app/DunmarrowApp.h"

namespace {

constexpr auto helpText = R"(Usage: orvanel [FILE...]
Edits layered raster images. Opens the documents and images named, each in a tab of its own.

  --help     show this and exit
  --version  show the version and exit
)";

/// The options that need no window, and so no display.
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
