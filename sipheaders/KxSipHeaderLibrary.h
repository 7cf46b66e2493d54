#pragma once

#include "sipheaders/HeadersApi.h"

/** Switches on the typed headers of this library (libkxsipheaders), which are those that gateways and session border
    controllers carry beside the headers of RFC 3261. Until then such lines are unknown headers. */
class KX_HEADERS_API KxSipHeaderLibrary {
public:
    KxSipHeaderLibrary() = delete;

    /** From now on lines of these headers are read into the classes of this library. A name for which the host has
        registered a class of its own keeps that class. The grammar can't be chosen any more. To be called at start-up,
        after KxSipGrammar::sChoose, and before a second thread uses the libraries or a message is read. Further calls
        have no effect.
        Throws KxException "The headers of libkxsipheaders need the RFC grammar" in the classic grammar. */
    static void sEnable();
    [[nodiscard]] static bool sIsEnabled();
};
