#include "sipobject/KxSipParseErrorEmptySupported.h"
#include "sipobject/KxSipParseKeepAliveException.h"

#include <gtest/gtest.h>

#include <string>

/** '+' if a handler for Caught catches what Thrown throws, else '-'. */
template <class Caught, class Thrown>
static char seenBy() {
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

/** The result of seenBy for all handlers, from general to special; the last one is for keep-alives. */
template <class Thrown>
static std::string handlersOf() {
    return {seenBy<KxException, Thrown>(), seenBy<KxSipParseError, Thrown>(),
            seenBy<KxSipParseErrorEmptyHeader, Thrown>(), seenBy<KxSipParseErrorEmptySupported, Thrown>(),
            seenBy<KxSipParseKeepAliveException, Thrown>()};
}

TEST(ParseErrorTest, HandlersSeeTheirOwnFamily) {
    EXPECT_EQ(handlersOf<KxException>(), "+----");
    EXPECT_EQ(handlersOf<KxSipParseError>(), "++---");
    EXPECT_EQ(handlersOf<KxSipParseErrorEmptyHeader>(), "+++--");
    EXPECT_EQ(handlersOf<KxSipParseErrorEmptySupported>(), "++++-");
    EXPECT_EQ(handlersOf<KxSipParseKeepAliveException>(), "+---+");
    EXPECT_TRUE(KxSipParseErrorEmptySupported().getExceptionMessage().empty());
}
