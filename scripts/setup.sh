#!/bin/bash
# Installs the dependencies for building, testing and running, on Debian 12 and its derivatives. Silent if
# everything is installed.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
  # Compilers and build tools
  make g++ cmake ninja-build pkg-config ccache mold
  # Checks: layout, static analysis, fuzzing with its sanitizers
  clang clang-format clang-tidy libclang-rt-14-dev llvm
  # The window and its images
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev libqt6svg6 qt6-image-formats-plugins libgl-dev
  libgif-dev libheif-dev libexiv2-dev qt6-wayland
  # Translations, those of the toolkit included
  qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools qt6-translations-l10n
  # The core: vectors, threads, results, compression, archives
  libhwy-dev libtbb-dev libexpected-dev liblz4-dev libzip-dev libisal-dev zlib1g-dev
  # Tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev
  # File systems that share blocks, to save on
  btrfs-progs xfsprogs
  # Making a package, and judging it
  dpkg-dev librsvg2-bin lintian desktop-file-utils appstream libxml2-utils shared-mime-info groff-base
  # Running without a display and taking pictures of it
  xvfb xauth xdotool openbox weston imagemagick fonts-dejavu-core python3
  # Using it as assistive technology does
  dbus-daemon at-spi2-core gir1.2-atspi-2.0 python3-gi
)

# dpkg-query fails if it doesn't know one of the packages.
known=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null || true)
missing=()
for package in "${packages[@]}"; do
  grep -qx "$package installed" <<<"$known" || missing+=("$package")
done
((${#missing[@]})) || exit 0

if ! command -v apt-get >/dev/null; then
  echo "apt was not found. Please install the equivalents of: ${missing[*]}" >&2
  exit 1
fi

# Ask for the password here, because the output of the steps goes to a log.
asRoot=()
if ((EUID != 0)); then
  command -v sudo >/dev/null || {
    echo "This needs root, and sudo was not found. Please install: ${missing[*]}" >&2
    exit 1
  }
  sudo -n true 2>/dev/null || sudo -v
  asRoot=(sudo)
fi
apt=("${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y
  -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300)

scripts/step.sh "Reading the package lists" build/setup.log "${apt[@]}" update
scripts/step.sh "Installing ${#missing[@]} packages" build/setup.log \
  "${apt[@]}" install --no-install-recommends "${missing[@]}"
