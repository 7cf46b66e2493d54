#!/usr/bin/env bash
# debian.sh BUILD_FOLDER: makes the Debian packages of the build, unpacks them into a folder of their own, and sees that
# they have what they should, declare all libraries that they need, and that the tool runs from there. Exits with 77
# where packages can't be made.
set -euo pipefail
build=$1
stage=$build/package/debian
root=$stage/root

for program in dpkg-deb dpkg-shlibdeps file; do
    command -v $program >/dev/null || exit 77
done
rm -rf "$stage"
cpack --config "$build/CPackConfig.cmake" -B "$stage" >/dev/null
for package in "$stage"/*.deb; do
    dpkg-deb -x "$package" "$root"
done

# has PACKAGE PATTERN...: every pattern is the end of the name of a file in the package.
has() {
    local package=$1 names
    shift
    names=$(dpkg-deb -c "$stage/$package"_*.deb)
    for pattern in "$@"; do
        grep -qE "$pattern( -> .*)?$" <<<"$names" || { echo "$package has no $pattern" >&2; exit 1; }
    done
}
has libkxsipobject1 /libkx{core,util,sipobject}'\.so\.1(\.[0-9.]+)?'
has libkxsipobject-dev /libkx{core,util,sipobject}'\.so' /kxsipobject/core/Logger.h \
    /kxsipobject/sipobject/messages/KxSipMessage.h /cmake/KxSipObject/KxSipObjectConfig.cmake /pkgconfig/kxsipobject.pc
has libkxsipheaders1 /libkxsipheaders'\.so\.1(\.[0-9.]+)?'
has libkxsipheaders-dev /libkxsipheaders.so /kxsipobject/sipheaders/KxSip{Headers,ReasonHeader}.h \
    /cmake/KxSipObject/KxSipHeadersTargets.cmake /pkgconfig/kxsipheaders.pc
has kxsip /usr/bin/kxsip /man1/kxsip.1 /bash-completion/completions/kxsip

# Every library that a program or library needs comes with our packages or with one that is declared.
declared=$(for package in "$stage"/*.deb; do dpkg-deb -f "$package" Depends; done | tr ',' '\n')
libraries=$(dirname "$(find "$root" -name libkxcore.so.1)")
while read -r needed; do
    [ ! -e "$libraries/$needed" ] || continue
    owners=$(dpkg-query -S "*/$needed" | cut -d: -f1 | sort -u)
    grep -qwF "$owners" <<<"$declared" || { echo "$needed of $owners is not declared" >&2; exit 1; }
done < <(objdump -p "$libraries"/*.so.1 "$root/usr/bin/kxsip" | awk '$1 == "NEEDED" { print $2 }' | sort -u)
while read -r package library; do
    dpkg-deb -f "$stage/$package"_*.deb Depends | grep -q "$library (= " || {
        echo "$package does without $library" >&2
        exit 1
    }
done <<'EOF'
libkxsipobject-dev libkxsipobject1
libkxsipheaders1 libkxsipobject1
libkxsipheaders-dev libkxsipheaders1
libkxsipheaders-dev libkxsipobject-dev
kxsip libkxsipobject1
kxsip libkxsipheaders1
EOF

LD_LIBRARY_PATH=$libraries "$root/usr/bin/kxsip" show samples/invite.sip >/dev/null
# shellcheck disable=SC1091
source "$root/usr/share/bash-completion/completions/kxsip"
