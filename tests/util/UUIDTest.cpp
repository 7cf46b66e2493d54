#include "util/UUID.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

static std::string create() {
    char buffer[38] = "?????????????????????????????????????";
    UUID::uuid_create_string(buffer);
    EXPECT_EQ(buffer[36], '\0');
    return buffer;
}

TEST(UUIDTest, IsARandomOneOfRfc4122) {
    std::set<char> variants;
    for (int i = 0; i < 1000; ++i) {
        std::string text = create();
        ASSERT_EQ(text[14], '4');
        variants.insert(text[19]);
        std::replace_if(
            text.begin(), text.end(), [](char c) { return std::strchr("0123456789abcdef", c); }, 'x');
        ASSERT_EQ(text, "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx");
    }
    EXPECT_EQ(variants, (std::set<char>{'8', '9', 'a', 'b'}));
}

TEST(UUIDTest, ForkedProcessDrawsItsOwn) {
    create(); // buffers random bytes, which the child must not use too
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        char buffer[37];
        UUID::uuid_create_string(buffer);
        _exit(write(ends[1], buffer, 36) == 36 ? 0 : 1);
    }
    ASSERT_GT(child, 0);
    const std::string mine = create();
    char theirs[36];
    EXPECT_EQ(read(ends[0], theirs, sizeof theirs), 36);
    EXPECT_NE(mine, std::string(theirs, sizeof theirs));
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    close(ends[0]);
    close(ends[1]);
}
