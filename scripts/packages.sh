# What the project needs of Debian, and its installation. Sourced by demo and check.

PACKAGES_BUILD="g++ cmake ninja-build pkg-config"
PACKAGES_TOOL="libcli11-dev nlohmann-json3-dev libpng-dev libcairo2-dev fonts-dejavu-core"
PACKAGES_CHECK="libgtest-dev python3 binutils"
PACKAGES_PHOTOGRAPHS="mate-backgrounds python3-skimage imagemagick"
PACKAGES_DEMOSAICERS="python3-opencv python3-numpy python3-pil gstreamer1.0-tools gstreamer1.0-plugins-bad"
PACKAGES_GSTREAMER="libgstreamer-plugins-base1.0-dev gstreamer1.0-tools valgrind"
PACKAGES_PYTHON="python3-dev python3-numpy python3-pil python3-pip python3-pytest python3-setuptools python3-wheel pybind11-dev mypy"
PACKAGES_WASM="clang-19 lld-19 wasi-libc"
PACKAGES_DEBS="debootstrap dpkg-dev lintian"
PACKAGES_PAGE="chromium"
PACKAGES_REFERENCE="doxygen"
PACKAGES_FOREIGN="g++-aarch64-linux-gnu g++-riscv64-linux-gnu qemu-user googletest"
PACKAGES_CLANG="clang llvm-14 libclang-rt-14-dev clang-format-14 clang-tidy-14"
PACKAGES_KERNEL="g++-mingw-w64-x86-64-win32 clang-19 lld-19 llvm-19 wine wine64 osslsigncode openssl"

# What the two sizes of check need besides; what lacks one is left out, with a line that says so.
PACKAGES_QUICK="$PACKAGES_GSTREAMER $PACKAGES_KERNEL ffmpeg bsdutils man-db groff-base"
PACKAGES_FULL="$PACKAGES_PYTHON $PACKAGES_CLANG $PACKAGES_FOREIGN $PACKAGES_WASM $PACKAGES_PAGE $PACKAGES_REFERENCE $PACKAGES_DEBS"
# Commands that may have come by other ways than Debian's packages, and the packages that bring them.
COMMANDS_FULL="node:nodejs npm:npm"

# The packages of the list that are not installed.
missing_packages() {
  local package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -c 'ok installed' >/dev/null || echo "$package"
  done
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    echo "== that needs root, and there is no sudo" >&2
    return 1
  fi
}

# Another installation that is under way is waited for, and a mirror that does not answer is asked again.
apt_get() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=900 -o Acquire::Retries=3 "$@"
}

# Once; where a list can't be had, what the others name may still do.
packages_updated=no
update_lists() {
  [ $packages_updated = no ] || return 0
  local try
  for try in 1 2 3; do
    if apt_get update; then break; fi
    sleep $((5 * try))
  done
  packages_updated=yes
}

try_install() {
  command -v apt-get >/dev/null || return 1
  update_lists
  apt_get install -y --no-install-recommends "$@" >/dev/null && return
  # Lists may have grown old between two calls, and what they name may be gone.
  packages_updated=no
  update_lists
  apt_get install -y --no-install-recommends "$@" >/dev/null
}

# Installs what is missing; ends the script with a plain line where that can't be done.
install_packages() {
  local wanted
  wanted=$(missing_packages "$@" | xargs)
  [ -n "$wanted" ] || return 0
  echo "== installing $wanted"
  if ! try_install $wanted; then
    echo "These Debian packages are needed and could not be installed: $wanted" >&2
    exit 1
  fi
}

# The same for what a machine may lack: one at a time, with a line for each that is not to be had.
install_optional_packages() {
  local package
  for package in $(missing_packages "$@"); do
    echo "== installing $package"
    try_install "$package" || echo "== $package can't be installed here; what needs it is left out"
  done
}

# node and npm, from Debian where the commands are missing.
install_node() {
  command -v node >/dev/null && command -v npm >/dev/null || install_optional_packages nodejs npm
}

# COMMAND:PACKAGE...: the packages of those commands that are missing.
install_commands() {
  local pair
  for pair in "$@"; do
    command -v "${pair%%:*}" > /dev/null || install_optional_packages "${pair#*:}"
  done
}
