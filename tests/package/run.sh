#!/usr/bin/env bash
# run.sh BUILD_FOLDER SOURCE_FOLDER cmake|pkg-config: installs the build into a folder of its own, builds
# consumer.cpp and the examples of one file against it the way that is named, and runs each with a sample message.
set -euo pipefail
build=$1 source=$2 way=$3
stage=$build/package/$way
sources=("$source"/tests/package/consumer.cpp "$source"/examples/*.cpp)
programs=$stage/build

rm -rf "$stage"
for component in runtime development headers headers_development tool; do
    cmake --install "$build" --prefix "$stage/staged" --component $component >/dev/null
done
mv "$stage/staged" "$stage/installed" # what is installed finds its parts wherever it is
if [ -e "$build/bin/kxsip" ]; then
    "$stage/installed/bin/kxsip" --version
fi
case $way in
    cmake)
        cmake -S "$source/tests/package" -B "$stage/build" -G Ninja -DCMAKE_CXX_COMPILER="${CXX:-c++}" \
            -DCMAKE_PREFIX_PATH="$stage/installed" >/dev/null
        cmake --build "$stage/build"
        ;;
    pkg-config)
        found=$(find "$stage/installed" -name kxsipobject.pc)
        read -ra flags <<<"$(PKG_CONFIG_PATH=$(dirname "$found") pkg-config --cflags --libs kxsipheaders)"
        mkdir "$programs"
        for program in "${sources[@]}"; do
            "${CXX:-c++}" -std=c++20 "$program" -o "$programs/$(basename "$program" .cpp)" "${flags[@]}" \
                -Wl,-rpath,"$(dirname "$(dirname "$found")")"
        done
        ;;
esac
for program in "${sources[@]}"; do
    "$programs/$(basename "$program" .cpp)" "$source/samples/invite.sip"
done
