#!/usr/bin/env bash
# The share of tests counts code alone, and blocks only a tree that has grown.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

rm -r "$tree/scripts"
mkdir -p "$tree/scripts" "$tree/Core/src" "$tree/Core/include" "$tree/Tests/Core"
cp "$source_tree/scripts/count" "$source_tree/scripts/lib.sh" "$tree/scripts"
scripts=$(cat "$tree/scripts/count" "$tree/scripts/lib.sh" | grep -cvE '^\s*(#|$)')

# lines FILE COUNT: a source with so many lines of code, and as many of comment and blank ones.
lines() {
    awk -v count="$2" 'BEGIN {
        for (i = 0; i < count; i++) print "  code();  // c\n\n    // comment\n/* a\n  b\n*/"
    }' >"$tree/$1"
}

lines Core/src/A.cpp $((2800 - scripts))
lines Tests/Core/ATest.cpp 100
run "$tree/scripts/count" --check
expect_success 'a small tree with few tests'
expect_output 'Test code: 100 of 2900 lines, 3 %'

for share in 20:fail 25:pass 33:pass 40:fail; do
    lines Core/src/A.cpp $((100 * (100 - ${share%:*}) - scripts))
    lines Tests/Core/ATest.cpp $((100 * ${share%:*}))
    run "$tree/scripts/count" --check
    expect_output "Test code: ${share%:*}00 of 10000 lines, ${share%:*} %"
    case $share in
        *pass) expect_success "a share of $share" ;;
        *) expect_failure "a share of $share" ;;
    esac
done
