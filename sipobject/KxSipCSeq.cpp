#include "sipobject/KxSipCSeq.h"

#include <cstdlib>

KxSipCSeq::KxSipCSeq() {
    setValue(static_cast<std::uint32_t>(std::rand() % 0xFFFFFF));
}
