#!/usr/bin/env bash
# A script that has a usage tells it when asked, and refuses what it does not know before any work.
#
#   scripts.sh SCRIPT...
set -euo pipefail

fail() {
    echo "$*" >&2
    exit 1
}

for script; do
    for option in -h --help; do
        said=$(timeout 20 "$script" $option) || fail "$script $option: status $?"
        [[ $said == usage:\ scripts/${script##*/}* ]] || fail "$script $option: '$said'"
    done
    status=0
    said=$(timeout 20 "$script" --no-such-option 2>&1 >/dev/null) || status=$?
    [[ $status == 2 ]] || fail "$script: status $status for an unknown option"
    [[ $said == *usage:\ scripts/${script##*/}* ]] || fail "$script: '$said' for an unknown option"
done
echo "$# scripts"
