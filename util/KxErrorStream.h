#pragma once

#include "util/KxOutputStream.h"
#include "util/UtilApi.h"

#include <string_view>

/** Writes readable notes (`display`, text that a parser could not read) to the log. Usable from any thread. */
class KX_UTIL_API KxErrorStream {
public:
    KxErrorStream(const KxErrorStream&) = delete;
    KxErrorStream& operator=(const KxErrorStream&) = delete;

    static KxErrorStream& sGetDefault();

    /** A stream whose lines become records of the logger "tandril.kx." and the name, at level Debug. A line is logged
        at its end, an unfinished one on flush. If such records would not be logged, the stream drops what is written,
        which costs one call for each piece. There is one stream for each thread and name; it lives as long as the
        thread. A changed log level applies from the next call.
        @param name one of a small fixed set, such as the name of a class: it is kept as long as the process lives.
        @param level the channel of the note; the log does not show it. */
    KxOutputStream& getDebugStream(std::string_view name, int level);

private:
    constexpr KxErrorStream() = default;
};
