#!/usr/bin/env bash
# Installs the Debian packages Lumora builds and tests with, only those that are missing.
set -euo pipefail
packages=(
  # the build
  cmake ninja-build g++ clang libclang-rt-14-dev pkgconf libgtest-dev libgmock-dev
  libbenchmark-dev nlohmann-json3-dev qt6-base-dev qt6-svg-dev libqt6svg6
  # the Linux backend: X11 and RandR, Wayland clients
  libx11-dev libxrandr-dev libxext-dev libxss-dev libwayland-dev libwayland-bin
  # the real servers the tests start, and their witnesses
  xvfb xauth fonts-dejavu-core xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils
  xdotool dbus-daemon python3-dbusmock python3-dbus mutter libglib2.0-bin sway util-linux
  zsh groff-base locales
  # the packaging test: both packages built and checked as a distribution would
  lintian appstream desktop-file-utils rpm
  # the macOS type check and the libc++ build of the core
  libc++-dev libc++abi-dev libc6-dev-arm64-cross
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
# A decimal-comma locale, so the test that numbers ignore the user's locale runs.
if ! locale -a 2>/dev/null | grep -qi '^de_DE.utf8$'; then
  localedef -i de_DE -f UTF-8 de_DE.UTF-8 2>/dev/null || true
fi
