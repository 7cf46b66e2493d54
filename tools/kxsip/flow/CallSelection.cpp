#include "tools/kxsip/flow/CallSelection.h"

#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/capture/CaptureFile.h"
#include "tools/kxsip/flow/CallBook.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

/** A call of which only the key and the number are wanted. */
struct NamedCall {
    std::size_t number = 0;
    std::string key;

    void add(const ReadMessage& read, const MessageFacts& facts, std::size_t) {
        if (key.empty()) {
            key = callKeyOf(read, facts);
        }
    }
    void finish() {}
    void cutOff(const std::string&) {}
};

} // namespace

bool canReadAgain(const std::vector<std::string>& files) {
    return std::all_of(files.begin(), files.end(), [](const std::string& name) {
        std::error_code ignored;
        return name != "-" && std::filesystem::is_regular_file(name, ignored);
    });
}

CallKeys findCalls(const std::vector<std::string>& files, const MessageFilter& filter,
                   std::optional<std::size_t> number, Progress* progress) {
    CallBook<NamedCall> book;
    Reading reading{files, nullptr, progress};
    reading.isSilent = true;
    forEachMessage(reading, [&](const ReadMessage& read) {
        demandCapture(read, "");
        book.add(read, filter.accepts(read));
    });
    CallKeys keys;
    for (NamedCall& call : book.finish()) {
        if (!number || call.number == *number) {
            keys.insert(std::move(call.key));
        }
    }
    return keys;
}

void demandCapture(const ReadMessage& read, const char* need) {
    if (!read.origin) {
        throw CaptureError(printable(read.file) + " is no capture: " + need +
                           " needs times and addresses; give a pcap or pcapng file");
    }
}
