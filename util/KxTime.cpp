#include "util/KxTime.h"

#include <chrono>

KxTime KxTime::sGetCurrentTime() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count()};
}
