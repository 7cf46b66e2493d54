#!/usr/bin/env bash
# debian.sh BUILD_FOLDER: makes the Debian packages of the build, unpacks them into a folder of their own, and sees that
# they have what they should, declare all libraries that they need, and that the tool runs from there. Exits with 77
# where packages can't be made.
set -euo pipefail
build=$1
stage=$build/package/debian
root=$stage/root

fail() {
    echo "$*" >&2
    exit 1
}

for program in dpkg-deb dpkg-shlibdeps file; do
    command -v $program >/dev/null || exit 77
done
rm -rf "$stage"
cpack --config "$build/CPackConfig.cmake" -B "$stage" -D CPACK_DEBIAN_COMPRESSION_TYPE=zstd >/dev/null
for package in "$stage"/*.deb; do
    dpkg-deb -x "$package" "$root"
done

# has PACKAGE PATTERN...: every pattern is the end of the name of a file in the package, which has a changelog.
has() {
    local package=$1 names
    shift
    names=$(dpkg-deb -c "$stage/$package"_*.deb)
    for pattern in "$@" "/usr/share/doc/$package/changelog\.Debian\.gz"; do
        grep -qE "$pattern( -> .*)?$" <<<"$names" || fail "$package has no $pattern"
    done
}
has libkxsipobject1 /libkx{core,util,sipobject}'\.so\.1(\.[0-9.]+)?'
has libkxsipobject-dev /libkx{core,util,sipobject}'\.so' /kxsipobject/core/Logger.h \
    /kxsipobject/sipobject/messages/KxSipMessage.h /cmake/KxSipObject/KxSipObjectConfig.cmake /pkgconfig/kxsipobject.pc
has libkxsipheaders1 /libkxsipheaders'\.so\.1(\.[0-9.]+)?'
has libkxsipheaders-dev /libkxsipheaders.so /kxsipobject/sipheaders/KxSip{Headers,ReasonHeader}.h \
    /cmake/KxSipObject/KxSipHeadersTargets.cmake /pkgconfig/kxsipheaders.pc
has kxsip /usr/bin/kxsip /man1/kxsip.1.gz /bash-completion/completions/kxsip /zsh/vendor-completions/_kxsip

# What distinguishes the packages, and what an unreleased version is called.
summaries=$(for package in "$stage"/*.deb; do dpkg-deb -f "$package" Description | sed -n 1p; done | sort -u | wc -l)
[ "$summaries" -eq 5 ] || fail "5 packages, $summaries summaries"
version=$(dpkg-deb -f "$stage"/kxsip_*.deb Version)
if grep -q '^## Unreleased: 1.0.0$' CHANGELOG.md; then
    dpkg --compare-versions "$version" lt 1.0.0 || fail "$version is not before 1.0.0"
fi
changelog=$(zcat "$root/usr/share/doc/kxsip/changelog.Debian.gz")
grep -qF "kxsipobject ($version)" <<<"$changelog" || fail "the changelog has no $version"
for package in libkxsipobject1 libkxsipheaders1; do
    control=$(dpkg-deb -I "$stage/$package"_*.deb triggers shlibs)
    grep -qx 'activate-noawait ldconfig' <<<"$control" || fail "$package has no trigger"
    grep -qF "$package (>= $version)" <<<"$control" || fail "$package has no shlibs of $version"
done
for package in libkxsipobject1 libkxsipheaders1 kxsip; do
    [ -e "$stage/$package-dbgsym_${version}_$(dpkg --print-architecture).ddeb" ] || fail "no symbols of $package"
done

# Nothing tells where it was built. Hosts need nothing that only the libraries use.
paths=$(grep -rlF "$PWD" "$root") && fail "they have the path of the build: $paths"
needless=$(grep -rlwE 'ACE|libcrypto' "$root"/usr/lib/*/{cmake,pkgconfig}) && fail "ACE or libcrypto in $needless"

# A header without an exported class that no other header includes is private (cmake/KxHeaders.cmake), but for these.
public='KxSip(Object|Headers|ResponseParts)\.h|DefaultStaticMemAllocator\.h|MemAllocatorFaults\.h'
cd "$root/usr/include/kxsipobject"
used=$(grep -rhoP --exclude=KxSip{Object,Headers}.h '#include "\K[^"]+' . && grep -rlE 'KX_[A-Z]+_API|#define' . | cut -c3-)
private=$(find . -name '*.h' | cut -c3- | grep -vxF "$used" | grep -vE "/($public)$" || true)
[ -z "$private" ] || fail "installed, but private: $private"
cd - >/dev/null

# Every library that a program or library needs comes with our packages or with one that is declared.
declared=$(for package in "$stage"/*.deb; do dpkg-deb -f "$package" Depends; done | tr ',' '\n')
libraries=$(dirname "$(find "$root" -name libkxcore.so.1)")
while read -r needed; do
    [ ! -e "$libraries/$needed" ] || continue
    owners=$(dpkg-query -S "*/$needed" | cut -d: -f1 | sort -u)
    grep -qwF "$owners" <<<"$declared" || fail "$needed of $owners is not declared"
done < <(objdump -p "$libraries"/*.so.1 "$root/usr/bin/kxsip" | awk '$1 == "NEEDED" { print $2 }' | sort -u)
while read -r package library; do
    dpkg-deb -f "$stage/$package"_*.deb Depends | grep -qF "$library (= $version)" || fail "$package does without $library"
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
