# SPDX-License-Identifier: MIT
# Shared by scripts/run and scripts/test: installs what is missing from Debian's packages.

XV_BUILD_PACKAGES=(build-essential cmake ninja-build pkg-config qt6-base-dev qt6-base-dev-tools
    libqt6sql6-sqlite libqt6sql6-psql libsqlite3-dev libpq-dev libcurl4-openssl-dev)
XV_TEST_PACKAGES=(libgtest-dev libgmock-dev libbenchmark-dev postgresql locales
    poppler-utils python3-aiosmtpd python3-cryptography cups printer-driver-cups-pdf)
# scripts/package: CPack's DEB generator finds the programs with file and their libraries with dpkg-shlibdeps
# (dpkg-dev); the package and its desktop files are checked with the three validators.
XV_PACKAGE_PACKAGES=(dpkg-dev file lintian desktop-file-utils appstream)

xv_as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        echo "Servono i permessi di root per: $*" >&2
        return 1
    fi
}

# xv_ensure_packages PKG...: installs the packages that dpkg does not know as installed.
xv_ensure_packages() {
    local missing=() pkg
    for pkg in "$@"; do
        if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
            missing+=("$pkg")
        fi
    done
    if [ ${#missing[@]} -gt 0 ]; then
        echo "== Installo i pacchetti mancanti: ${missing[*]}"
        xv_as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
        xv_as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
    fi
}

# The suite runs with an Italian locale; make sure the system knows it.
xv_ensure_italian_locale() {
    if ! locale -a 2>/dev/null | grep -qi '^it_IT\.utf-\?8$'; then
        xv_as_root sed -i 's/^# *\(it_IT.UTF-8 UTF-8\)/\1/' /etc/locale.gen
        grep -q '^it_IT.UTF-8 UTF-8' /etc/locale.gen || echo 'it_IT.UTF-8 UTF-8' | xv_as_root tee -a /etc/locale.gen >/dev/null
        xv_as_root locale-gen >/dev/null
    fi
}

# xv_build DIR TYPE [cmake options...]
xv_build() {
    local dir=$1 type=$2
    shift 2
    local launcher=()
    # A compiler cache, where the machine has one, makes a rebuild after a small change quick.
    command -v ccache >/dev/null 2>&1 && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cmake -S "$XV_ROOT" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="$type" "${launcher[@]}" "$@" >/dev/null
    cmake --build "$dir" --parallel "$(nproc)"
}
