# SPDX-License-Identifier: Apache-2.0
# Sourced by the scripts that deal with the architectures veskar is shipped for.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

declare -A triplets=(
  [amd64]=x86_64-linux-gnu
  [arm64]=aarch64-linux-gnu
  [armhf]=arm-linux-gnueabihf
)
declare -A emulators=([amd64]=x86_64 [arm64]=aarch64 [armhf]=arm)

# The Debian release of this machine, so that the compilers and the libraries fit, and where this
# machine gets it from.
release() { (. /etc/os-release && echo "$VERSION_CODENAME"); }
mirror() {
  apt-get indextargets --format '$(SITE)' \
    "Codename: $(release)" 'Component: main' 'Origin: Debian' 'Identifier: Packages' | head -n 1
}

# What g++ needs to build against a root: its C and C++ libraries, of this machine's version.
compiler_packages() {
  local version
  version=$("${triplets[$1]}-g++" -dumpversion)
  echo "libc6-dev,libstdc++-${version%%.*}-dev"
}

# extract_root ARCHITECTURE DIRECTORY PACKAGES [SOURCE...]: unpacks packages (comma-separated) and
# all they depend on, from the machine's own mirror and more apt sources. Nothing is configured, so
# no program of that architecture has to run. The packages' files stay in var/cache/apt/archives.
extract_root() {
  local architecture=$1 directory=$2 packages=$3
  shift 3
  [ -n "$(mirror)" ] || as_root apt-get update -q
  rm -rf "$directory"
  mkdir -p "$directory"
  as_root mmdebstrap --quiet --mode=root --variant=extract --architectures="$architecture" \
    --include="$packages" --skip=cleanup/apt --format=tar \
    "$(release)" - "deb $(mirror) $(release) main" "$@" |
    tar -x -C "$directory" --no-same-owner --exclude='./dev/*'
}

# emulate ARCHITECTURE PROGRAM ARGUMENT...: runs a program that was built with the preset of that
# architecture.
emulate() {
  local architecture=$1
  shift
  "qemu-${emulators[$architecture]}" -L "build/sysroot/$architecture" "$@"
}

# The preset that builds what is shipped for an architecture: this machine's own compiler when it is
# of that architecture.
preset_of() {
  if [ "$1" = "$(dpkg --print-architecture)" ]; then
    echo release
  else
    echo "$1"
  fi
}
