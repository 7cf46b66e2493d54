#pragma once

#include "common/Answers.h"
#include "util/KxException.h"

#include <log4cplus/loggingmacros.h>

#include <exception>

inline log4cplus::Logger& logger() {
    static log4cplus::Logger logger = log4cplus::Logger::getInstance("gateway");
    return logger;
}

/** Calls `work` and logs what it throws, so that no input from the network can end the service. */
template <class Work>
void guarded(const char* what, const Work& work) {
    try {
        work();
    } catch (const KxHandle<KxException>& failure) {
        LOG4CPLUS_INFO(logger(), what << ": " << printable(failure->getExceptionMessage()));
    } catch (const std::exception& failure) {
        LOG4CPLUS_ERROR(logger(), what << ": " << failure.what());
    }
}
