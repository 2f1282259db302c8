#!/bin/sh
# Installs the Debian packages that a target of the Makefile needs: tools/setup.sh GROUP...
# What is already there is left alone; nothing is ever removed.
set -u

packages_of() {
    android="android-liblog-dev android-libutils-dev android-libcutils-dev android-libbase-dev"
    case $1 in
    build) echo "g++ cmake ninja-build $android libcli11-dev nlohmann-json3-dev libpng-dev libuchardet-dev zlib1g-dev" ;;
    test) echo "libgtest-dev pkg-config blueprint-tools python3" ;;
    arm) echo "g++ cmake ninja-build $android g++-arm-linux-gnueabihf qemu-user libgtest-dev:armhf pkg-config blueprint-tools python3"
        for package in $android; do echo "$package:armhf"; done ;;
    clang | fuzz) echo "clang-14 libclang-rt-14-dev" ;;
    valgrind) echo "valgrind" ;;
    coverage) echo "clang-14 libclang-rt-14-dev llvm-14 python3" ;;
    mutants) echo "python3" ;;
    bench) echo "pkg-config libavformat-dev libavcodec-dev libass-dev" ;;
    instructions) echo "valgrind python3" ;;
    abi) echo "abigail-tools" ;;
    docs) echo "doxygen" ;;
    format) echo "clang-format-14" ;;
    tidy) echo "clang-tidy-14" ;;
    page) echo "cmake ninja-build emscripten $android libcli11-dev nlohmann-json3-dev"
        command -v npm >/dev/null || echo "nodejs npm" ;;
    page-test) echo "chromium fonts-dejavu-core" ;;
    ci) echo "git make python3" ;;
    *) echo "setup: unknown group '$1'" >&2 && return 1 ;;
    esac
}

is_installed() {
    # An architecture-independent or native package is listed by its bare name, a foreign one by name:arch.
    dpkg-query --show --showformat='${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# say TEXT: on a terminal in place of what was said before.
say() {
    if [ -t 1 ]; then printf '\r\033[Ksetup: %.70s' "$1"; else echo "setup: $1"; fi
}

# step NUMBER TEXT: one package further; where lines stay, one in ten is said, and the last.
step() {
    if [ -t 1 ] || [ $(($1 % 10)) = 0 ] || [ "$1" = "$packages" ]; then say "$1 of $packages $2"; fi
}

# Keeps what apt writes, and says in short how far it is.
follow() {
    return=$(printf '\r')
    packages=0 fetched=0 unpacked=0 ready=0
    while IFS= read -r line; do
        printf '%s\n' "$line" >>"$log"
        line=${line%"$return"}
        # shellcheck disable=SC2086  # into words
        case $line in
        [0-9]*' newly installed'*) set -- $line && packages=$(($1 + $3)) ;;
        'Need to get '*' of archives.')
            line=${line#'Need to get '}
            say "$packages packages, ${line%' of archives.'} to fetch"
            ;;
        Get:*)
            set -- $line
            fetched=$((fetched + 1))
            [ "$packages" = 0 ] || step $fetched "fetched: $5" # 0: package lists
            ;;
        'Unpacking '*) set -- $line && unpacked=$((unpacked + 1)) && step $unpacked "unpacked: $2" ;;
        'Setting up '*) set -- $line && ready=$((ready + 1)) && step $ready "installed: $3" ;;
        esac
    done
    [ ! -t 1 ] || printf '\r\033[K'
}

# A pipe has the status of its last command, so apt's goes through a file.
apt() {
    {
        as_root env DEBIAN_FRONTEND=noninteractive LC_ALL=C apt-get -q -o DPkg::Lock::Timeout=300 "$@" 2>&1
        echo $? >"$log.status"
    } | follow
    return "$(cat "$log.status")"
}

update_and_install() {
    say "reading Debian's package lists"
    apt update || echo "setup: warning: 'apt-get update' failed; trying with the package lists at hand" >&2
    # shellcheck disable=SC2086  # a list of words
    apt install -y --no-install-recommends $missing
}

wanted=
for group in "$@"; do
    packages=$(packages_of "$group") || exit 2
    wanted="$wanted $packages"
done

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    echo "setup: this is not Debian; going on with what is installed. Needed, by Debian's names:" >&2
    echo $wanted >&2
    exit 0
fi

missing=
for package in $wanted; do
    case " $missing " in *" $package "*) continue ;; esac
    is_installed "$package" || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

echo "setup: installing Debian packages:$missing"
if [ "$(id -u)" != 0 ] && ! command -v sudo >/dev/null; then
    echo "setup: that needs root, and there is no sudo. As root, run: tools/setup.sh $*" >&2
    exit 1
fi

log=$(mktemp "${TMPDIR:-/tmp}/vxsubtitle-setup.XXXXXX") || exit 1
case $missing in
*:armhf*)
    if ! dpkg --print-foreign-architectures | grep -qx armhf; then
        echo "setup: adding the architecture armhf"
        as_root dpkg --add-architecture armhf || exit 1
    fi
    ;;
esac
if ! update_and_install; then
    echo "setup: warning: that did not work; trying once more" >&2
    if ! update_and_install; then
        tail -n 40 "$log" >&2
        echo "setup: the packages could not be installed; all of apt's output is in $log" >&2
        exit 1
    fi
fi
rm -f "$log" "$log.status"
echo "setup: done"
