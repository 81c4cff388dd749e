#!/bin/sh
# Builds the command line and walks through a real catalog: opens it, lists it, reads it, queries it, finds a row in it,
# and edits and saves a copy.
set -eu
cd "$(dirname "$0")/.."

scripts/bootstrap.sh build
cmake --preset release -B build/demo -DQUILLET_BUILD_TESTS=OFF -DQUILLET_BUILD_BENCH=OFF >/dev/null
cmake --build build/demo --target quillet

quillet=build/demo/bin/quillet
catalog=examples/catalogs/european-steel.xml
copy=build/demo/my-catalog.xml

step() {
    printf '\n$ quillet'
    for word in "$@"; do
        case $word in
            *' '*) printf ' "%s"' "$word" ;;
            *) printf ' %s' "$word" ;;
        esac
    done
    printf '\n'
    "$quillet" "$@"
}

step info "$catalog"
step fields "$catalog" IPE
step show "$catalog" IPE --limit 5
step query "$catalog" "select name, h, A from HEA where h < 200 and Wply > 200"
step find "$catalog" IPE "h >= 300"

cp "$catalog" "$copy"
printf '\nA copy to edit: %s\n' "$copy"
step set "$copy" properties material=S355
step rename "$copy" SHS "Hollow sections"
step export "$copy" "Hollow sections" build/demo/hollow.csv --replace
step import "$copy" Profiles build/demo/hollow.csv
step drop "$copy" UPE
step info "$copy"
step check "$copy"
