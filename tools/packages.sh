# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
#
# The Debian packages that the project uses, by what needs them, and the way they are installed.
# Sourced by ./run, ./test, .ci/check and tests/coverage/coverage.

build_packages=(g++ cmake ninja-build libboost-dev nlohmann-json3-dev libcli11-dev libudev-dev)
test_packages=(libgtest-dev libgmock-dev librapidcheck-dev pkgconf python3 python3-jsonschema
  python3-prometheus-client python3-html5lib dmidecode valgrind jq man-db mandoc)
browser_packages=(chromium-headless-shell poppler-utils)
fleet_packages=(prometheus prometheus-alertmanager prometheus-node-exporter systemd strace)
bench_packages=(valgrind python3 dpkg-dev)
packaging_packages=(dpkg-dev debhelper lintian debootstrap autopkgtest)
vm_packages=(qemu-system-x86 busybox-static openipmi libopenipmi-dev ipmitool)
sanitizer_packages=(clang libclang-rt-dev)
check_packages=(clang-format clang-tidy)
coverage_packages=(acl clang-19 libclang-rt-19-dev llvm-19)

# install_missing PACKAGE...: installs those that are not there, and says so before it does. Returns
# 1 with one line on standard error when that cannot be done, which who may can run. Nothing goes to
# standard output.
install_missing() {
  local package missing=() as_root=()
  for package in "$@"; do
    dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed ||
      missing+=("$package")
  done
  ((${#missing[@]})) || return 0

  if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
      echo "${0##*/}: packages are missing; let someone who is root run:" \
        "apt-get install --no-install-recommends ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "${0##*/}: installing with apt-get: ${missing[*]}" >&2
  "${as_root[@]}" apt-get -qq update >&2 || true # a stale list may do; the next line tells
  if ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -qq -o Dpkg::Use-Pty=0 install -y --no-install-recommends "${missing[@]}" >&2; then
    echo "${0##*/}: apt-get could not install: ${missing[*]}" >&2
    return 1
  fi
}

# own_tree FOLDER: a build folder that came along with a copied or moved checkout still means the
# old place, so it is made anew.
own_tree() {
  local cache=$1/CMakeCache.txt
  [[ ! -e $cache ]] || grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$(realpath "$(dirname "$1")")" "$cache" ||
    rm -rf "$1"
}
