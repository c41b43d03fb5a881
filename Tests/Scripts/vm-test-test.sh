#!/usr/bin/env bash
# shellcheck disable=SC2016 # What stands in single quotes is for somebody else to expand.
# scripts/vm-test gives CTest what came out of the machine, and is red when a case fails, when the
# machine does not get to it, when it does not come up or does not end, and when there is no case.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

stand_in dpkg-query 'shift 2; for p; do echo "$p installed"; done'
stand_in cmake 'exit 0'
stand_in strip 'cp "$4" "$3"'
stand_in ldd 'exit 0'
stand_in cpio 'cat >/dev/null'
export XDG_CACHE_HOME=$tree/cache
kernel=$XDG_CACHE_HOME/tessara-vm/hid+hid-generic+uhid+uinput+evdev/linux-image-1
mkdir -p "$kernel" "$tree/build/dev/Tests/Kernel" "$tree/build/dev/Programs/tessara-headless"
touch "$kernel/vmlinuz" "$kernel/modules" "$tree/build/dev/Programs/tessara-headless/tessara-headless"

# tests LINE...: what the test program lists. machine OUTPUT: what the machine prints.
tests() {
    printf '#!/bin/bash\nprintf "%%s\\n" %s\n' "$(printf '%q ' "$@")" >"$tree/build/dev/Tests/Kernel/KernelTests"
    chmod +x "$tree/build/dev/Tests/Kernel/KernelTests"
}
machine() {
    stand_in qemu-system-x86_64 "printf '$1' >build/vm/output; touch build/vm/console; ${2:-exit 0}"
    run "$tree/scripts/vm-test"
}
one='case: 1\nfine\nended: 1 0\n'

tests 'Mouse.' '  moves' '  DISABLED_flies' 'All/Mouse.' '  clicks/0  # GetParam() = 0'
machine "machine: up\n${one}case: 2\nended: 2 0\n"
expect_success 'with good cases'
expect_output '100% tests passed, 0 tests failed out of 2'

machine "machine: up\n${one}case: 2\nfound 3 clicks\nended: 2 1\n"
expect_failure 'with a failing case'
expect_output '1 tests failed out of 2'
expect_output 'Kernel.All/Mouse.clicks/0 (Failed)'
grep -q 'found 3 clicks' "$tree/build/logs/vm-test.log" || fail 'what a case prints should be shown'

machine "machine: up\n${one}case: 2\n"
expect_failure 'with a machine that ends in a case'
expect_output 'Kernel.All/Mouse.clicks/0 (Failed)'

machine "machine: up\n${one}case: 2\nended: 2 0\n" 'exit 124'
expect_failure 'with a machine that does not end'
expect_output 'the machine did not turn itself off'

machine "$one"
expect_failure 'with a machine that does not come up'
expect_output 'the machine did not come up'

tests 'Mouse.' '  DISABLED_flies'
machine 'machine: up\n'
expect_failure 'without cases'
expect_one_error_line 'no kernel test has a name like'
