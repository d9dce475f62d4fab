# Debian packages, and how they come onto the machine. Sourced by ./dev.

build_packages=(
    g++ cmake ninja-build ccache
    qt6-base-dev libqt6svg6 qt6-svg-dev libxcb1-dev libx11-dev nlohmann-json3-dev libicu-dev
    libgtest-dev
)
test_packages=(
    xvfb dbus openbox xdotool x11-utils xclip trayer xfce4-panel lxqt-panel
    qt6-wayland sway weston grim at-spi2-core desktop-file-utils imagemagick
    python3 python3-dbus python3-gi python3-xlib libglib2.0-bin git
    fonts-dejavu-core
)
bench_packages=(
    python3 python3-dbus python3-gi xvfb dbus openbox xdotool x11-utils xfce4-panel lxqt-panel
    flameshot copyq keepassxc
    s6 daemontools runit supervisor
    lnav
)
package_packages=(librsvg2-bin dpkg-dev file git)
check_packages=(
    clang-14 libclang-rt-14-dev clang-format-14 clang-tidy-14
    desktop-file-utils appstream mandoc lintian mmdebstrap uidmap git
    valgrind
)
fuzz_packages=(clang-14 libclang-rt-14-dev python3)
coverage_packages=(clang-14 libclang-rt-14-dev llvm-14 python3)

# A desktop in miniature for machines without one: display, window manager, panel with a tray.
desktop_packages=(xvfb xauth dbus openbox xfce4-panel imagemagick fonts-dejavu-core)

is_installed() {
    [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs those of the packages that are missing; asks for nothing when none is.
install_packages() {
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Installing: ${missing[*]}"
    local root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "./dev: please install as root: apt-get install ${missing[*]}" >&2
            exit 1
        }
        root=(sudo)
    fi
    "${root[@]}" apt-get -qq update
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq --yes --no-install-recommends install "${missing[@]}" >/dev/null
}
