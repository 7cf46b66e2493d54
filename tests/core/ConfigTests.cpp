#include "core/Exception.h"
#include "core/GlobalConfig.h"
#include "core/ParameterInfoDB.h"
#include "core/SingletonRegistry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

using namespace Oskan;

TEST(ParameterInfoDBTest, RefusesEmptyAndRepeatedNames) {
    ParameterInfoDB& db = ParameterInfoDB::getNonConstInstance();
    db.addParameter("test.db", ParameterInfo::Type::Integer, "5", "first");
    EXPECT_THROW(db.addParameter("test.db", ParameterInfo::Type::Text, "6", "second"), Oskan::Exception);
    EXPECT_THROW(db.addParameter("", ParameterInfo::Type::Text, "", ""), Oskan::Exception);
    const ParameterInfo* const info = ParameterInfoDB::getInstance().find("test.db");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->defaultValue, "5");
    EXPECT_EQ(ParameterInfoDB::getInstance().find("test.d"), nullptr);
}

TEST(GlobalConfigTest, ReadsWhatIsSetElseTheDefault) {
    ParameterInfoDB::getNonConstInstance().addParameter("test.on", ParameterInfo::Type::Boolean, "true", "");
    ParameterInfoDB::getNonConstInstance().addParameter("test.off", ParameterInfo::Type::Boolean, "false", "");
    // name, set to (null: not set), whether that can be read, value
    const std::tuple<const char*, const char*, bool, bool> rows[] = {
        {"test.unknown", nullptr, false, false},   {"test.off", nullptr, true, false},
        {"test.off", "TrUe", true, true},          {"test.on", "FALSE", true, false},
        {"test.on", "yes", false, false},          {"test.on", "", false, false},
        {"test.on", "true ", false, false},        {"test.on", "tru", false, false},
        {"test.unregistered", "true", true, true}, {"test.on", nullptr, true, true}, // back to its default
    };
    GlobalConfig& config = GlobalConfig::getInstance();
    for (const auto& [name, set, isKnown, expected] : rows) {
        SCOPED_TRACE(std::string(name) + "=" + (set ? set : "(default)"));
        if (set) {
            config.set(name, set);
        }
        for (const bool before : {false, true}) {
            bool value = before;
            EXPECT_EQ(config.getBool(name, value), isKnown);
            EXPECT_EQ(value, isKnown ? expected : before);
        }
        config.unset(name);
    }
}

TEST(GlobalConfigThreadTest, ValuesAreSetReadAndUnsetAtOnce) {
    GlobalConfig& config = GlobalConfig::getInstance();
    const auto work = [&config](int thread) {
        for (int round = 0; round < 20000; ++round) {
            const std::string name = "test.of-a-thread." + std::to_string(thread * 10 + round % 10);
            bool value = false;
            config.set(name, "true");
            EXPECT_TRUE(config.getBool(name, value) && value) << name;
            config.unset(name);
            EXPECT_FALSE(config.getBool(name, value)) << name;
        }
    };
    const std::jthread threads[] = {std::jthread(work, 0), std::jthread(work, 1), std::jthread(work, 2)};
}

TEST(SingletonRegistryTest, MakesOneObjectAName) {
    SingletonRegistry& registry = SingletonRegistry::getInstance();
    EXPECT_THROW(registry.getOrCreate<std::string>(
                     "s.one", []() -> std::unique_ptr<std::string> { throw std::runtime_error("not today"); }),
                 std::runtime_error);
    std::string* const one = registry.getOrCreate<std::string>("s.one", [&] {
        registry.getOrCreate<int>("s.two", [] { return std::make_unique<int>(2); });
        return std::make_unique<std::string>("1");
    });
    EXPECT_EQ(registry.getOrCreate<std::string>("s.one", [] { return std::make_unique<std::string>("other"); }), one);
    const auto other = [] { return std::make_unique<int>(3); };
    EXPECT_EQ(*one, "1");
    EXPECT_EQ(*registry.getOrCreate<int>("s.two", other), 2);
    EXPECT_THROW(registry.getOrCreate<int>("s.one", other), Oskan::Exception);
}

TEST(SingletonRegistryThreadTest, ThreadsGetTheSameObject) {
    std::atomic<int> made{0};
    std::vector<int*> seen(4);
    {
        std::vector<std::jthread> threads;
        for (int*& slot : seen) {
            threads.emplace_back([&made, &slot] {
                slot = SingletonRegistry::getInstance().getOrCreate<int>("s.thread",
                                                                         [&] { return std::make_unique<int>(++made); });
            });
        }
    }
    EXPECT_EQ(made, 1);
    EXPECT_EQ(seen, std::vector<int*>(4, seen[0]));
}
