# Shared by the scripts of this directory and by .ci/run: installing Debian packages, building, timing steps.
# To be sourced by bash; leaves the caller in the project's top directory.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

buildPackages=(g++ cmake ninja-build)
scenePackages=(pkg-config libcairo2-dev fonts-dejavu-core)
toolPackages=("${scenePackages[@]}" libcli11-dev nlohmann-json3-dev libavformat-dev libavcodec-dev libavfilter-dev
  libavutil-dev)
testPackages=(libgtest-dev parallel)
gstreamerPackages=(pkg-config libgstreamer-plugins-base1.0-dev gstreamer1.0-plugins-base gstreamer1.0-plugins-good
  gstreamer1.0-plugins-ugly gstreamer1.0-libav gstreamer1.0-tools)
pythonPackages=(python3-dev pybind11-dev python3-numpy python3-pytest)
clangPackages=(clang libclang-rt-dev llvm)
lintPackages=(clang-format clang-tidy git python3)
emulationPackages=(libsimde-dev)
crossPackages=(googletest qemu-user g++-aarch64-linux-gnu g++-s390x-linux-gnu)
benchPackages=("${scenePackages[@]}" libbenchmark-dev valgrind)
measurePackages=(python3-numpy)
docsPackages=(doxygen doxygen-awesome-css python3)
packagingPackages=(debhelper dh-python dpkg-dev git lintian mmdebstrap)
abiPackages=(abigail-tools binutils)
pipePackages=(ffmpeg dbus pipewire wireplumber gstreamer1.0-pipewire)
obsPackages=(pkg-config libobs-dev libx11-dev xvfb xauth)
peerPackages=(pkg-config libswscale-dev libavfilter-dev libpostproc-dev libzimg-dev libyuv-dev
  libgstreamer-plugins-base1.0-dev)

# Options of cmake for the library and its tests alone.
withoutHosts=(-DVIDPROC_BUILD_TOOL=OFF -DVIDPROC_BUILD_BENCH=OFF -DVIDPROC_BUILD_GSTREAMER=OFF -DVIDPROC_BUILD_OBS=OFF
  -DVIDPROC_BUILD_PYTHON=OFF)

# The denoiser's default settings, which scripts/demo shows and docs/before-after.jpg is made with, and without it.
denoised=()
scaledAlone=(--denoise off)
measuredFrames=32

Say() { printf '%s\n' "$*"; }

Fail() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}

# InstallPackages NAME...: installs the Debian packages that are missing; uses sudo only when not root.
InstallPackages() {
  local package missing=() asRoot=()
  for package in "$@"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  Say "Installing Debian packages: ${missing[*]}"
  if ((EUID != 0)); then
    command -v sudo >/dev/null || Fail "not root and no sudo here; as root: apt-get install ${missing[*]}"
    Say "(sudo may ask for your password)"
    asRoot=(sudo)
  fi
  # Another package manager's locks are waited for: apt-get has an option for one of the two.
  AptUpdate "${asRoot[@]}"
  Quietly "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 install -y \
    --no-install-recommends "${missing[@]}"
}

# AptUpdate [sudo]: refreshes the package lists; tries again for ten minutes while somebody else holds their lock.
AptUpdate() {
  local log status end=$((SECONDS + 600))
  log=$(mktemp)
  while true; do
    status=0
    LC_ALL=C "$@" apt-get update </dev/null 2>&1 | Watch 3>&1 >"$log" || status=$?
    ((status && SECONDS < end)) && grep -q 'Could not get lock' "$log" || break
    Say "    waiting for another package manager to finish"
    sleep 10
  done
  ((status == 0)) || tail -n 20 "$log" >&2
  rm -f "$log"
  return "$status"
}

# Quietly COMMAND...: runs it without input and shows its output only when it fails; what a build leaves out, always, and
# every 15 seconds how far it has come.
Quietly() {
  local log status=0
  log=$(mktemp)
  "$@" </dev/null 2>&1 | Watch 3>&1 >"$log" || status=$?
  sed -n 's/^-- \(Left out\)/    \1/p' "$log"
  if ((status)); then
    tail -n 60 "$log" >&2
    Say "failed: $*" >&2
  fi
  rm -f "$log"
  return "$status"
}

# Watch: copies its input to its output, and says on descriptor 3 every 15 seconds what the last line was.
Watch() {
  local line last='' end=0 begin=$SECONDS told=$SECONDS
  while ((end == 0 || end > 128)); do  # above 128: nothing came for a second
    end=0
    IFS= read -r -t 1 line || end=$?
    printf '%s' "$line"
    ((end)) || printf '\n'
    [[ -z $line ]] || last=$line
    ((SECONDS - told >= 15)) || continue
    told=$SECONDS
    printf '    %4d s  %.100s\n' $((SECONDS - begin)) "$last" >&3
  done
  [[ -z $line ]] || printf '\n'
}

# ListRows: the names in the array `rows`, whose entries are "NAME|...".
ListRows() { printf '%s\n' "${rows[@]%%|*}"; }

# CheckRows NAME...: that they stand there.
CheckRows() {
  local name
  for name in "$@"; do
    ListRows | grep -Fqx -- "$name" || Fail "$name: not a row; see --list"
  done
}

# IsAsked NAME ASKED...: whether a row is to run; all are where none is asked for.
IsAsked() { (($# == 1)) || [[ " ${*:2} " == *" $1 "* ]]; }

# Configure DIRECTORY OPTION...: configures with the options of cmake, a preset's among them. A directory that somebody
# has configured keeps its generator.
Configure() {
  local directory=$1 generator=Ninja
  shift
  [[ ! -f $directory/CMakeCache.txt ]] ||
    generator=$(sed -n 's/^CMAKE_GENERATOR:INTERNAL=//p' "$directory/CMakeCache.txt")
  Quietly cmake -S . -B "$directory" -G "$generator" "$@"
}

# Build DIRECTORY TARGET OPTION...: configures with the options and builds one target.
Build() {
  local directory=$1 target=$2
  shift 2
  Configure "$directory" "$@" && Quietly cmake --build "$directory" --target "$target" --parallel "$(nproc)"
}

# RunNamedTests FILTER PROGRAM [WRAPPER...]: the tests of the program that the filter names, of which there has to be
# one. The wrapper's words go before the program.
RunNamedTests() {
  local filter=$1 program=$2
  shift 2
  "$@" "$program" --gtest_list_tests "--gtest_filter=$filter" | grep '^  ' >/dev/null || {
    Say "$program has no tests by the name of $filter" >&2
    return 1
  }
  "$@" "$program" --gtest_brief=1 "--gtest_filter=$filter"
}

# Step TITLE COMMAND...: runs one announced step, prints how long it took and notes it in stepSummary. COMMAND must not
# rely on `set -e`.
stepSummary=()
Step() {
  local title=$1 begin=$SECONDS
  shift
  Say "==> $title"
  "$@" || Fail "$title: failed after $((SECONDS - begin)) s"
  stepSummary+=("$(printf '%4d s  %s' $((SECONDS - begin)) "$title")")
  Say "    done in $((SECONDS - begin)) s"
}

# MeasureNoise DIRECTORY SIZE INPUT...: measures luma's noise in the input, scaled to SIZE, and denoised as well; for
# the synthetic scene also PSNR against what it is without noise. The numbers go to DIRECTORY/noise.
MeasureNoise() {
  local work=$1 size=$2 input frames=(--frames $((measuredFrames + 8))) clean=()
  shift 2
  input=("$@" "${frames[@]}")
  build/vidproc post "${input[@]}" -o "$work/before.y4m" &&
    build/vidproc pre "${input[@]}" --size "$size" "${scaledAlone[@]}" -o "$work/scaled.y4m" &&
    build/vidproc pre "${input[@]}" --size "$size" "${denoised[@]}" -o "$work/denoised.y4m" || return 1
  if [[ $1 == --synthetic ]]; then
    build/vidproc pre "${input[@]}" --synthetic-noise 0 --size "$size" "${scaledAlone[@]}" -o "$work/clean.y4m" ||
      return 1
    clean=(--clean "$work/clean.y4m")
  fi
  /usr/bin/python3 scripts/measure_noise.py "${clean[@]}" "$work"/{before,scaled,denoised}.y4m >"$work/noise"
}
