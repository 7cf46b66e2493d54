#pragma once

/** Marks what libkxutil exports. The libraries are built with hidden visibility. A type that is thrown, caught or
    downcast across a library boundary needs the mark too. */
#define KX_UTIL_API __attribute__((visibility("default")))
