#pragma once

#include <cstddef>
#include <cstdint>

/** Writes numbers as decimal digits. */
class KxDigits {
public:
    KxDigits() = delete;

    /** The most digits of a number. */
    static constexpr std::size_t kMost = 10;

    /** Writes the number, two digits at a time; returns the end of the digits. */
    [[gnu::always_inline]] static char* put(char* to, std::uint32_t number) {
        if (number >= 10000) [[unlikely]] {
            return putLong(to, number);
        }
        if (number >= 100) {
            to = putOneOrTwo(to, number / 100);
            return putTwo(to, number % 100);
        }
        return putOneOrTwo(to, number);
    }

private:
    /** The digits of 00 to 99. */
    static constexpr char kPairs[] = "0001020304050607080910111213141516171819"
                                     "2021222324252627282930313233343536373839"
                                     "4041424344454647484950515253545556575859"
                                     "6061626364656667686970717273747576777879"
                                     "8081828384858687888990919293949596979899";

    static char* putTwo(char* to, std::uint32_t number) {
        __builtin_memcpy(to, kPairs + std::size_t{2} * number, 2);
        return to + 2;
    }
    static char* putOneOrTwo(char* to, std::uint32_t number) {
        if (number >= 10) {
            return putTwo(to, number);
        }
        *to = static_cast<char>('0' + number);
        return to + 1;
    }
    /** For five digits or more. */
    [[gnu::always_inline]] static char* putLong(char* to, std::uint32_t number) {
        std::uint32_t power = 10000;
        std::size_t digits = 5;
        for (; digits != kMost && number / 10 >= power; power *= 10) {
            ++digits;
        }
        char* const end = to + digits;
        char* at = end;
        for (; number >= 100; number /= 100) {
            putTwo(at -= 2, number % 100);
        }
        putOneOrTwo(to, number);
        return end;
    }
};
