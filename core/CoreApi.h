#pragma once

/** Marks what libkxcore exports. The libraries are built with hidden visibility; a type that is thrown,
    caught or downcast across a library border carries the mark as well. */
#define KX_CORE_API __attribute__((visibility("default")))
