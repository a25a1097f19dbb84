#!/usr/bin/env bash
# Manual pages and completion say what the program's help says.
#
#   pages_test.sh VESK PAGES
set -euo pipefail

vesk=$1 pages=$2

fail() {
    echo "$*" >&2
    exit 1
}

names_in_page() {  # <page>: options and arguments as a user sees them
    sed -e 's/\\f[BIR]//g' -e 's/\\-/-/g' -e 's/\\&//g' "$1"
}

mapfile -t commands < <("$vesk" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z]*\) .*/\1/p')
((${#commands[@]} >= 10)) || fail "found ${#commands[@]} subcommands in the help"
(($(find "$pages" -name '*.1' | wc -l) == ${#commands[@]} + 1)) || fail "a page too many or too few"

options=0
for command in "${commands[@]}"; do
    page=$pages/vesk-$command.1
    grep -qxF "\\fB$command\\fR" "$pages/vesk.1" || fail "vesk.1 does not name $command"
    text=$(names_in_page "$page")
    while read -r name; do
        grep -qE "^(.*, )?$name( |,|\$)" <<<"$text" || fail "$page does not name $name"
        options=$((options + 1))
    done < <("$vesk" "$command" --help | sed -nE 's/^  ((-.,)?--[a-z-]+|[A-Z]{2,}).*/\1/p' | tr , '\n')
done
echo "${#commands[@]} subcommands, $options options and arguments"

if type -P groff >/dev/null; then
    for page in "$pages"/*.1; do
        complaints=$(groff -ww -man -z "$page" 2>&1)
        [[ -z $complaints ]] || fail "$complaints"
    done
fi

# shellcheck source=/dev/null
source "$pages/vesk.bash"
complete -p vesk >/dev/null

offers() {  # <expected words> <typed word>...: what stands for the last of them
    COMP_WORDS=("${@:2}") COMP_CWORD=$(($# - 2)) COMPREPLY=()
    _vesk
    [[ "${COMPREPLY[*]}" == "$1" ]] || fail "${*:2}: offers '${COMPREPLY[*]}', expected '$1'"
}

offers "train tune" vesk t
offers "${commands[*]} --version --help" vesk ""
offers "csv jsonl xml" vesk train --format ""
offers "jsonl" vesk train --format = j
offers "none" vesk recognize traces.jsonl --resample n
offers "--table" vesk recognize --tab
offers "" vesk train --symbols ""
offers "" vesk generate ""

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
touch "two words.jsonl" traces.jsonl
offers "traces.jsonl two words.jsonl" vesk train t
offers "traces.jsonl" vesk recognize -m tr
echo "completed"
