#!/bin/sh
# Installs the package in a scratch root, uses it there and removes it: try_package.sh PACKAGE DOCUMENTS ROOT
#
# ROOT is made by debootstrap where it is not there yet, from the mirror in $MIRROR; that takes root and 700 MB. Says what the
# package left behind, and ends with 1 if it left anything or if something of it did not work.
set -eu
package=$1 documents=$2 root=$3

if [ ! -x "$root/bin/sh" ]; then
    # What the package depends on, and what it is used with.
    depends=$(dpkg-deb -f "$package" Depends | sed 's/([^)]*)//g; s/|[^,]*//g; s/ //g')
    debootstrap --variant=minbase \
        --include="$depends,man-db,bash-completion,zsh,fish,recollcmd,shared-mime-info,libglib2.0-bin" \
        bookworm "$root" ${MIRROR:+"$MIRROR"}
fi
mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
trap 'umount "$root/proc"' EXIT
rm -rf "$root/documents" "$root/root/.recoll"
cp -r "$documents" "$root/documents"
cp "$package" "$root/package.deb"

inside() {
    chroot "$root" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 TERM=dumb "$@"
}
files() {
    # Databases that triggers make anew, and logs, are the system's own.
    inside find / -xdev \( -path /proc -o -path /tmp -o -path /var/log -o -path /var/cache/man -o -path /root \) -prune -o \
        ! -path '/var/lib/dpkg/*' -print | sort
}
faults=0
try() {
    what=$1 wanted=$2
    shift 2
    if inside "$@" 2>&1 | grep -q -e "$wanted"; then
        echo "works: $what"
    else
        echo "FAILS: $what"
        faults=1
    fi
}

files > "$root.before"
inside dpkg -i /package.deb
files > "$root.installed"

try 'wqf import' 'Ada Lovelace' wqf import /documents/castle.wqf
try 'wqf check' ': loaded' wqf check /documents
for page in wqf wqf-import wqf-setup wqf-query; do
    try "man $page" 'NAME' man "$page"
done
try 'completion in bash' '_wqf' bash -c '. /usr/share/bash-completion/bash_completion; _completion_loader wqf; complete -p wqf'
try 'completion in zsh' '_wqf' zsh -f -c 'autoload -U compinit; compinit -u -D; echo $_comps[wqf]'
try 'completion in fish' 'import' fish -c 'complete -C "wqf imp"'
inside wqf index /documents
try 'wqf search' 'castle.wqf' wqf search author:lovelace
try 'document type' 'application/x-wqf' gio info -a standard::content-type /documents/castle.wqf
inside wqf setup recoll
inside sh -c 'echo "topdirs = /documents" > /root/.recoll/recoll.conf; recollindex' 2> /dev/null
try 'Recoll, by author' 'castle.wqf' recollq -b author:lovelace
try 'Recoll, by number of bricks' 'castle.wqf' recollq -b wqfbricks:4..4
inside wqf setup recoll --remove

inside dpkg -P wqf
files > "$root.removed"
echo "files before: $(wc -l < "$root.before"), installed: $(wc -l < "$root.installed"), removed: $(wc -l < "$root.removed")"
diff "$root.before" "$root.installed" | sed -n 's/^> /installed: /p'
if ! diff "$root.before" "$root.removed"; then
    echo 'FAILS: something is left behind, or gone'
    faults=1
fi
exit $faults
