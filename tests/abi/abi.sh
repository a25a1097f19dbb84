#!/usr/bin/env bash
# Holds the binary interface of the shared objects: exported symbols, virtual tables, layouts.
#
#   abi.sh check FOLDER    fails where libHMM.so or libVeskcore.so below the build folder differ
#                          from what is recorded here
#   abi.sh record FOLDER   records what they are now
#
# The build needs debug information (-g). A difference that breaks programs waits for the next major
# version; an addition is recorded with the change that makes it.
set -euo pipefail

action=$1 build=$2
here=$(dirname -- "$(realpath -- "${BASH_SOURCE[0]}")")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

describe() {  # <shared object> <file>
    abidw --suppressions "$here/abi.suppr" --headers-dir "$here/../../src/vesk" \
        --exported-interfaces-only --drop-private-types --no-corpus-path --no-show-locs \
        --no-comp-dir-path --no-parameter-names --no-write-default-sizes --out-file "$2" "$1"
    # Sources by their place in the tree, wherever that lies.
    sed -i "s#path='[^']*/src/#path='src/#" "$2"
    grep -q "<class-decl " "$2" || { echo "$1: has no debug information" >&2; return 1; }
}

for library in vesk/libHMM veskcore/libVeskcore; do
    name=${library##*/}
    describe "$build/src/$library.so" "$scratch/$name.abi"
    case $action in
        record) cp "$scratch/$name.abi" "$here/$name.abi" ;;
        check)
            if ! abidiff --suppressions "$here/abi.suppr" \
                "$here/$name.abi" "$scratch/$name.abi"; then
                echo "$name.so: not the binary interface of $name.abi" >&2
                exit 1
            fi
            echo "$name.so: the binary interface of $name.abi"
            ;;
        *) echo "usage: abi.sh check|record FOLDER" >&2; exit 2 ;;
    esac
done
