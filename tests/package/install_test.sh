#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The Debian package, for real: installs the package XV_TEST_PACKAGE names with apt-get, starts xvelario from
# /usr/bin on a fresh home until its order form is ready, checks that the data folder was made in that home,
# removes the package and checks that its files are gone. Installing needs root, or sudo that asks for no
# password (scripts/test asks for it once before the tests). A package already installed is removed first.
set -euo pipefail

fail() {
    echo "FALLITO: $*" >&2
    exit 1
}

deb=${XV_TEST_PACKAGE:-}
[ -n "$deb" ] || fail "XV_TEST_PACKAGE non è impostato: deve nominare il pacchetto .deb da provare" \
    "(scripts/test lo crea con scripts/package e lo imposta)"
[ -f "$deb" ] || fail "XV_TEST_PACKAGE=$deb: il file non esiste"
deb=$(realpath "$deb")

if [ "$(id -u)" -eq 0 ]; then
    as_root() { "$@"; }
elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
    as_root() { sudo -n "$@"; }
else
    fail "installare il pacchetto richiede root: eseguire il test da root o con sudo senza richiesta di password"
fi
# Another apt-get or dpkg at work (an automatic update) is waited for, not taken for a failure.
apt() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -y -q -o DPkg::Lock::Timeout=120 "$@"; }
installed() { dpkg-query -W -f='${Status}' xvelario 2>/dev/null | grep -q "install ok installed"; }

work=$(mktemp -d /tmp/xv-package-test.XXXXXX)
home=$work/home
mkdir "$home"
we_installed=""
cleanup() {
    # A test that stops half-way leaves no package behind.
    if [ -n "$we_installed" ] && installed; then
        apt remove xvelario >/dev/null 2>&1 || true
    fi
    rm -rf "$work"
}
trap cleanup EXIT

# The files the package puts on the machine and takes away again.
files=(/usr/bin/xvelario /usr/bin/xvelario-makedb /usr/share/applications/xvelario.desktop
    /usr/share/icons/hicolor/scalable/apps/xvelario.svg /usr/share/metainfo/it.xvelario.xvelario.metainfo.xml
    /usr/share/doc/xvelario/copyright)

if installed; then
    echo "== xvelario $(dpkg-query -W -f='${Version}' xvelario) è già installato: lo rimuovo per provare $deb"
    apt remove xvelario >"$work/apt-remove-before.log" 2>&1 \
        || { cat "$work/apt-remove-before.log" >&2; fail "apt-get remove del pacchetto già installato"; }
fi

echo "== apt-get install $deb"
we_installed=1
apt install "$deb" >"$work/apt-install.log" 2>&1 || { cat "$work/apt-install.log" >&2; fail "apt-get install $deb"; }
installed || { cat "$work/apt-install.log" >&2; fail "dopo apt-get install, dpkg non dà xvelario come installato"; }
for file in "${files[@]}"; do
    [ -e "$file" ] || fail "il pacchetto installato non ha $file"
done
[ -x /usr/bin/xvelario ] || fail "/usr/bin/xvelario non è eseguibile"

echo "== xvelario sulla home nuova $home"
# Only the fresh home decides where the data goes: no folder or database named by the environment.
status=0
(cd "$home" && env -u XDG_DATA_HOME -u XDG_CONFIG_HOME -u XDG_CACHE_HOME -u XVELARIO_DATA -u XVELARIO_DB \
    -u XVELARIO_OPEN_ORDER -u XVELARIO_SEARCH HOME="$home" QT_QPA_PLATFORM=offscreen XVELARIO_EXIT_WHEN_READY=1 \
    timeout 180 /usr/bin/xvelario) >"$work/xvelario.out" 2>"$work/xvelario.err" || status=$?
if [ "$status" -ne 0 ] || ! grep -q '^xVELARIO ready;' "$work/xvelario.err"; then
    cat "$work/xvelario.out" "$work/xvelario.err" >&2
    fail "/usr/bin/xvelario non ha segnalato la maschera pronta (uscita $status)"
fi
grep '^xVELARIO ready;' "$work/xvelario.err"
data=$home/.local/share/xVELARIO
[ -d "$data" ] || fail "la cartella dei dati $data non è stata creata"
[ -s "$data/xvelario.db" ] || fail "il database $data/xvelario.db non è stato creato"
echo "== cartella dei dati creata: $(ls "$data" | tr '\n' ' ')"

/usr/bin/xvelario-makedb --help >"$work/makedb.out" 2>&1 \
    || { cat "$work/makedb.out" >&2; fail "/usr/bin/xvelario-makedb --help"; }

echo "== apt-get remove xvelario"
apt remove xvelario >"$work/apt-remove.log" 2>&1 || { cat "$work/apt-remove.log" >&2; fail "apt-get remove xvelario"; }
installed && fail "dopo apt-get remove, dpkg dà ancora xvelario come installato"
we_installed=""
for file in "${files[@]}"; do
    [ ! -e "$file" ] || fail "dopo apt-get remove $file c'è ancora"
done
echo "== OK: installato, avviato fino alla maschera pronta e rimosso"
