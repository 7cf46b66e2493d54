#pragma once

#if __cplusplus < 202002L
#error "KxSipObject needs C++20: compile with -std=c++20 or later"
#endif

/** Marks what libkxcore exports. The libraries are built with hidden visibility. A type that is thrown, caught or
    downcast across a library boundary needs the mark too. */
#define KX_CORE_API __attribute__((visibility("default")))
