# SPDX-License-Identifier: Apache-2.0
# Sourced by the scripts: changes to the root of the tree and builds presets.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '\n== %s\n' "$*"; }

# Runs a command that installs something.
as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    echo "needs root, or sudo: $*" >&2
    return 1
  fi
}

# part_missing PRESET PART: prints why its program lacks an optional part; nothing when it has it.
part_missing() { sed -n "s/^VESKAR_$2_MISSING:INTERNAL=//p" "build/$1/CMakeCache.txt"; }

# page_missing PRESET: prints why its program has no page for the report; nothing when it has one.
page_missing() { part_missing "$1" REPORT; }

# Makes later builds use a compiler cache, if there is one.
use_compiler_cache() {
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
  fi
}

# configure PRESET: configures it once; builds reconfigure it when needed.
configure() {
  local preset=$1
  use_compiler_cache
  [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" >"/tmp/veskar-configure.$$" 2>&1 ||
    { cat "/tmp/veskar-configure.$$"; rm -f "/tmp/veskar-configure.$$"; return 1; }
  rm -f "/tmp/veskar-configure.$$"
}

# build PRESET [TARGET...]: configures and builds a preset; fast when nothing has changed.
build() {
  local preset=$1
  shift
  configure "$preset"
  if [ $# -gt 0 ]; then
    cmake --build --preset "$preset" --target "$@"
  else
    cmake --build --preset "$preset"
  fi
}
