#!/usr/bin/env bash
# Compiles every public header alone, twice in a row, without a warning.
#
#   headers.sh COMPILER INCLUDE_DIRS STANDARD HEADER...    INCLUDE_DIRS with colons between them
set -euo pipefail

compiler=$1 standard=$3
IFS=: read -ra dirs <<<"$2"
shift 3
(($# > 0)) || { echo "no headers given"; exit 1; }

failed=0
for header; do
    if ! printf '#include <%s>\n#include <%s>\n' "$header" "$header" |
        "$compiler" -x c++ -std="$standard" -fsyntax-only \
            -Wall -Wextra -Wpedantic -Wshadow -Werror "${dirs[@]/#/-I}" -; then
        echo "not self-contained under $compiler -std=$standard: $header"
        failed=1
    fi
done
if ((failed == 0)); then echo "$# headers compile alone"; fi
exit $failed
