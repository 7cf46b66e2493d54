#include "core/Assertion.h"

#include "LogCapture.h"
#include "core/DynCastAssert.h"
#include "core/Fallible.h"
#include "core/Logger.h"

#include <gmock/gmock.h>

#include <cstdio>

using Oskan::Assertion;
using testing::AllOf;
using testing::HasSubstr;

namespace {

void print(const LogRecord& record) {
    std::fprintf(stderr, "[%s %d %s]\n", record.logger.c_str(), record.level, record.text.c_str());
}

struct Base {
    virtual ~Base() = default;
};
struct KxSipURL : Base {};
struct Derived : KxSipURL {};
struct Sibling : Base {};

using AssertionDeathTest = DeathTest;
using DynCastAssertDeathTest = DeathTest;

} // namespace

TEST_F(AssertionDeathTest, ReportsToLoggerAndStderrAndStops) {
    const auto dies = [](void (*fail)(), const std::string& logger, const std::string& text) {
        const auto failLogged = [&] {
            LogCapture capture(log4cplus::Logger::getRoot(), print);
            fail();
        };
        EXPECT_DEATH(failLogged(),
                     AllOf(testing::StartsWith(text + "\n"), HasSubstr("[" + logger + " 50000 " + text + "]")));
    };
    dies([] { Assertion(false, "pObj!=0", "KxHandle.h", 42); }, "tandril.infra.Assertion",
         "Assertion failed: pObj!=0, file KxHandle.h, line 42");
    dies([] { Assertion(false, "!m_Method.empty()"); }, "tandril.infra.Assertion",
         "Assertion failed: !m_Method.empty()");
    dies([] { Assertion(false, "a", Oskan::Logger("tandril.own"), "f", 1); }, "tandril.own",
         "Assertion failed: a, file f, line 1");
    EXPECT_DEATH(OSKAN_ASSERT(1 + 1 == 3), HasSubstr("1 + 1 == 3, file " __FILE__ ", line "));
}

TEST(DynCastAssertTest, GivesTheObject) {
    Derived derived;
    const Base* const pDerived = &derived;
    const KxSipURL* const target = OSKAN_DYNCAST_ASSERT(KxSipURL, pDerived);
    EXPECT_EQ(target, &derived);
}

TEST_F(DynCastAssertDeathTest, ReportsTheCastAsWritten) {
    Sibling sibling;
    Base* pObject = &sibling;
    EXPECT_DEATH(OSKAN_DYNCAST_ASSERT(KxSipURL, pObject), HasSubstr("OSKAN_DYNCAST_ASSERT(KxSipURL, pObject)"));
    pObject = nullptr;
    EXPECT_DEATH(OSKAN_DYNCAST_ASSERT(KxSipURL, pObject),
                 AllOf(HasSubstr("OSKAN_DYNCAST_ASSERT(KxSipURL, pObject)"), HasSubstr("null")));
}

TEST_F(AssertionDeathTest, ReadingAnInvalidFallibleStops) {
    const Oskan::Fallible<int> none;
    EXPECT_DEATH(static_cast<void>(none.get()), "Fallible used in invalid state");
}
