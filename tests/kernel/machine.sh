# Debian's kernel with the test adapters, and a machine under QEMU that it is booted on. For scripts
# that are in the repository's root; all is kept in $cache, and $flavour names the kernel.
cache=$PWD/build/kernel

complain() { echo "$(basename "$0"): $*" >&2; }

# The kernel image, and the headers that modules for it are built with.
fetchKernel() {
  local work=$cache/new image version flavour needed packages package
  image=$(apt-cache depends linux-image-amd64 | sed -n 's/^ *Depends: \(linux-image-[0-9].*\)/\1/p')
  [[ -n $image ]] || {
    complain "there is no package linux-image-amd64; is apt-get update needed?"
    return 1
  }
  version=$(apt-cache show --no-all-versions "$image" | sed -n 's/^Version: //p')
  flavour=${image#linux-image-}
  rm -rf "$work"
  mkdir -p "$work/packages" "$work/root"
  mapfile -t needed < <(apt-cache depends "linux-headers-$flavour" |
    sed -En 's/^ *Depends: (linux-(headers|kbuild)-.*)/\1/p')
  (
    cd "$work/packages"
    packages=("$image" "linux-headers-$flavour" "${needed[@]}")
    apt-get -q download "${packages[@]/%/=$version}"
  ) >"$cache/download.log" 2>&1 || {
    cat "$cache/download.log" >&2
    return 1
  }
  for package in "$work"/packages/*.deb; do
    dpkg-deb -x "$package" "$work/root"
  done
  rm -r "$work/packages"
  echo "$flavour" >"$work/root/flavour"
  # Made for /usr/src; it is read where it was unpacked.
  sed -i "s|^include /usr/src|include $cache/root/usr/src|" \
    "$work/root/usr/src/linux-headers-$flavour/Makefile"
  rm -rf "$cache/root"
  mv "$work/root" "$cache/root"
}

# copyModules FOLDER: puts the module of bus devices and that of the test adapters there.
copyModules() {
  rm -rf "$cache/module"
  cp -r tests/kernel "$cache/module"
  make -C "$cache/root/usr/src/linux-headers-$flavour" M="$cache/module" modules \
    >"$cache/module.log" 2>&1 || {
    cat "$cache/module.log" >&2
    complain "the test adapters do not build"
    return 1
  }
  mkdir -p "$1"
  cp "$cache/root/lib/modules/$flavour/kernel/drivers/i2c/i2c-dev.ko" \
    "$cache/module/psu_test_adapters.ko" "$1"
  strip --strip-debug "$1"/*.ko
}

# An archive of the folder $1 as the kernel unpacks it into its first file system.
pack() { (cd "$1" && find . | cpio -o -H newc --quiet --owner 0:0); }

# image FILE: a FRU image as the test adapters take it.
image() { od -An -v -tx1 "$1" | tr -d ' \n'; }

# boot SECONDS MEGABYTES INITRAMFS OPTIONS ARGUMENT...: boots a machine with the kernel's OPTIONS and
# QEMU's ARGUMENTs, which must switch itself off in time and say "passed" in this script's name.
boot() {
  local name log
  name=$(basename "$0")
  log=$cache/$name.log
  timeout "$1" qemu-system-x86_64 -accel tcg -m "$2" -display none -monitor none -serial stdio \
    -no-reboot -nodefaults -kernel "$cache/root/boot/vmlinuz-$flavour" -initrd "$3" \
    -append "console=ttyS0 quiet loglevel=1 panic=-1 $4" "${@:5}" </dev/null 2>&1 |
    sed -u 's|\r$||' | tee "$log" || {
    complain "QEMU cannot run here, or the machine did not end within $1 s"
    return 1
  }
  grep -qx "$name: passed" "$log" || {
    complain "failed"
    return 1
  }
}

mkdir -p "$cache"
[[ -e $cache/root/flavour ]] || fetchKernel
flavour=$(<"$cache/root/flavour")
