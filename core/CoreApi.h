#pragma once

/** Marks what libkxcore exports. The libraries are built with hidden visibility. A type that is thrown, caught or
    downcast across a library boundary needs the mark too. */
#define KX_CORE_API __attribute__((visibility("default")))
