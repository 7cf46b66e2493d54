#include "util/KxException.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace std::string_view_literals;

namespace {

/** A host's own class, of another binary than its base. */
class HostError final : public KxExceptionOf<HostError, KxException> {
public:
    using KxExceptionOf::KxExceptionOf;
    HostError(std::string_view text, int reason) : KxExceptionOf(text), code(reason) {}
    int code = 0;
};

/** Which handler catches it, and its text. */
template <class F>
std::string caught(F f) {
    try {
        f();
    } catch (KxHandle<HostError>& failure) {
        return "HostError: " + std::string(failure->getExceptionMessage().view());
    } catch (KxHandle<KxException>& failure) {
        return "KxException: " + std::string(failure->getExceptionMessage().view());
    }
    return "nothing";
}

} // namespace

TEST(ExceptionTest, IsThrownAsItsOwnClassWithItsTextByteForByte) {
    for (const std::string& text :
         {std::string(), std::string("INVITE"), std::string(" \r\n\0%s\0", 7), std::string(9999, '\xFF')}) {
        EXPECT_EQ(caught([&] { KxException::sThrow(text); }), "KxException: " + text);
        EXPECT_EQ(caught([&] { HostError::sThrow(text); }), "HostError: " + text);
        EXPECT_EQ(caught([&] { KxException::sThrow(new KxException(text)); }), "KxException: " + text);
        EXPECT_EQ(caught([&] { KxException::sThrow(HostError(text).clone()); }), "HostError: " + text);
    }
}

TEST(ExceptionTest, OutlivesItsHandler) {
    KxHandle<KxException> kept;
    try {
        KxException::sThrow(new HostError("late", 42));
    } catch (KxHandle<HostError>& failure) {
        kept = failure;
    }
    EXPECT_EQ(caught([&] { KxException::sThrow(kept.get()); }), "HostError: late"); // again, and still held
    EXPECT_TRUE(kept->isUnshared());
    EXPECT_EQ(KxHandleCast<HostError>(KxHandle<KxException>(kept->clone()))->code, 42);
    kept = KxMake<HostError>("moved in");
    EXPECT_EQ(kept->getExceptionMessage(), "moved in");
}
