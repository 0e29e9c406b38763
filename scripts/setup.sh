# Shared by ./play, ./check and bench/run: packages, builds, a word a step.
#
# Sourced with bash from the repository's root. Everything comes from Debian's own
# packages; what is installed already is left alone.

export DEBIAN_FRONTEND=noninteractive

# Whoever plays waits for these: what only makes shows, and what only tests, is not among them.
player_packages="cmake ninja-build g++ libsdl1.2-dev libgl-dev libglew-dev libstb-dev zlib1g-dev"
tool_packages="libegl-dev libegl1 libspng-dev libdeflate-dev nlohmann-json3-dev fonts-dejavu-core liblua5.4-dev libassimp-dev libfreetype-dev libglu1-mesa-dev"
preview_packages="libsdl2-dev libimgui-dev"
x86_packages="g++-multilib libsdl1.2debian:i386 libglew2.2:i386 libgl1:i386 libgl1-mesa-dri:i386 zlib1g:i386"
display_packages="xvfb xdotool imagemagick libgl1-mesa-dri"
test_packages="python3 doctest-dev ffmpeg graphviz assimp-testmodels fonts-dejavu fonts-liberation fonts-urw-base35"
bench_packages="libbenchmark-dev libopencv-core-dev libopencv-imgproc-dev libpugixml-dev libpng-dev libswscale-dev"

say() { printf '== %s\n' "$*"; }
fail() { printf 'Sorry: %s\n' "$*" >&2; exit 1; }

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; elif command -v sudo >/dev/null; then sudo -E "$@"; else return 1; fi
}

# The packages of the list that are not installed.
missing_packages() {
    local package name
    for package in "$@"; do
        name=${package%%:*}
        case $package in
        *:*) dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || echo "$package" ;;
        *) dpkg-query -W -f='${db:Status-Status}\n' "$name" 2>/dev/null | grep -qx installed || echo "$package" ;;
        esac
    done
}

update_once() {
    [ -z "${updated:-}" ] || return 0
    updated=1
    # An archive that is out of step must not stop the others: installing tells.
    as_root apt-get -q update >build/apt.log 2>&1 || true
}

try_install() {
    as_root apt-get -q -y --no-install-recommends "$@" >>build/apt.log 2>&1
}

# Both architectures must get the same versions of what they share. Where the
# security archive offers an update for one of them only, these tries leave it out:
# first for what is yet to come, then for shared libraries that are there already.
install_without_security() {
    local preferences status
    preferences=$(mktemp)
    printf 'Package: *\nPin: release l=Debian-Security\nPin-Priority: -1\n' >"$preferences"
    chmod 644 "$preferences"
    try_install -o "Dir::Etc::Preferences=$preferences" install "$@"
    status=$?
    if [ $status != 0 ]; then
        printf '\nPackage: *\nPin: release l=Debian\nPin-Priority: 1001\n' >>"$preferences"
        try_install -o "Dir::Etc::Preferences=$preferences" --allow-downgrades install "$@"
        status=$?
    fi
    rm -f "$preferences"
    return $status
}

# Installs what is missing of the list; fails when something cannot be had.
need() {
    local missing
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    command -v apt-get >/dev/null || return 1
    say "installing" $missing
    mkdir -p build
    case $missing in
    *:i386*)
        if ! dpkg --print-foreign-architectures | grep -qx i386; then
            as_root dpkg --add-architecture i386 || return 1
            updated=
        fi
        ;;
    esac
    update_once
    # shellcheck disable=SC2086
    try_install install $missing || install_without_security $missing
}

# Configures a preset and brings targets up to date:
#     build_preset PRESET ON|OFF(tests) [TARGET ...]
# A build folder that is there already and may hold more is left as it is.
build_preset() {
    local preset=$1 tests=$2
    shift 2
    mkdir -p build
    if [ ! -e "build/$preset/build.ninja" ] || [ "$tests" = ON ]; then
        say "configuring the $preset build"
        cmake --preset "$preset" -D BRIMLOW_TESTS="$tests" -D BRIMLOW_PREVIEW="$tests" >"build/$preset.log" 2>&1 \
            || { tail -n 30 "build/$preset.log"; return 1; }
    fi
    say "building ($preset)"
    ninja -C "build/$preset" "$@" >"build/$preset.log" 2>&1 || { tail -n 60 "build/$preset.log"; return 1; }
}
