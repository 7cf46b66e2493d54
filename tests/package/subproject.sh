#!/usr/bin/env bash
# subproject.sh BUILD_FOLDER SOURCE_FOLDER: as a sub-project the libraries are built as the host wants them and leave
# nothing else in it. A host must allocate as the libraries free: with sanitizers both use plain malloc, without them
# neither does.
set -euo pipefail

# configure FOLDER OPTION...
configure() {
    cmake -S "$source/tests/package/subproject" -B "$@" -G Ninja -DCMAKE_CXX_COMPILER="${CXX:-c++}" \
        -DKX_SOURCE="$source" >/dev/null
}

# has FILE PATTERN, lacks FILE PATTERN
has() {
    grep -qE "$2" "$1" || { echo "$1 has no $2" && exit 1; }
}
lacks() {
    ! grep -E "$2" "$1" || { echo "$1 has $2" && exit 1; }
}

source=$2
folder=$1/package/subproject
rm -rf "$folder" "$folder-address"
configure "$folder" -DCMAKE_CXX_STANDARD=23 -DBUILD_SHARED_LIBS=OFF
lacks "$folder/build.ninja" 'std=c\+\+20|-Werror|-Wall|(^| )-O[0-9]|FORTIFY|fstack-protector|libkx[a-z]*\.so'
lacks "$folder/CMakeCache.txt" '^CMAKE_BUILD_TYPE:STRING=.|^CMAKE_INSTALL_LIBDIR|^CPACK|^CLI11|^BUILD_SHARED_LIBS:BOOL'
lacks "$folder/kx/cmake_install.cmake" 'file\(INSTALL'
[ ! -e "$folder/CPackConfig.cmake" ] || { echo "the host has packages" && exit 1; }
has "$folder/build.ninja" 'whole-archive.*libkxsipobject\.a'
configure "$folder-address" -DKX_SANITIZE=address -DKX_INSTALL=ON
lacks "$folder/definitions" KX_PLAIN_MALLOC=1
has "$folder-address/definitions" KX_PLAIN_MALLOC=1
has "$folder-address/kx/package/kxsipobject.pc" KX_PLAIN_MALLOC=1
