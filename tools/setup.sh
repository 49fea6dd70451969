#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the Debian 12 packages that a purpose needs and that are not there yet; asks nothing
# and costs nothing when all are there.
#   tools/setup.sh run        build the program and use it
#   tools/setup.sh headless   the same, on a machine without a display
#   tools/setup.sh test       build and run the tests
#   tools/setup.sh bench      the same, and what the benchmarks compare with
set -euo pipefail

build=(g++ cmake ninja-build ccache pkg-config
  qtbase5-dev qtdeclarative5-dev qtmultimedia5-dev
  libvlc-dev libtbb-dev libwildmagic-dev libgl-dev libx11-dev libturbojpeg0-dev)
use=(libqt5sql5-sqlite libqt5svg5 qt5-image-formats-plugins
  vlc-plugin-base libvlc-bin libgl1 libgl1-mesa-dri fonts-dejavu-core
  libqt5multimedia5-plugins gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav
  qml-module-qtquick2 qml-module-qtquick-window2 qml-module-qtquick-controls
  qml-module-qtquick-layouts qml-module-qtquick-dialogs qml-module-qtquick-privatewidgets
  qml-module-qtmultimedia qml-module-qtgraphicaleffects qml-module-qt-labs-settings
  qml-module-qt-labs-folderlistmodel qml-module-qtqml qml-module-qtqml-models2)
headless=(xvfb openbox xdotool imagemagick)
test=(wmctrl x11-utils procps ffmpeg openssl mesa-utils valgrind gdb python3-pil python3-numpy
  qtdeclarative5-dev-tools qml-module-qttest clang libclang-rt-14-dev)
bench=(vlc-plugin-video-output)

case ${1:-run} in
  run) wanted=("${build[@]}" "${use[@]}") ;;
  headless) wanted=("${build[@]}" "${use[@]}" "${headless[@]}") ;;
  test) wanted=("${build[@]}" "${use[@]}" "${headless[@]}" "${test[@]}") ;;
  bench) wanted=("${build[@]}" "${use[@]}" "${headless[@]}" "${test[@]}" "${bench[@]}") ;;
  *) echo "usage: tools/setup.sh [run|headless|test|bench]" >&2; exit 2 ;;
esac

if ! command -v apt-get >/dev/null; then
  echo "setup: not a Debian system, install these by hand: ${wanted[*]}" >&2
  exit 0
fi

there=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true)
missing=()
for package in "${wanted[@]}"; do
  grep -qxF "installed $package" <<<"$there" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: as root, run: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "setup: installing ${missing[*]}" >&2
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq
  -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0)
"${apt[@]}" update
"${apt[@]}" install -y --no-install-recommends "${missing[@]}" >&2
