# Sourced by run.sh and test.sh: installs the Debian packages that are missing and builds the release preset.

OSTREL_PACKAGES="g++ cmake ninja-build qtbase5-dev qttools5-dev qttools5-dev-tools qttranslations5-l10n
    libbenchmark-dev libqwt-qt5-dev fontconfig"

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"
    elif command -v sudo >/dev/null; then sudo "$@"
    else echo "Please run as root: $*" >&2; return 1
    fi
}

missing_packages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || echo "$package"
    done
}

install_packages() {
    local missing
    missing=$(missing_packages "$@")
    [ -z "$missing" ] && return 0
    command -v apt-get >/dev/null || { echo "Not a Debian system; please install: $missing" >&2; return 1; }
    echo "Installing:" $missing
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
}

prepare() {
    install_packages $OSTREL_PACKAGES
    # The interface is Chinese as well: some font must have its characters.
    [ -n "$(fc-list :lang=zh-cn family)" ] || install_packages fonts-wqy-microhei
}

build() { # preset [target]
    cmake --preset "$1" >/dev/null
    cmake --build --preset "$1" ${2:+--target "$2"}
}
