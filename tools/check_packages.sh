#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks the packages that tools/package.sh made: what they hold and depend on, that programs run, and that
# examples/minimal builds against them by CMake and by pkg-config, and draws.
#   tools/check_packages.sh             in a Debian 12 of its own, made for this and dropped afterwards, where mmdebstrap
#                                       (or debootstrap, as root) can make one; else as with --extract
#   tools/check_packages.sh --extract   unpacked beside this system, whose packages stand for those depended on
# The line "clean root" or "extracted" at the end tells which of the two it was. VRK_PACKAGES and VRK_BUILD as for
# tools/package.sh; VRK_CHECK_PICTURES names a folder that keeps the pictures drawn.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
names=(libvrkgl1 libvrkgl-dev vrkgl-viewer)

fail() { echo "check_packages: $*" >&2 && exit 1; }

# run_programs <prefix> <folder for pictures>
run_programs() {
    "$1/bin/vrkview" --builtin --size 320x160 --output "$2/view.png"
    "$1/bin/vrk-deep-pick" --size 320x180 --pick 160,90 --check --output "$2/pick.png"
    "$1/bin/vrk-envmap" --size 32 --samples 16 --format png --sheet "$2/sheet.png" --output "$2/maps" "$2/view.png"
    if env -u DISPLAY -u WAYLAND_DISPLAY "$1/bin/vrkview" --window 2> "$2/window.txt"; then
        fail "vrkview opened a window where there is no display"
    fi
}

# build_minimal <source> <build folder> <folder for pictures>
build_minimal() {
    local way
    mkdir -p "$2/cmake" "$2/pkg-config"
    (cmake -S "$1" -B "$2/cmake" && cmake --build "$2/cmake") > "$2/cmake.txt" 2>&1 || { cat "$2/cmake.txt" && fail "CMake"; }
    # shellcheck disable=SC2046 # one word an option
    c++ -std=c++17 -fPIC "$1/main.cpp" -o "$2/pkg-config/vrkminimal" $(pkg-config --cflags --libs vrkgl egl)
    for way in cmake pkg-config; do
        (cd "$2/$way" || exit && exec ./vrkminimal)
        mv "$2/$way/vrkminimal.png" "$3/minimal-$way.png"
    done
}

# check_pictures <folder>: each picture that was to be drawn is one, of that size, and shows something
check_pictures() {
    python3 - "$1" <<'PYTHON'
import struct, sys, zlib
for name, wanted in (("view", (320, 160)), ("pick", (320, 180)), ("sheet", None), ("minimal-cmake", None),
                     ("minimal-pkg-config", None)):
    data = open(f"{sys.argv[1]}/{name}.png", "rb").read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", f"{name} is no PNG"
    size, at, packed = struct.unpack(">II", data[16:24]), 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        if kind == b"IDAT":
            packed += data[at + 8:at + 8 + length]
        at += length + 12
    rows = zlib.decompress(packed)
    stride = len(rows) // size[1]
    different = len({rows[y * stride:(y + 1) * stride] for y in range(size[1])})
    assert wanted in (None, size), f"{name} is {size}, not {wanted}"
    assert different > size[1] // 4, f"{name} has {different} different rows only"
    print(f"picture {name}: {size[0]}x{size[1]}, {different} different rows")
PYTHON
}

# Within the clean root, as its root: --inside <folder with packages/ minimal/ pictures/>
inside() {
    local folder=$1 files file changed
    export DEBIAN_FRONTEND=noninteractive
    # install <package or path of one...>
    install() {
        apt-get -qq install -y --no-install-recommends "$@" > "$folder/apt.txt" 2>&1 ||
            { cat "$folder/apt.txt" && fail "could not be installed: $*"; }
    }
    apt-get -qq update
    install "$folder"/packages/{libvrkgl1,vrkgl-viewer}_*.deb
    [ ! -e /usr/bin/c++ ] || fail "the root is not clean: it has a compiler"
    ldconfig -p | grep 'libVrkGL.so.1 ' > /dev/null || fail "the loader's cache does not know libVrkGL.so.1"
    # As anybody, not as root.
    chown -R nobody "$folder/pictures"
    setpriv --reuid nobody --clear-groups env HOME=/nonexistent bash "$folder/check_packages.sh" --run /usr "$folder/pictures"

    install "$folder"/packages/libvrkgl-dev_*.deb g++ cmake make pkg-config libegl-dev
    build_minimal "$folder/minimal" "$folder/build" "$folder/pictures"
    pkg-config --atleast-version="$(dpkg-query -W -f='${source:Upstream-Version}' libvrkgl-dev)" vrkgl ||
        fail "pkg-config tells an older version than dpkg"

    mapfile -t files < <(dpkg -L "${names[@]}" | grep -i vrk)
    [ ${#files[@]} -gt 100 ] || fail "${#files[@]} files were installed only"
    changed=$(dpkg --verify "${names[@]}")
    [ -z "$changed" ] || fail "not as they were packed: $changed"
    apt-get -qq purge -y "${names[@]}" > "$folder/apt.txt" 2>&1 || { cat "$folder/apt.txt" && fail "purge"; }
    for file in "${files[@]}"; do [ ! -e "$file" ] || fail "left behind: $file"; done
    echo "Installed, ran, built, and removed in Debian $(cat /etc/debian_version)."
}

# The hook of the clean root: --in-root <root> <packages> <pictures>
in_root() {
    local root=$1 folder=/vrkgl-check
    mkdir -p "$root$folder"/{packages,pictures}
    cp "$2"/*.deb "$root$folder/packages/"
    cp -r "$here/examples/minimal" "$root$folder/minimal"
    cp "$0" "$root$folder/check_packages.sh"
    chroot "$root" env -u DISPLAY -u WAYLAND_DISPLAY PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        TMPDIR=/tmp bash "$folder/check_packages.sh" --inside "$folder"
    cp "$root$folder/pictures"/*.png "$3/"
}

case "${1:-}" in
    --inside | --in-root | --run)
        # Not in a condition, where bash would go on after a failure.
        job=${1#--}
        shift
        case "$job" in inside) inside "$@" ;; in-root) in_root "$@" ;; run) run_programs "$@" ;; esac
        exit
        ;;
    --extract | '') ;;
    *) fail "no such option: $1" ;;
esac

packages=${VRK_PACKAGES:-$here/build/packages}
build=${VRK_BUILD:-$here/build/package}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
pictures=${VRK_CHECK_PICTURES:-$scratch/pictures}
mkdir -p "$pictures"
root=$scratch/extracted

declare -A file_of
for name in "${names[@]}"; do
    found=("$packages/${name}"_*.deb)
    if [ ${#found[@]} -ne 1 ] || [ ! -e "${found[0]}" ]; then
        fail "$packages holds no $name, or more than one: run tools/package.sh"
    fi
    file_of[$name]=${found[0]}
done
field() { dpkg-deb -f "${file_of[$1]}" "$2"; }
holds() { grep -qE "$2" "$scratch/$1.list" || fail "$1 lacks $2"; }

# What they tell of themselves, and what they hold.
version=$(field libvrkgl1 Version)
for name in "${names[@]}"; do
    [ "$(field "$name" Version)" = "$version" ] || fail "$name is of another version than libvrkgl1"
    for key in Maintainer Section Priority Architecture Installed-Size Description Depends; do
        [ -n "$(field "$name" $key)" ] || fail "$name has no field $key"
    done
    [ "$name" = libvrkgl1 ] || [[ "$(field "$name" Depends)" == *"libvrkgl1 (= $version)"* ]] ||
        fail "$name does not depend on just this libvrkgl1"
    dpkg-deb -c "${file_of[$name]}" > "$scratch/$name.long"
    if grep -vE ' root/root ' "$scratch/$name.long" || grep -vE '^(-rw-r--r--|-rwxr-xr-x|drwxr-xr-x|lrwxrwxrwx) ' "$scratch/$name.long"; then
        fail "$name has files of another owner or mode"
    fi
    dpkg-deb --fsys-tarfile "${file_of[$name]}" | tar -t | sed 's|^\./|/|' | grep -v '/$' | sort > "$scratch/$name.list"
    dpkg-deb -x "${file_of[$name]}" "$root"
    holds "$name" "^/usr/share/doc/$name/copyright$"
done
for library in VrkGL VrkCore; do
    holds libvrkgl1 "^/usr/lib/[^/]+/lib$library\.so\.1$"
    holds libvrkgl-dev "^/usr/lib/[^/]+/lib$library\.so$"
    holds libvrkgl-dev "^/usr/include/$library/.*\.h$"
done
holds libvrkgl1 '^/usr/share/vrkgl/GLSL/include/.*\.glslh$'
holds libvrkgl-dev '^/usr/lib/[^/]+/pkgconfig/vrkgl\.pc$'
holds libvrkgl-dev '^/usr/lib/[^/]+/cmake/VrkGL/VrkGLConfig\.cmake$'
for program in vrkview vrk-envmap vrk-deep-pick; do holds vrkgl-viewer "^/usr/bin/$program$"; done
cat "$scratch"/lib*.list "$scratch"/vrkgl-viewer.list | sort > "$scratch/packed"
[ -z "$(uniq -d "$scratch/packed")" ] || fail "in two packages: $(uniq -d "$scratch/packed")"
if [ -e "$build/cmake_install.cmake" ]; then
    # A rule of installation without a component would be in no package.
    DESTDIR=$scratch/all cmake --install "$build" > /dev/null
    (cd "$scratch/all" && find . ! -type d | sed 's|^\.||' | sort) > "$scratch/wanted"
    grep -v '^/usr/share/doc/.*/copyright$' "$scratch/packed" | diff "$scratch/wanted" - ||
        fail "what is installed (<) is not what is packed (>)"
fi
for name in "${names[@]}"; do
    echo "$name $version: $(wc -l < "$scratch/$name.list") files; depends on $(field "$name" Depends)"
done

# The clean root, where one can be made. Whether it can is asked first: a failure in it is a failure.
clean_root() {
    if command -v mmdebstrap > /dev/null; then
        if ! mmdebstrap --variant=minbase --format=null --simulate bookworm > "$scratch/simulate.txt" 2>&1; then
            tail -n 3 "$scratch/simulate.txt"
            echo "mmdebstrap cannot make a Debian 12 here."
            return 0
        fi
        # shellcheck disable=SC2016 # the hook's own argument
        printf '#!/bin/sh\nexec bash "%s" --in-root "$1" "%s" "%s"\n' "$(realpath "$0")" "$packages" "$pictures" > "$scratch/hook"
        chmod 755 "$scratch" "$scratch/hook"
        mmdebstrap --quiet --variant=minbase --format=null --customize-hook="$scratch/hook" bookworm - ||
            fail "the check in the clean root failed"
    elif command -v debootstrap > /dev/null && [ "$(id -u)" -eq 0 ]; then
        if ! debootstrap --variant=minbase bookworm "$scratch/clean" > "$scratch/debootstrap.txt" 2>&1; then
            tail -n 3 "$scratch/debootstrap.txt"
            echo "debootstrap cannot make a Debian 12 here."
            return 0
        fi
        in_root "$scratch/clean" "$packages" "$pictures"
    else
        echo "There is no mmdebstrap (nor debootstrap for root) to make a Debian 12 with."
        return 0
    fi
    clean=yes
}

# Every library that a file needs is in its own package or in one that its package depends on by name.
check_needed() {
    local name file library path owner depends
    for name in libvrkgl1 vrkgl-viewer; do
        depends=$(field "$name" Depends | tr ',|' '\n' | sed -E 's/^ *([^ :]+).*/\1/')
        while read -r file; do
            if [ -L "$root$file" ] || ! readelf -h "$root$file" > /dev/null 2>&1; then continue; fi
            for library in $(LC_ALL=C readelf -d "$root$file" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p'); do
                if grep -qE "/$library$" "$scratch/libvrkgl1.list"; then
                    owner=libvrkgl1
                else
                    path=$(ldconfig -p | awk -v name="$library" '$1 == name && !path { path = $NF } END { print path }')
                    [ -n "$path" ] || fail "$file needs $library, which is nowhere"
                    # A merged /usr: dpkg may know the file by its old path.
                    owner=$({ dpkg -S "$path" || dpkg -S "${path#/usr}" || dpkg -S "/usr$path"; } 2> /dev/null | sed -n '1s/:.*//p')
                fi
                [ "$owner" = "$name" ] || grep -qxF "$owner" <<< "$depends" ||
                    fail "$file needs $library of ${owner:-no package}, on which $name does not depend"
                checked=$((checked + 1))
            done
        done < "$scratch/$name.list"
    done
    [ "$checked" -gt 10 ] || fail "no more than $checked needed libraries were seen"
}

clean=
[ "${1:-}" = --extract ] || clean_root
if [ -z "$clean" ]; then
    checked=0
    check_needed
    echo "$checked needed libraries are in packages depended on."
    lib=$(dirname "$(ls "$root"/usr/lib/*/libVrkGL.so.1)")
    export LD_LIBRARY_PATH=$lib CMAKE_PREFIX_PATH=$root/usr PKG_CONFIG_PATH=$lib/pkgconfig
    run_programs "$root/usr" "$pictures"
    build_minimal "$here/examples/minimal" "$scratch/build" "$pictures"
    grep -qF "VrkGL_DIR:PATH=$lib/cmake/VrkGL" "$scratch/build/cmake/CMakeCache.txt" || fail "another VrkGL was built against"
fi
check_pictures "$pictures"
if [ -n "$clean" ]; then
    echo "OK, clean root: installed by apt in a new Debian 12"
else
    echo "OK, extracted: unpacked beside this system, not installed; run where mmdebstrap is for the whole check"
fi
