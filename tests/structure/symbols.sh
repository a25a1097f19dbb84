#!/usr/bin/env bash
# Checks what a shared object exports and needs.
#
#   symbols.sh exports LIBRARY LIST    its dynamic symbols are exactly those listed
#   symbols.sh needs LIBRARY NAME [NEEDED...]
#                                      its soname is NAME; it needs all of NEEDED, and beyond them
#                                      only the standard library
#   symbols.sh no-fma LIBRARY [FUNCTIONS]
#                                      no fused multiply-add, which rounds once where two roundings
#                                      are promised; but in the functions whose names match, which
#                                      divide by them exactly
#   symbols.sh hardened FILE           tables of the linker are read-only once the program runs, and
#                                      the stack is guarded
set -euo pipefail
export LC_ALL=C

check=$1
library=$2
[[ -e $library ]] || { echo "no such library: $library"; exit 1; }
dynamic=$(readelf --dynamic --wide "$library")

entries() {  # <tag>: the names of the dynamic section's entries with that tag
    sed -nE "s/.*\($1\).*\[(.*)\]/\1/p" <<<"$dynamic"
}

case $check in
    exports)
        exported=$(nm --dynamic --demangle --defined-only "$library" |
            sed -E 's/^[0-9a-f]+ [A-Za-z] //; s/@.*//' | sort -u)
        listed=$(grep -v '^#' "$3" | sort -u)
        if ! diff -u --label "$3" --label "$library" <(echo "$listed") <(echo "$exported"); then
            echo "exported and listed names differ; a name that is gone breaks programs"
            exit 1
        fi
        foreign=$(grep -vE '^((typeinfo|typeinfo name|vtable) for )?Vesk::' <<<"$exported" || true)
        hidden=$(grep -F 'internal::' <<<"$exported" || true)
        if [[ -n $foreign$hidden ]]; then
            printf 'not to be exported:\n%s\n%s\n' "$foreign" "$hidden"
            exit 1
        fi
        echo "$(wc -l <<<"$exported") exported names, as listed"
        ;;
    needs)
        soname=$(entries SONAME)
        [[ $soname == "$3" ]] || { echo "soname is '$soname', not '$3'"; exit 1; }
        needed=$(entries NEEDED)
        for name in "${@:4}"; do
            grep -qxF "$name" <<<"$needed" || { echo "does not need $name"; exit 1; }
            needed=$(grep -vxF "$name" <<<"$needed" || true)
        done
        standard='^(libstdc\+\+|libm|libgcc_s|libc|ld-linux-[a-z0-9-]+)\.so\.[0-9]+$'
        other=$(grep -vE "$standard" <<<"$needed" || true)
        [[ -z $other ]] || { echo "needs beyond the standard library: $other"; exit 1; }
        echo "$soname needs ${*:4} and the standard library"
        ;;
    no-fma)
        arithmetic='[ \t](v?(add|sub|mul|div)[sp]d|f(add|sub|mul|div))[ \t]'
        fused='[ \t](vfn?m(add|sub)(add|sub)?[0-9]+[a-z]+|fn?m(add|sub)|fml[as])[ \t]|<fmaf?@'
        objdump --disassemble --demangle --no-show-raw-insn "$library" |
            awk -v arithmetic="$arithmetic" -v fused="$fused" -v allowed="${3:-^$}" '
                /^[0-9a-f]+ <.*>:$/ { name = $0; exact = name ~ allowed }
                $0 ~ arithmetic { some = 1 }
                $0 ~ fused && !exact { print name; print; wrong = 1 }
                END {
                    if (!some) print "no arithmetic found"
                    if (wrong) print "fused multiply-add found"
                    exit wrong || !some
                }'
        echo "no fused multiply-add"
        ;;
    hardened)
        grep -qE 'FLAGS.*(BIND_NOW|NOW)' <<<"$dynamic" || { echo "binds lazily"; exit 1; }
        headers=$(readelf --program-headers --wide "$library")
        grep -q GNU_RELRO <<<"$headers" || { echo "tables stay writable"; exit 1; }
        if grep -qE 'GNU_STACK.*RWE' <<<"$headers"; then echo "the stack is executable"; exit 1; fi
        undefined=$(nm --dynamic --undefined-only "$library")
        grep -q __stack_chk_fail <<<"$undefined" || { echo "no guard on the stack"; exit 1; }
        echo "hardened"
        ;;
    *)
        echo "no such check: $check"
        exit 2
        ;;
esac
