# SPDX-License-Identifier: Apache-2.0
# Sourced by the scripts that deal with the shipped architectures.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

declare -A triplets=(
  [amd64]=x86_64-linux-gnu
  [arm64]=aarch64-linux-gnu
  [armhf]=arm-linux-gnueabihf
)
declare -A emulators=([amd64]=x86_64 [arm64]=aarch64 [armhf]=arm)

# The Debian release of this machine, so that compilers and libraries match, and its package mirror.
release() { (. /etc/os-release && echo "$VERSION_CODENAME"); }
mirror() {
  apt-get indextargets --format '$(SITE)' \
    "Codename: $(release)" 'Component: main' 'Origin: Debian' 'Identifier: Packages' | head -n 1
}

# The packages that g++ needs in a sysroot: C and C++ libraries of this machine's version.
compiler_packages() {
  local version
  version=$("${triplets[$1]}-g++" -dumpversion)
  echo "libc6-dev,libstdc++-${version%%.*}-dev"
}

# debian_root OPTION...: makes a root of Debian; a mirror that breaks off is asked again. Says what it
# did only when it fails.
debian_root() {
  local log status=0
  log=$(mktemp)
  as_root mmdebstrap --mode=root --aptopt='Acquire::Retries "5"' "$@" 2>"$log" || status=$?
  [ "$status" = 0 ] || cat "$log" >&2
  rm "$log"
  return "$status"
}

# unpack_root DIRECTORY: unpacks the root on standard input, without devices. Reads to the end: behind
# the archive comes padding, and who writes it must not find the pipe closed.
unpack_root() { tar -x -C "$1" --no-same-owner --exclude='./dev/*' && cat >/dev/null; }

# extract_root ARCHITECTURE DIRECTORY PACKAGES [SOURCE...]: unpacks packages (comma-separated) with
# all their dependencies, from the machine's mirror and further apt sources. Nothing is configured,
# so that no program of that architecture has to run. The package files stay in
# var/cache/apt/archives.
extract_root() {
  local architecture=$1 directory=$2 packages=$3
  shift 3
  [ -n "$(mirror)" ] || as_root apt-get update -q
  rm -rf "$directory"
  mkdir -p "$directory"
  debian_root --variant=extract --architectures="$architecture" --include="$packages" \
    --skip=cleanup/apt --format=tar \
    "$(release)" - "deb $(mirror) $(release) main" "$@" |
    unpack_root "$directory"
}

# emulate ARCHITECTURE PROGRAM ARGUMENT...: runs a program built with the preset of that
# architecture.
emulate() {
  local architecture=$1
  shift
  "qemu-${emulators[$architecture]}" -L "build/sysroot/$architecture" "$@"
}

# preset_of ARCHITECTURE: the preset of the shipped build; native if it is this machine's
# architecture.
preset_of() {
  if [ "$1" = "$(dpkg --print-architecture)" ]; then
    echo release
  else
    echo "$1"
  fi
}
