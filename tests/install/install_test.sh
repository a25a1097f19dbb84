#!/usr/bin/env bash
# Installs a build, moves what was installed, and uses it from outside.
#
#   install_test.sh TEST SOURCE BUILD SCRATCH COMPILER KIT [ARGUMENT]
#
# TEST is one of the functions below; SCRATCH a folder that the tests share; KIT is ON where the
# build holds the kit and the program.
set -euo pipefail

test_name=$1 source=$2 build=$3 scratch=$4 compiler=$5 kit=$6 argument=${7-}
here=$source/tests/install
prefix=$scratch/moved

fail() {
    echo "$*" >&2
    exit 1
}

expect_no_lines() {  # <what they are> <lines>
    [[ -z $2 ]] || fail "$1:"$'\n'"$2"
}

configure() {  # <source> <build> <option>...
    rm -rf "$2"
    cmake -S "$1" -B "$2" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=None "${@:3}"
}

build_and_test() {  # <build>
    cmake --build "$1"
    ctest --test-dir "$1" --output-on-failure --no-tests=error
}

# The tree that the other tests use. Its first place is gone when they do.
tree() {
    rm -rf "$scratch"
    cmake --install "$build" --prefix "$scratch/first" >/dev/null
    mv "$scratch/first" "$prefix"
    find "$prefix" | sort

    expect_no_lines "internal headers were installed" "$(find "$prefix" -name internal)"
    expect_no_lines "machine paths in installed files" \
        "$(grep -rlIF -e "$build" -e "$source" -e "$scratch" "$prefix" || true)"
    local name
    for name in libHMM.so libVeskcore.so; do
        [[ -L $(find "$prefix" -name $name) ]] || fail "no link $name"
    done
}

# What a program needs to run, and nothing for developers.
runtime() {
    rm -rf "$scratch/runtime"
    cmake --install "$build" --prefix "$scratch/runtime" --component runtime >/dev/null
    expect_no_lines "not for running" "$(find "$scratch/runtime" ! -type d |
        grep -vE '/(libHMM|libVeskcore)\.so\.1(\.[0-9]+\.[0-9]+)?$' || true)"
    [[ -e $(find "$scratch/runtime" -name libHMM.so.1) ]] || fail "no libHMM.so.1"
    [[ -e $(find "$scratch/runtime" -name libVeskcore.so.1) ]] || fail "no libVeskcore.so.1"
    if [[ $kit == ON ]]; then
        cmake --install "$build" --prefix "$scratch/runtime" --component tools >/dev/null
        (cd / && env -u LD_LIBRARY_PATH "$scratch/runtime/bin/vesk" --version)
        [[ -s $scratch/runtime/share/man/man1/vesk-train.1 ]] || fail "no manual page"
        [[ -s $scratch/runtime/share/bash-completion/completions/vesk ]] || fail "no completion"
    fi
}

# find_package, at the language level given.
package() {
    local dir=$scratch/package-$argument-${compiler##*/} config
    config=$(dirname "$(find "$prefix" -name VeskHMMConfig.cmake)")
    configure "$here/package" "$dir" -DSTANDARD="$argument" -DKIT="$kit" \
        -DCMAKE_PREFIX_PATH="$prefix" \
        -DPREFIX_FROM_PACKAGE="$(realpath --relative-to="$config" "$prefix")"
    build_and_test "$dir"
    if [[ $kit == ON ]]; then
        # Without the kit's own dependencies the library is still there.
        configure "$here/package" "$dir-alone" -DSTANDARD="$argument" -DKIT=OFF \
            -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_DISABLE_FIND_PACKAGE_fmt=TRUE \
            -DCMAKE_DISABLE_FIND_PACKAGE_pugixml=TRUE \
            -DPREFIX_FROM_PACKAGE="$(realpath --relative-to="$config" "$prefix")"
    fi
}

# The project's version is written once; everything that tells one has it from there.
versions() {
    local version major
    version=$(sed -nE 's/^ *VERSION ([0-9.]+)$/\1/p' "$source/CMakeLists.txt")
    major=${version%%.*}
    agree() {  # <what> <its version> [<expected>]
        [[ $2 == "${3-$version}" ]] || fail "$1 says '$2', the project is ${3-$version}"
        echo "$1: $2"
    }
    local header=$prefix/include/vesk/Version.h libdir name
    libdir=$(dirname "$(find "$prefix" -name libHMM.so)")
    agree "VESK_VERSION" "$(sed -n 's/^#define VESK_VERSION "\(.*\)"$/\1/p' "$header")"
    agree "VESK_VERSION_MAJOR and so on" \
        "$(sed -nE 's/^#define VESK_VERSION_[MP][A-Z]+ ([0-9]+)$/\1/p' "$header" | paste -sd.)"
    agree "the CMake package" "$(sed -n 's/^set(PACKAGE_VERSION "\(.*\)")$/\1/p' \
        "$libdir/cmake/VeskHMM/VeskHMMConfigVersion.cmake")"
    for name in "$libdir"/pkgconfig/*.pc; do
        agree "${name##*/}" "$(sed -n 's/^Version: //p' "$name")"
    done
    for name in libHMM libVeskcore; do
        agree "$name.so" "$(basename "$(realpath "$libdir/$name.so")" | sed "s/^$name.so.//")"
        agree "the soname of $name" "$(readelf --dynamic "$libdir/$name.so" |
            sed -nE 's/.*\(SONAME\).*\[.*\.so\.(.*)\]/\1/p')" "$major"
    done
    if [[ $kit == ON ]]; then
        agree "vesk --version" "$("$prefix/bin/vesk" --version | sed 's/^vesk //')"
        for name in "$prefix"/share/man/man1/*; do
            agree "${name##*/}" "$(sed -n 's/^\.TH .* "vesk \([^"]*\)".*/\1/p' "$name")"
        done
    fi
    agree "CHANGELOG.md" "$(sed -nE '0,/^## /s/^## ([0-9.]+).*/\1/p' "$source/CHANGELOG.md")"
}

# A version that the package does not have is refused.
package_version() {
    mkdir -p "$scratch/version"
    printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(Host LANGUAGES CXX)' \
        'find_package(VeskHMM 2.0 QUIET)' 'if(VeskHMM_FOUND)' \
        'message(FATAL_ERROR "found")' 'endif()' >"$scratch/version/CMakeLists.txt"
    configure "$scratch/version" "$scratch/version/build" -DCMAKE_PREFIX_PATH="$prefix"
}

# A plain compiler call with what pkg-config says, at the language level given.
pkg_config() {
    local libdir version program=$scratch/pkg-config-$argument-${compiler##*/}
    libdir=$(dirname "$(find "$prefix" -name 'libHMM.so')")
    export PKG_CONFIG_PATH=$libdir/pkgconfig
    version=$(pkg-config --modversion vesk-hmm)
    local -a cflags libs
    read -ra cflags <<<"$(pkg-config --cflags vesk-hmm)"
    read -ra libs <<<"$(pkg-config --libs vesk-hmm)"
    "$compiler" -std=c++"$argument" -Wall -Wextra -Wpedantic -Werror "${cflags[@]}" \
        "$here/library.cpp" "${libs[@]}" -o "$program"
    LD_LIBRARY_PATH=$libdir "$program" "$version"
    if [[ $kit == ON ]]; then
        read -ra cflags <<<"$(pkg-config --cflags vesk-kit)"
        read -ra libs <<<"$(pkg-config --libs vesk-kit)"
        "$compiler" -std=c++"$argument" -Wall -Wextra -Wpedantic -Werror "${cflags[@]}" \
            "$here/kit.cpp" "${libs[@]}" -o "$program-kit"
        LD_LIBRARY_PATH=$libdir "$program-kit" "$version"
    fi
}

# The sources inside another project: no tests, no settings, no installed files come with them.
subdirectory() {
    local dir=$scratch/subdirectory installed
    configure "$here/subproject" "$dir" -DVESK_SOURCE="$source"
    build_and_test "$dir"
    ctest --test-dir "$dir" --show-only | grep -q '^Total Tests: 1$' || fail "tests came along"
    cmake --install "$dir" --prefix "$dir/installed" >/dev/null
    installed=$(find "$dir/installed" ! -type d 2>/dev/null || true)
    expect_no_lines "files came along" "$installed"
}

fetch_content() {
    configure "$here/subproject" "$scratch/fetch-content" -DVESK_SOURCE="$source" -DFETCH_CONTENT=ON
}

# Sources inside another project are optimised where it leaves that open, and built as it says else.
subproject_build_type() {
    local dir=$scratch/build-type
    local -a taken=("$here/subproject" "$dir" -DVESK_SOURCE="$source"
        -DCMAKE_EXPORT_COMPILE_COMMANDS=ON)
    compiled() {  # <with this option> <not with this one>
        local -a ours
        mapfile -t ours < <(grep '"command".*/src/vesk' "$dir/compile_commands.json")
        echo "${#ours[@]} sources, expected with $1, without $2"
        ((${#ours[@]} > 30)) || fail "${#ours[@]} of the library's sources in compile_commands.json"
        expect_no_lines "without $1" "$(printf '%s\n' "${ours[@]}" | grep -vF -e " $1 " || true)"
        expect_no_lines "with $2" "$(printf '%s\n' "${ours[@]}" | grep -F -e " $2 " || true)"
    }
    local way
    for way in OFF ON; do
        configure "${taken[@]}" -DFETCH_CONTENT=$way -DCMAKE_BUILD_TYPE=
        compiled -O3 -g
        configure "${taken[@]}" -DFETCH_CONTENT=$way -DCMAKE_BUILD_TYPE=Debug
        compiled -g -O3
        configure "${taken[@]}" -DFETCH_CONTENT=$way -DCMAKE_BUILD_TYPE=MinSizeRel
        compiled -Os -O3
    done
}

# The two shared objects from nothing but a compiler; a build without tests needs no test library.
without_dependencies() {
    local -a absent=(-DCMAKE_DISABLE_FIND_PACKAGE_{GTest,rapidcheck,Python3,fmt,pugixml}=TRUE)
    absent+=(-DCMAKE_DISABLE_FIND_PACKAGE_{nlohmann_json,CLI11}=TRUE)
    configure "$source" "$scratch/alone" -DBUILD_TESTING=OFF -DVESK_BUILD_KIT=OFF \
        -DVESK_BUILD_TOOLS=OFF "${absent[@]}"
    cmake --build "$scratch/alone"
    cmake --install "$scratch/alone" --prefix "$scratch/alone/installed" >/dev/null
    local libdir
    libdir=$(dirname "$(find "$scratch/alone/installed" -name libHMM.so)")
    "$compiler" -std=c++17 -I"$scratch/alone/installed/include" "$here/library.cpp" -L"$libdir" \
        -lHMM -lVeskcore -o "$scratch/alone/host"
    LD_LIBRARY_PATH=$libdir "$scratch/alone/host"
    if [[ $kit == ON ]]; then
        configure "$source" "$scratch/untested" -DBUILD_TESTING=OFF "${absent[@]:0:3}"
    fi
}

# The Debian packages: made, looked at by lintian, unpacked into an empty root, and run there.
packages() {
    local dir=$scratch/packages root=$scratch/root package depends
    rm -rf "$dir" "$root"
    cpack --config "$build/CPackConfig.cmake" -B "$dir"
    local expected=(libvesk-hmm1 libvesk-hmm-dev libvesk-hmm-doc vesk-tools)
    if [[ -d $build/python ]]; then expected+=(python3-vesk); fi
    for package in "${expected[@]}"; do
        compgen -G "$dir/${package}_*.deb" >/dev/null || fail "no package $package"
    done
    for package in "$dir"/*.deb; do
        echo "$(stat --format '%n, %s bytes' "$package"), needs $(dpkg-deb --field "$package" Depends)"
    done
    lintian --allow-root --fail-on error "$dir"/*.deb
    # What shlibdeps found, and what the packages say of one another.
    depends=$(dpkg-deb --field "$dir"/vesk-tools_*.deb Depends)
    for package in libvesk-hmm1 libc6 libstdc++6; do
        [[ $depends == *"$package ("* ]] || fail "vesk-tools does not depend on $package: $depends"
    done

    mkdir -p "$root/var/lib/dpkg"/{info,updates}
    touch "$root/var/lib/dpkg/status"
    if ((EUID == 0)); then
        dpkg --root="$root" --log=/dev/null --force-depends --unpack "$dir"/*.deb
    else
        for package in "$dir"/*.deb; do dpkg-deb --extract "$package" "$root"; done
    fi
    for package in "${expected[@]}"; do
        grep -q 'No licence has been chosen' "$root/usr/share/doc/$package/copyright"
    done
    if command -v doxygen >/dev/null; then
        grep -q LeftRightHMM "$root/usr/share/doc/vesk-hmm/reference/html/annotated.html"
    fi
    cd "$scratch"
    LD_LIBRARY_PATH=$(dirname "$(find "$root/usr/lib" -name libHMM.so.1)")
    export LD_LIBRARY_PATH
    ldd "$root/usr/bin/vesk" | grep -F "$root" | grep -c . | grep -qx 2
    "$root/usr/bin/vesk" generate -o traces.jsonl --users 3 --repetitions 3
    "$root/usr/bin/vesk" train traces.jsonl -o gestures.model --no-calibration --discrimination 0
    "$root/usr/bin/vesk" recognize -m gestures.model traces.jsonl --table
    "$root/usr/bin/vesk" --version
    if [[ -d $build/python ]]; then
        PYTHONPATH=$root/usr/lib/python3/dist-packages /usr/bin/python3 -c '
import vesk
traces = vesk.read_traces("traces.jsonl")
model = vesk.GestureClassifier.load("gestures.model")
print(f"{model.score(traces.X, traces.y):.2f} from {vesk.__file__}")'
    fi
}

# Packages of a build for /usr have their libraries where Debian has those of the architecture, and
# the files for CMake and pkg-config beside them lead there.
multiarch() {
    local dir=$scratch/multiarch root=$scratch/multiarch-root triplet libdir
    triplet=$(dpkg-architecture --query DEB_HOST_MULTIARCH)
    cmake -S "$source" -B "$scratch/alone" -DCMAKE_INSTALL_PREFIX=/usr
    cmake --build "$scratch/alone"
    rm -rf "$dir" "$root"
    cpack --config "$scratch/alone/CPackConfig.cmake" -B "$dir" \
        -D "CPACK_COMPONENTS_ALL=runtime;development"
    lintian --allow-root --fail-on error "$dir"/*.deb
    for package in "$dir"/*.deb; do dpkg-deb --extract "$package" "$root"; done
    expect_no_lines "libraries in another place" \
        "$(find "$root/usr/lib" -mindepth 1 -maxdepth 1 ! -name "$triplet")"
    libdir=$root/usr/lib/$triplet
    PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --libs vesk-hmm
    [[ $(realpath "$(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --variable=libdir vesk-hmm)") == \
        "$libdir" ]] || fail "pkg-config leads elsewhere"
    configure "$here/package" "$dir-host" -DSTANDARD=17 -DKIT=OFF -DCMAKE_PREFIX_PATH="$root/usr" \
        -DPREFIX_FROM_PACKAGE=../../../..
    build_and_test "$dir-host"
}

declare -F "$test_name" >/dev/null || fail "no such test: $test_name"
"$test_name"
