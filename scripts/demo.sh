#!/usr/bin/env bash
# Installs what is missing, builds the example host and runs it on two real data sets.
#
# usage: demo.sh            shows the demo
#        demo.sh --check    compares it with examples/data/demo.golden
#        demo.sh --update   writes that file anew
set -euo pipefail
# shellcheck source=scripts/steps.sh
source "$(dirname "${BASH_SOURCE[0]}")/steps.sh"

readonly golden=examples/data/demo.golden
readonly penguins=examples/data/penguins.csv
readonly weather=examples/data/seattle-weather.csv
readonly program=examples/data/weather.vtl
# Where what the demo writes stands.
readonly written=build/demo
# What is shown of long output.
shown_lines=12
readonly shown_columns=100

# run_host EXPLANATION ARGUMENT...: says what comes, the command and the beginning of its output. A
# check sum stands for the rest, so that a comparison sees the whole.
run_host() {
    local explanation=$1 output word
    shift
    output=$(build/release/examples/host/lumhost "$@") || fail "failed: lumhost $*"
    printf '\n# %s\n' "$explanation"
    printf '$ lumhost'
    for word in "$@"; do
        case $word in
            *[!A-Za-z0-9/=._-]*) printf ' "%s"' "$word" ;;
            *) printf ' %s' "$word" ;;
        esac
    done
    printf '\n'
    [ -n "$output" ] || return 0
    head -n "$shown_lines" <<<"$output" | cut -c "1-$shown_columns"
    if [ "$(wc -l <<<"$output")" -gt "$shown_lines" ] ||
        [ "$(wc -L <<<"$output")" -gt "$shown_columns" ]; then
        printf '... cut; the whole has %d characters and the SHA-256 %.16s\n' "${#output}" \
            "$(sha256sum <<<"$output")"
    fi
}

demo() {
    run_host "344 penguins: the type of every column is inferred from the whole file." \
        types "$penguins"
    run_host "One column, addressed by key path. The fourth penguin was not weighed: a Null cell." \
        show "$penguins" "'Body Mass (g)'"
    run_host "The whole store as JSON, each key with its type." \
        show "$penguins"
    run_host "1,461 days of weather, with dates." \
        types "$weather"
    run_host "As people look at a table." \
        show "$weather" --table / --rows 5
    run_host "What the file says is not always what is wanted: --type overrules the inference." \
        types "$weather" --type precipitation=f --type date=s
    run_host "The form for web pages: compact, without types." \
        show "$weather" --slim
    run_host "Functions are found by name and types; their special forms have rules for Null." \
        functions sqrt
    run_host "A function of two columns: the range of each day's temperature." \
        apply - "$weather" temp_max temp_min
    run_host "The square roots of the masses. What was not weighed stays Null." \
        apply sqrt "$penguins" "Body Mass (g)"
    run_host "Which days had rain or snow? The function is made from a set of two members." \
        apply isInSet "$weather" weather --constant rain --constant snow
    run_host "The sum of all masses, with nothing as its initial value." \
        fold sum "$penguins" "Body Mass (g)" --initial Null
    run_host "The highest temperature up to each day." \
        fold max "$weather" temp_max --initial Null --scan
    run_host "A program in Vtl, as it is understood: monthly means, extremes, counts, a running sum." \
        check "$program"
    run_host "It runs over the columns; statements that do not depend on each other run at once." \
        run "$program" "$weather" --type date=t --print mean --print difference --print verdict \
        --print hottest --print coldest --print missing --print hotDayCount --print hottestDates
    run_host "Tables of one program: by groups, joined, as rows of two texts, and by key." \
        run examples/data/penguins.vtl "$penguins" --print colonies --print kinds --print meanOf \
        --print compared --print ratio --print firstShares
    run_host "The sum of the rain up to each day." \
        run "$program" "$weather" --type date=t --print rainSoFar
    run_host "The binary form: what was text becomes columns that need no reading any more." \
        convert "$weather" "$written/weather.lum" --type date=t
    run_host "The same program over it. The file is mapped, and its numbers are used in place. The
# store goes on as a payload, with all that the program made." \
        run "$program" "$written/weather.lum" --out "$written/results.lum" --print hottest \
        --print difference --print hottestDates
    run_host "The next hop finds a key map of the means," \
        show "$written/results.lum" mean
    run_host "and a table, which it hands on as comma-separated text." \
        convert "$written/results.lum" "$written/days.csv" days
    run_host "Every form reads back." \
        show "$written/days.csv" --table / --rows 3
    # One column, since the order of several in a payload is nobody's promise.
    cut -d , -f 6 "$penguins" | head -n 6 >"$written/masses.csv"
    run_host "Five penguins as a payload," \
        convert "$written/masses.csv" "$written/masses.lum"
    shown_lines=40 run_host "byte by byte." \
        dump "$written/masses.lum"
}

case ${1:-} in
    '' | --check | --update) ;;
    *) fail "unknown argument '$1'; usage: demo.sh [--check|--update]" ;;
esac

mkdir -p "$written"
./scripts/install-dependencies.sh build
# A folder that is configured already keeps its tests; a fresh one is spared their packages.
if [ -f build/release/build.ninja ]; then
    configure_release -DLUM_BUILD_EXAMPLES=ON
else
    configure_release -DLUM_BUILD_EXAMPLES=ON -DLUM_BUILD_TESTS=OFF
fi
build_release "Building the library and the example host (some minutes the first time)" lumhost
case ${1:-} in
    '') demo ;;
    --update)
        demo >"$logs/demo.txt"
        cp "$logs/demo.txt" "$golden"
        echo "Wrote $golden"
        ;;
    --check)
        demo >"$logs/demo.txt"
        diff -u "$golden" "$logs/demo.txt" || fail "the demo's output is not that of $golden"
        echo "The demo's output is as expected"
        ;;
esac
