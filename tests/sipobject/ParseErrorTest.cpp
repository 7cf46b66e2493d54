#include "sipobject/KxSipParseErrorEmptySupported.h"
#include "sipobject/KxSipParseKeepAliveException.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/** Whether a handler for Caught sees what Thrown throws. */
template <class Caught, class Thrown>
char seenBy() {
    const std::string text("text of \0 the thrower\r\n", 23);
    try {
        Thrown::sThrow(text);
    } catch (KxHandle<Caught>& failure) {
        EXPECT_EQ(failure->getExceptionMessage(), text);
        EXPECT_THROW(KxException::sThrow(failure->clone()), KxHandle<Thrown>);
        return '+';
    } catch (...) {
        return '-';
    }
}

/** The handlers that see it, from general to special; the last is the one for keep-alives. */
template <class Thrown>
std::string handlersOf() {
    return {seenBy<KxException, Thrown>(), seenBy<KxSipParseError, Thrown>(),
            seenBy<KxSipParseErrorEmptyHeader, Thrown>(), seenBy<KxSipParseErrorEmptySupported, Thrown>(),
            seenBy<KxSipParseKeepAliveException, Thrown>()};
}

} // namespace

TEST(ParseErrorTest, HandlersSeeTheirOwnFamily) {
    EXPECT_EQ(handlersOf<KxException>(), "+----");
    EXPECT_EQ(handlersOf<KxSipParseError>(), "++---");
    EXPECT_EQ(handlersOf<KxSipParseErrorEmptyHeader>(), "+++--");
    EXPECT_EQ(handlersOf<KxSipParseErrorEmptySupported>(), "++++-");
    EXPECT_EQ(handlersOf<KxSipParseKeepAliveException>(), "+---+");
    EXPECT_TRUE(KxSipParseErrorEmptySupported().getExceptionMessage().empty());
}
