#include "util/KxViewInputStream.h"

std::size_t KxViewInputStream::readSome(char*, std::size_t) {
    return 0; // the window holds all bytes
}
