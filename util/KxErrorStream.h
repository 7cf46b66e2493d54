#pragma once

#include "util/KxOutputStream.h"
#include "util/UtilApi.h"

#include <string_view>

/** The way of readable notes (`display`, what a parser could not read) into the log. Usable from any thread. */
class KX_UTIL_API KxErrorStream {
public:
    KxErrorStream(const KxErrorStream&) = delete;
    KxErrorStream& operator=(const KxErrorStream&) = delete;

    static KxErrorStream& sGetDefault();

    /** A stream whose lines become records of the logger "tandril.kx." and the name, at level Debug: each at its line
        end, an unfinished one on flush. While nobody would get such records the stream drops what is written to it,
        and costs a call a piece. The stream belongs to the calling thread and the name and lives as long as the
        thread; a level that was changed holds from the next call.
        @param name one of a fixed few, as of a class: each is remembered for good.
        @param level the channel of the note, which the log does not tell apart. */
    KxOutputStream& getDebugStream(std::string_view name, int level);

private:
    constexpr KxErrorStream() = default;
};
