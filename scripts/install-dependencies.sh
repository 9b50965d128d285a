#!/bin/sh
# SPDX-License-Identifier: MIT
# install-dependencies.sh [run|test|lint|fuzz|package]
# Installs what is missing of scripts/packages.txt on Debian 12: with "run" (the default) what the console needs
# to build and run, with "test" also what the tests need, with "lint" what looks at the sources, with "fuzz" what
# builds and runs the fuzz targets besides, with "package" also what makes and tries the packages. With everything there
# it does nothing and is done at once.
# Servers among what the tests need are neither started now nor at the next boot: tests start their own.
# KELVO_SKIP_INSTALL=1 leaves the system alone, for systems that have these libraries under other names.
set -eu

group=${1:-run}
case $group in
    run) wanted_groups="run" ;;
    test) wanted_groups="run test" ;;
    lint) wanted_groups="lint" ;;
    fuzz) wanted_groups="fuzz" ;;
    package) wanted_groups="run package" ;;
    *)
        echo "usage: $0 [run|test|lint|fuzz|package]" >&2
        exit 2
        ;;
esac
if [ "${KELVO_SKIP_INSTALL:-}" = 1 ]; then
    echo "==> dependencies: not looked at (KELVO_SKIP_INSTALL=1)"
    exit 0
fi

list=$(dirname "$0")/packages.txt
wanted=$(awk -v groups="$wanted_groups" '
    BEGIN { n = split(groups, names, " "); for (i = 1; i <= n; ++i) take[names[i]] = 1 }
    !/^#/ && NF >= 2 && ($1 in take) { print $2 }' "$list")

cannot() {
    echo "error: $1" >&2
    # shellcheck disable=SC2086
    echo "These Debian 12 packages are missing:" $missing >&2
    echo "Install them by hand, or set KELVO_SKIP_INSTALL=1 if your system has them under other names." >&2
    exit 1
}

missing=$wanted
command -v dpkg-query >/dev/null 2>&1 || cannot "this is no Debian system, so its packages cannot be looked up"
# dpkg-query fails when it does not know one of the names; what it prints is right all the same.
# shellcheck disable=SC2086
installed=$(dpkg-query -W -f '${db:Status-Abbrev}${Package}\n' $wanted 2>/dev/null | sed -n 's/^ii *//p') || true
# shellcheck disable=SC2086
missing=$(printf '%s\n' $wanted | while read -r package; do
    printf '%s\n' "$installed" | grep -qxF -- "$package" || printf '%s ' "$package"
done)
if [ -z "$missing" ]; then
    echo "==> dependencies: all installed"
    exit 0
fi

echo "==> dependencies: installing $missing"
command -v apt-get >/dev/null 2>&1 || cannot "there is no apt-get on this system"
as_root=""
if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null 2>&1 || cannot "installing packages needs root, and there is no sudo"
    # Without a terminal nobody could type a password.
    if [ -t 0 ]; then as_root="sudo"; else as_root="sudo -n"; fi
fi

# What decides whether an installed service is started; another place only in tests of this script.
policy=${KELVO_POLICY_FILE:-/usr/sbin/policy-rc.d}
made_policy=""
remove_policy() {
    if [ -n "$made_policy" ]; then $as_root rm -f "$policy"; fi
    made_policy=""
}
# Forbids it for as long as this script runs. Somebody else's policy is left as it is: a machine that has one has its
# reasons. Ours means nothing any more once this script has ended, even if it could not be removed.
forbid_services() {
    if [ -e "$policy" ] && grep -q "^# kelvo-install$" "$policy"; then $as_root rm -f "$policy"; fi
    trap remove_policy EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM HUP
    # shellcheck disable=SC2016
    if $as_root sh -c 'set -C; printf "%s\n" "#!/bin/sh" "# kelvo-install" "[ ! -d /proc/$2 ] || exit 101" > "$1"' \
        sh "$policy" $$ 2> /dev/null; then
        made_policy=1
        $as_root chmod 755 "$policy"
    fi
}
keep_from_booting() {
    for service in minidlna gerbera gmediarender; do
        case " $missing " in
            *" $service "*) $as_root update-rc.d "$service" disable > /dev/null 2>&1 || true ;;
        esac
    done
}
apt() {
    # shellcheck disable=SC2086
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get -o Acquire::Retries=3 -q "$@"
}
apt update || echo "warning: the package lists could not be refreshed; trying with the present ones" >&2
if [ "$group" = test ]; then forbid_services; fi
# shellcheck disable=SC2086
apt install -y --no-install-recommends $missing || cannot "apt-get could not install everything"
if [ "$group" = test ]; then keep_from_booting; fi
