#!/usr/bin/env bash
# Installs the Debian packages this project needs, and only those that are missing.
#
#   scripts/install-packages.sh build     what building and running the workbench needs
#   scripts/install-packages.sh bench     the same, and what the benchmarks need
#   scripts/install-packages.sh test      the same, and what the test suite needs
#   scripts/install-packages.sh fuzz      what building and running the fuzzers needs
#   scripts/install-packages.sh lint      what building and the static analysis need
#   scripts/install-packages.sh coverage  what the test suite and its coverage report need
#
# Works as root or with sudo. Says what it installs; prints nothing when everything is there.
set -euo pipefail

build_packages=(
  build-essential
  ca-certificates
  cmake
  libgeographiclib-dev
  libqt5sql5-sqlite
  libqt5svg5-dev
  ninja-build
  pkg-config
  qtbase5-dev
  qtdeclarative5-dev
  qttools5-dev
  qttools5-dev-tools
  fonts-dejavu-core
)
bench_packages=(
  libbenchmark-dev
  libboost1.74-dev
)
test_packages=(
  binutils
  clang-format
  openbox
  xdotool
  xvfb
)
fuzz_packages=(
  clang
  libclang-rt-14-dev
)
lint_packages=(
  clang-tidy
  clazy
  python3
)
coverage_packages=(
  gcovr
)

packages=("${build_packages[@]}")
case "${1:-build}" in
  build) ;;
  bench) packages+=("${bench_packages[@]}") ;;
  test) packages+=("${bench_packages[@]}" "${test_packages[@]}") ;;
  fuzz) packages+=("${fuzz_packages[@]}") ;;
  lint) packages+=("${bench_packages[@]}" "${lint_packages[@]}") ;;
  coverage) packages+=("${bench_packages[@]}" "${test_packages[@]}" "${coverage_packages[@]}") ;;
  *)
    echo "usage: $0 [build|bench|test|fuzz|lint|coverage]" >&2
    exit 2
    ;;
esac

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$status" = installed ] || missing+=("$package")
done
[ "${#missing[@]}" -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "Missing packages: ${missing[*]}. Install them as root, or install sudo." >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
