#!/usr/bin/env bash
# subproject.sh BUILD_FOLDER SOURCE_FOLDER: a host must allocate as the libraries free. With sanitizers both use plain
# malloc, without them neither does.
set -euo pipefail
for sanitizers in "" address; do
    folder=$1/package/subproject$sanitizers
    cmake -S "$2/tests/package/subproject" -B "$folder" -G Ninja -DCMAKE_CXX_COMPILER="${CXX:-c++}" \
        -DKX_SOURCE="$2" -DKX_SANITIZE="$sanitizers" >/dev/null
    plain=$(grep -c KX_PLAIN_MALLOC=1 "$folder/definitions" || true)
    published=$(grep -c KX_PLAIN_MALLOC=1 "$folder"/{,kx/}package/kxsipobject.pc 2>/dev/null | grep -c ':1$' || true)
    if [ "$plain$published" != "$([ -z "$sanitizers" ] && echo 00 || echo 11)" ]; then
        echo "KX_SANITIZE=$sanitizers: a host's sources get '$(cat "$folder/definitions")', pkg-config $published"
        exit 1
    fi
done
