#pragma once

/** Marks the symbols that libkxsipheaders exports: see KX_SIP_API. */
#define KX_HEADERS_API __attribute__((visibility("default")))
