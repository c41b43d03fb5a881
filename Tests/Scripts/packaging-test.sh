#!/usr/bin/env bash
# The udev rule says what it should in words that udev knows, and tessara-grant-access puts it into
# place once.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

packaging=$source_tree/Packaging
rules=$packaging/udev/70-tessara.rules
grant=$packaging/tessara-grant-access

# expect WHAT COMMAND...: COMMAND succeeds.
expect() {
    local what=$1
    shift
    run "$@"
    expect_success "$what"
}

# Its tag is acted on in 73-seat-late.rules.
first=$(printf '%s\n' 73-seat-late.rules "${rules##*/}" | LC_ALL=C sort | head -n 1)
[[ $first == "${rules##*/}" ]] || { printf 'FAILED: the rule comes after 73-seat-late.rules\n'; exit 1; }

# Comments and blank lines aside, each line is a list of known keys, operators and quoted values: no
# mode, owner, group or program among them.
key='(ACTION|SUBSYSTEM|KERNELS?|ATTRS\{[a-z/]+\})=="[^"]+"|(TAG|OPTIONS)\+="[^"]+"|(GOTO|LABEL)="[^"]+"'
run grep -vE "^(#.*)?\$|^($key)(, ($key))*\$" "$rules"
[[ -z $output ]] || fail 'every line should be one of a rule'
# Each tag is on uinput or on nodes of this one mouse.
run grep -F 'TAG+=' "$rules"
while IFS= read -r line; do
    [[ $line == *'TAG+="uaccess"'* ]] || fail "no other tag than uaccess: $line"
    [[ $line == *'KERNEL=="uinput"'* || $line == *'=="046d"'*'=="c099"'* || $line == *'"0003:046D:C099.*"'* ]] ||
        fail "a tag on other nodes than the mouse's: $line"
done <<<"$output"
[[ $(wc -l <<<"$output") == 3 ]] || fail 'uinput, the input nodes and the hidraw nodes should be tagged'
# Newer ones than Debian's look for themselves.
if udevadm --help | grep -q '^  verify'; then
    expect 'udevadm verify' udevadm verify --no-summary "$rules"
fi

etc_rules=$tree/etc/udev/rules.d/70-tessara.rules
etc_module=$tree/etc/modules-load.d/tessara.conf
expect 'a first run' "$grant" "$tree"
expect 'the rule' cmp "$rules" "$etc_rules"
expect 'the module' grep -qx uinput "$etc_module"
[[ $(stat -c %a "$etc_rules") == 644 ]] || fail 'the rule should be readable by all and writable by root'
touch -d '2001-01-01' "$etc_rules"
printf 'old\n' >"$etc_module"
expect 'a second run' "$grant" "$tree"
[[ $(stat -c %Y "$etc_rules") == $(date -d '2001-01-01' +%s) ]] || fail 'what stands should be left alone'
expect 'an old file is replaced' cmp "$packaging/modules-load/tessara.conf" "$etc_module"

rm "$etc_rules" "$etc_module"
install -D "$rules" "$tree/usr/lib/udev/rules.d/70-tessara.rules"
expect 'a run over a package' "$grant" "$tree"
[[ ! -e $etc_rules && -e $etc_module ]] || fail 'what a package has brought should not be copied'

as_nobody=()
if ((EUID == 0)); then
    as_nobody=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi
run "${as_nobody[@]}" bash -c "$(<"$grant")"
expect_failure 'a run without rights'
expect_one_error_line 'has to be run as root'
