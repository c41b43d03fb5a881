# shellcheck shell=bash
# A machine with a real kernel, for what cannot be tried on a simulated one: Debian's own kernel,
# booted by an emulator with nothing in it but busybox, udev, the input drivers and our programs.
# Sourced after lib.sh by the scripts that boot one. It has no disk, no network and no screen, and
# nothing of it is installed on the computer that runs it.
# shellcheck disable=SC2154 # lib.sh says where things are.

vm=$root/build/vm
vm_tree=$vm/tree
# Two processors, which take the computer's time.
vm_processors=(-accel 'tcg,thread=multi' -smp 2)
vm_modules=(hid hid-generic uhid uinput evdev)
# One unpacked kernel with these modules serves every clone of the tree.
vm_kernels=${XDG_CACHE_HOME:-$HOME/.cache}/tessara-vm/${vm_modules[*]}
vm_kernels=${vm_kernels// /+}
# Rules of the distribution that give input nodes their properties, their owners and their seat.
vm_rules=(50-udev-default 60-input-id 60-persistent-input 70-uaccess 71-seat 73-seat-late)

mkdir -p "$vm" "$vm_kernels"

# vm_kernel: sets `kernel` to the folder of an unpacked kernel: that of an earlier run, or the one
# that Debian offers now.
vm_kernel() {
    kernel=$(find "$vm_kernels" -mindepth 1 -maxdepth 1 -name 'linux-image-*' | sort -V | tail -n 1)
    if [[ -n $kernel ]]; then
        return
    fi
    local package fetched=$vm/fetched
    package=$(apt-cache depends linux-image-amd64 | sed -n 's/^ *Depends: \(linux-image-\)/\1/p' | head -n 1)
    [[ -n $package ]] || die 'the package lists have no linux-image-amd64; bring them up to date'
    rm -rf "$fetched"
    mkdir -p "$fetched/tree"
    step "Fetching $package" vm-kernel fetch_kernel "$package" "$fetched"
    kernel=$vm_kernels/$package
    # Another clone may have been quicker.
    mv -T "$fetched/kernel" "$kernel" 2>/dev/null || [[ -f $kernel/vmlinuz ]]
    rm -rf "$fetched"
}

# fetch_kernel PACKAGE FOLDER: leaves in FOLDER/kernel the kernel and, in the order in which they
# must be loaded, the modules that we use.
fetch_kernel() {
    local package=$1 folder=$2 module files=()
    (cd "$folder" && apt-get download "$package") || return 1
    for module in "${vm_modules[@]}"; do
        files+=("./lib/modules/*/$module.ko*")
    done
    dpkg-deb --fsys-tarfile "$folder/$package"_*.deb |
        tar -x -C "$folder/tree" --wildcards './boot/vmlinuz-*' "${files[@]}" || return 1
    mkdir "$folder/kernel"
    mv "$folder"/tree/boot/vmlinuz-* "$folder/kernel/vmlinuz"
    for module in "${vm_modules[@]}"; do
        add_module "$folder" "$module" || return 1
    done
}

# add_module FOLDER NAME: the module behind those that it needs.
add_module() {
    local folder=$1 name=$2 file needed
    if grep -qx "$name.ko" "$folder/kernel/modules" 2>/dev/null; then
        return
    fi
    file=$(find "$folder/tree/lib/modules" -name "$name.ko*")
    [[ -n $file ]] || { printf 'the kernel has no module %s\n' "$name"; return 1; }
    for needed in $(/sbin/modinfo -F depends "$file" | tr , ' '); do
        add_module "$folder" "$needed" || return 1
    done
    cp "$file" "$folder/kernel/"
    printf '%s\n' "${file##*/}" >>"$folder/kernel/modules"
}

# vm_install PROGRAM PLACE: puts a program into the machine, without its debug information, and the
# libraries that it loads.
vm_install() {
    local program=$1 place=$vm_tree/$2 library
    mkdir -p "${place%/*}"
    strip --strip-debug -o "$place" "$program"
    while IFS= read -r library; do
        if [[ ! -e $vm_tree$library ]]; then
            mkdir -p "$vm_tree${library%/*}"
            cp -L "$library" "$vm_tree$library"
        fi
    done < <(ldd "$program" 2>/dev/null | sed -nE 's/^.*=> (\/[^ ]+) .*$/\1/p; s/^\t(\/[^ ]+) .*$/\1/p')
}

# vm_prepare: makes the machine anew, as yet without anything to do.
vm_prepare() {
    local rule module
    vm_kernel
    rm -rf "$vm_tree"
    mkdir -p "$vm_tree"/{bin,dev,etc,proc,run,sys,tmp,job,lib/modules,lib/udev/rules.d}
    cp /bin/busybox "$vm_tree/bin/busybox"
    vm_install /bin/udevadm bin/udevadm
    ln -s udevadm "$vm_tree/bin/udevd"
    cp scripts/vm-init "$vm_tree/init"
    printf 'root:x:0:0::/:/bin/sh\nnobody:x:65534:65534::/:/bin/sh\n' >"$vm_tree/etc/passwd"
    printf 'root:x:0:\ntty:x:5:\ninput:x:101:\nnogroup:x:65534:\n' >"$vm_tree/etc/group"
    for rule in "${vm_rules[@]}"; do
        cp "/lib/udev/rules.d/$rule.rules" "$vm_tree/lib/udev/rules.d/"
    done
    if [[ -d Packaging/udev ]]; then
        find Packaging/udev -name '*.rules' -exec cp -t "$vm_tree/lib/udev/rules.d/" {} +
    fi
    while IFS= read -r module; do
        cp "$kernel/$module" "$vm_tree/lib/modules/"
    done <"$kernel/modules"
    cp "$kernel/modules" "$vm_tree/lib/modules/order"
}

# vm_boot SECONDS: boots the machine, which runs job/run and turns itself off, and waits for that.
# What the job printed is then in build/vm/output, what the kernel had to say in build/vm/console.
# On a computer that is very busy an emulated kernel can get stuck before it has come up, and is then
# started again; once it is up nothing is tried twice.
# shellcheck disable=SC2317 # Called through `step`.
vm_boot() {
    local seconds=$1 attempt
    (cd "$vm_tree" && find . -print0 | cpio --null --create --format=newc --quiet) >"$vm/initrd" || return 1
    for attempt in 1 2 3; do
        rm -f "$vm/output" "$vm/console"
        vm_run "$seconds" &
        local machine=$! waited=0
        until grep -qs '^machine: ' "$vm/output" || ((waited++ == 120)) || ! kill -0 "$machine" 2>/dev/null; do
            sleep 1
        done
        if grep -qs '^machine: ' "$vm/output"; then
            break
        fi
        printf 'the machine did not come up (attempt %d)\n' "$attempt"
        tail -n 20 "$vm/console"
        kill "$machine" 2>/dev/null || true
        wait "$machine" || true
        machine=''
    done
    [[ -n $machine ]] || return 1
    wait "$machine" || {
        printf 'the machine did not turn itself off within %d s\n' "$seconds"
        tail -n 20 "$vm/console"
        return 1
    }
    if grep -E '^machine: ' "$vm/output" | grep -v '^machine: up'; then
        return 1
    fi
}

# vm_run SECONDS: the machine itself. Emulated whole, without the computer's own kernel taking part:
# that works everywhere alike. The kernel is told to leave out tests of its own, which it fails when
# the emulator gets too little time, to hurry with what makes unplugging slow, the wait for its other
# processors, and to leave out its defences against faults of real processors: an emulated one takes
# twice as long with them, for each call of the system.
# shellcheck disable=SC2317 # Called through `step`.
vm_run() {
    exec timeout "$1" nice -n 5 qemu-system-x86_64 "${vm_processors[@]}" -m 512M \
        -display none -monitor none -nic none -no-reboot \
        -serial "file:$vm/console" -serial "file:$vm/output" \
        -kernel "$kernel/vmlinuz" -initrd "$vm/initrd" \
        -append 'console=ttyS0 loglevel=4 panic=-1 tsc=reliable no_timer_check cryptomgr.notests rcupdate.rcu_expedited=1 mitigations=off'
}
