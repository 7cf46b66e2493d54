#pragma once

#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/Progress.h"

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

/** The keys (callKeyOf) of calls. */
using CallKeys = std::unordered_set<std::string>;

/** Whether all inputs are files that can be read several times. */
bool canReadAgain(const std::vector<std::string>& files);

/** Reads the captures, without any note to the user, and returns the calls with a message that the filter accepts; or only
    the call with the number that CallBook gives it, if that is one of them. */
CallKeys findCalls(const std::vector<std::string>& files, const MessageFilter& filter,
                   std::optional<std::size_t> number, Progress* progress);

/** Throws CaptureError if the message is not from a capture, with what the command needs it for. */
void demandCapture(const ReadMessage& read, const char* need);
