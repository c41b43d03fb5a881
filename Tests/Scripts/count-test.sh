#!/usr/bin/env bash
# The share of tests counts lines that are not blank, and blocks only a tree that has grown.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

rm -r "$tree/scripts"
mkdir -p "$tree/scripts" "$tree/Core/src" "$tree/Core/include" "$tree/Tests/Core"
cp "$source_tree/scripts/count" "$source_tree/scripts/lib.sh" "$tree/scripts"
scripts=$(cat "$tree/scripts/count" "$tree/scripts/lib.sh" | grep -cvE '^\s*$|^#!')

# lines FILE COUNT: a source with so many lines, in each ten six of code and four of comment, and
# blank ones besides.
lines() {
    awk -v count="$2" 'BEGIN {
        for (i = 0; i < count; i += 10) {
            for (j = 0; j < 6; j++) print "  code();  // c\n"
            print "    // comment\n/* a\n  b\n*/"
        }
    }' >"$tree/$1"
}

lines Core/src/A.cpp 2700
lines Tests/Core/ATest.cpp 100
run sh "$tree/scripts/count" --check  # by whatever shell that is
expect_success 'a small tree with few tests'
expect_output "Tests: 100 of $((2800 + scripts)) lines, "
lines=$(awk '$1 == "Core" { print $3, $4 }' <<<"$output")
[[ $lines == '1620 1080' ]] || fail 'code and comment should be told apart'

for share in 20:fail 25:pass 33:pass 40:fail; do
    lines Core/src/A.cpp $((1000 * (100 - ${share%:*})))
    lines Tests/Core/ATest.cpp $((1000 * ${share%:*}))
    run "$tree/scripts/count" --check
    expect_output "lines, ${share%:*} %"
    case $share in
        *pass) expect_success "a share of $share" ;;
        *) expect_failure "a share of $share" ;;
    esac
done
