#!/usr/bin/env bash
# run.sh BUILD_FOLDER SOURCE_FOLDER cmake|pkg-config: installs the build into a folder of its own, builds the
# consumer against it the way that is named, and runs it.
set -euo pipefail
build=$1 source=$2 way=$3
stage=$build/package/$way
consumer=$stage/consumer

rm -rf "$stage"
for component in runtime development tool; do
    cmake --install "$build" --prefix "$stage/staged" --component $component >/dev/null
done
mv "$stage/staged" "$stage/installed" # what is installed finds its parts wherever it is
"$stage/installed/bin/kxsip" --version
case $way in
    cmake)
        cmake -S "$source/tests/package" -B "$stage/build" -G Ninja -DCMAKE_CXX_COMPILER="${CXX:-c++}" \
            -DCMAKE_PREFIX_PATH="$stage/installed" >/dev/null
        cmake --build "$stage/build"
        consumer=$stage/build/consumer
        ;;
    pkg-config)
        found=$(find "$stage/installed" -name kxsipobject.pc)
        read -ra flags <<<"$(PKG_CONFIG_PATH=$(dirname "$found") pkg-config --cflags --libs kxsipobject)"
        "${CXX:-c++}" -std=c++20 "$source/tests/package/consumer.cpp" -o "$consumer" "${flags[@]}" \
            -Wl,-rpath,"$(dirname "$(dirname "$found")")"
        ;;
esac
"$consumer" "$source/samples/invite.sip"
