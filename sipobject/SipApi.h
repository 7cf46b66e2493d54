#pragma once

/** Marks the symbols that libkxsipobject exports. The libraries are built with hidden visibility; a type that is
    thrown, caught or downcast across a library boundary needs the mark too. */
#define KX_SIP_API __attribute__((visibility("default")))
