// faults [--grammar=rfc] FILE...: what the fuzz targets do with messages and headers, with each allocation failing in
// turn. What fails is reported by std::bad_alloc, changes nothing, leaks nothing, and succeeds when it is repeated.

#include "fuzz/LivesWorld.h"
#include "fuzz/StartUp.h"
#include "tests/sipobject/support/AllocationFault.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <vector>

namespace {

struct Operation {
    std::string name;
    std::function<std::string(const LivesMessage&)> run; ///< Returns what it found or threw.
};

std::size_t g_faults = 0;

LivesMessage readOf(const std::string& text) {
    const LivesMessage message = KxSipReading::sRead(text).message;
    if (message.isNil()) {
        fail("the message can be read", text, "");
    }
    return message;
}

/** Runs the operation on a new message with the n-th allocation failing; returns whether there are that many. */
bool tried(const Operation& operation, const std::string& text, const std::string& outcome, const std::string& after,
           std::uint64_t n) {
    const LivesMessage message = readOf(text);
    const std::string before = written(*message);
    bool hasFailed = false;
    bool isThrown = false;
    std::string got;
    try {
        got = outcomeOf([&] {
            const AllocationFault fault(n, hasFailed);
            return operation.run(message);
        });
    } catch (const std::bad_alloc&) {
        isThrown = true;
    }
    if (!hasFailed) {
        return false;
    }
    const std::string name = operation.name + ", allocation " + std::to_string(n);
    if (isThrown || got.find("failed to allocate a SIP message body") != got.npos) {
        same(("what fails changes nothing: " + name).c_str(), before, written(*message));
        got = outcomeOf([&] { return operation.run(message); });
    }
    same(("what failed succeeds when it is repeated: " + name).c_str(), outcome, got);
    same(("what failed does the same when it is repeated: " + name).c_str(), after, written(*message));
    return true;
}

void tryAll(const Operation& operation, const std::string& text) {
    std::string outcome;
    std::string after;
    {
        const LivesMessage message = readOf(text);
        outcome = outcomeOf([&] { return operation.run(message); });
        after = written(*message);
    }
    for (std::uint64_t n = 1;; ++n, ++g_faults) {
        const std::int64_t live = liveObjects();
        const bool hasFailed = tried(operation, text, outcome, after, n);
        same(("what fails leaks nothing: " + operation.name).c_str(), std::to_string(live),
             std::to_string(liveObjects()));
        if (!hasFailed) {
            return;
        }
    }
}

/** What is done to a whole message. */
std::vector<Operation> operationsOfMessages() {
    static const LivesProgram program("");
    std::vector<Operation> all;
    const auto add = [&all](const std::string& name, auto run) { all.push_back({name, run}); };
    add("read it", [](const LivesMessage& m) { return MessageReading(*m).text(); });
    add("read it anew", [](const LivesMessage& m) {
        const KxSipReading reading = KxSipReading::sRead(written(*m));
        return reading.message.isNil() ? std::string(reading.errorText.view()) : written(*reading.message);
    });
    add("read its response", [](const LivesMessage& m) {
        const LivesMessage response = LivesDerivation(m, 4, 50).derived;
        return response.isNil() ? std::string() : MessageReading(*response).text().substr(0, 0);
    });
    add("frame it", [](const LivesMessage& m) {
        LivesWire wire;
        wire.take(*m, written(*m));
        wire.check(7, false);
        return std::string();
    });
    for (unsigned how = 0; how < 9; ++how) {
        all.push_back({"derive " + std::to_string(how),
                       [how](const LivesMessage& m) { return thrownBy([&] { LivesDerivation(m, how, 50); }); }});
    }
    for (unsigned flags = 0; flags < 8; ++flags) {
        add("make " + std::to_string(flags), [flags](const LivesMessage& m) {
            const LivesMessage other = LivesDerivation(m, 4, 50).derived;
            makeMessage(m, other.isNil() ? m : other, program, {15, 0, flags, 16});
            return std::string();
        });
        add("dialog " + std::to_string(flags), [flags](const LivesMessage& m) {
            const LivesMessage other = LivesDerivation(m, 4, 50).derived;
            LivesDialog dialog;
            dialog.step(m, other.isNil() ? m : other, flags % 2, "INFO");
            dialog.step(m, other.isNil() ? m : other, flags, "INFO");
            return std::string();
        });
    }
    for (unsigned flags = 0; flags < 24; ++flags) {
        add("digest " + std::to_string(flags), [flags](const LivesMessage& m) {
            const auto request = as<KxSipRequest>(m);
            return thrownBy([&] {
                if (!request.isNil()) {
                    LivesDigest(*request, program, {13, 0, flags, 2}).run();
                }
            });
        });
    }
    return all;
}

/** Every setter of the header that the message was given. */
void editEach(const std::string& name, const std::string& text) {
    static const std::string given[] = {"1", "sip:a-long-user@host.example.com;x=a-value-of-a-block-of-its-own"};
    for (unsigned which = 0; which < 64; ++which) {
        for (const std::string& value : given) {
            const auto edit = [&]<class T>(const T& as) {
                tryAll({"edit " + std::to_string(which) + " of " + name,
                        [&](const LivesMessage& m) {
                            KxSipHeader* const header = m->getHeader(name).get();
                            if (header == nullptr || (name == "Via" && which % 11 == 6)) { // a random branch
                                return std::string();
                            }
                            return thrownBy([&] { LivesEdit<T>(*header, which, as).run(); });
                        }},
                       text);
            };
            edit(value);
            edit(KxString(std::string_view(value)));
        }
    }
}

/** The lines of a message of its mandatory headers and one more. */
void editHeaders(const std::string& message) {
    std::vector<std::string> lines;
    const std::size_t end = message.find("\r\n\r\n") + 2;
    for (std::size_t at = message.find('\n') + 1; at < end; at = message.find('\n', at) + 1) {
        lines.push_back(message.substr(at, message.find('\n', at) + 1 - at));
    }
    const std::string start = message.substr(0, message.find('\n') + 1);
    const auto nameOf = [](const std::string& line) { return line.substr(0, line.find(':')); };
    static const std::set<std::string> mandatory{"Via", "From", "To", "Call-ID", "CSeq", "Contact", "Max-Forwards"};
    for (const std::string& line : lines) {
        if (nameOf(line) == "Content-Length") {
            continue;
        }
        std::string text = start;
        for (const std::string& other : lines) {
            text += &other == &line || mandatory.count(nameOf(other)) != 0 ? other : "";
        }
        editEach(nameOf(line), text + "Content-Length: 0\r\n\r\n");
    }
}

} // namespace

int main(int argc, char** argv) {
    startUp(argc, argv);
    const std::vector<Operation> operations = operationsOfMessages();
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        for (const Operation& operation : operations) {
            tryAll(operation, text);
        }
        editHeaders(text);
    }
    std::printf("%zu allocations failed\n", g_faults);
    return g_faults == 0 ? 1 : 0;
}
