#pragma once

#include "core/MemAccounts.h"
#include "sipobject/messages/KxSipRequest.h"
#include "tests/core/LogCapture.h"
#include "tests/sipobject/support/Grammar.h"
#include "tests/util/Streams.h"
#include "util/KxByteArrayOutputStream.h"

#include <cxxabi.h>
#include <gmock/gmock.h>
#include <pthread.h>

#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <type_traits>
#include <typeinfo>

/** The name of the object's class. */
template <class T>
std::string className(const T& object) {
    char* const name = abi::__cxa_demangle(typeid(object).name(), nullptr, nullptr, nullptr);
    const std::string text(name == nullptr ? "?" : name);
    std::free(name);
    return text;
}

/** What f returns, if anything, or the class and text of what it throws. */
template <class F>
std::string outcomeOf(F f) {
    try {
        if constexpr (std::is_void_v<decltype(f())>) {
            f();
            return "";
        } else {
            return f();
        }
    } catch (const KxHandle<KxException>& failure) {
        return className(*failure) + ": " + std::string(failure->getExceptionMessage().view());
    } catch (const std::exception& failure) {
        return className(failure) + ": " + failure.what();
    }
}

#ifdef KX_PLAIN_MALLOC
/** The sanitizers are slow, and find the same faults with smaller sizes. */
inline constexpr std::size_t kShrink = 64;
#else
inline constexpr std::size_t kShrink = 1;
#endif

/** Texts, numbers and parameter lists with "|" between them. */
template <class... Values>
std::string joined(const Values&... values) {
    std::string all;
    const auto add = [&all]<class Value>(const Value& value) {
        if constexpr (std::integral<Value> || std::is_enum_v<Value>) {
            all += std::to_string(+value);
        } else if constexpr (requires { value->getString(); }) {
            all += value->getString();
        } else {
            all += value;
        }
        all += '|';
    };
    (add(values), ...);
    all.pop_back();
    return all;
}

/** What the object writes of itself. */
template <class T>
std::string written(const T& object) {
    KxByteArrayOutputStream out(16);
    object.serialize(out);
    return std::string(out.view());
}

/** Line breaks, control characters and bytes that are not ASCII are escaped. */
inline std::string escaped(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\r' || c == '\n') {
            shown += c == '\r' ? "\\r" : "\\n";
        } else if (byte < 32 || byte > 126) {
            shown += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        } else {
            shown.append(c == '\\' ? 2 : 1, c);
        }
    }
    return shown;
}

/** The line that one value of a header is written as, without its end. */
inline std::string lineOf(const KxSipHeader& value) {
    const KxHandle<KxSipHeader> alone(static_cast<KxSipHeader*>(value.clone()));
    EXPECT_TRUE(alone->getNext().isNil());
    const std::string line = written(*alone);
    return line.substr(0, line.size() - 2);
}

/** Every value of every header: the class and the line it is written as. */
inline std::string headersOf(const KxSipMessage& message) {
    std::string lines;
    for (const HeaderID id : message.getHeaderOrder()) {
        for (const KxSipHeader* value = message.getHeaderByID(id).get(); value; value = value->getNext().get()) {
            lines += className(*value) + ' ' + escaped(lineOf(*value)) + '\n';
        }
    }
    return lines;
}

inline std::string startLineOf(const KxSipMessage& message) {
    const std::string text = written(message);
    return text.substr(0, text.find("\r\n"));
}

/** The message as text: start line, status, headers and body, a line each. */
inline std::string dumpOf(const KxSipMessage& message) {
    std::string dump =
        escaped(startLineOf(message)) + "\nstatus " + std::to_string(message.getStatus()) + '\n' + headersOf(message);
    if (message.hasBody()) {
        const std::string_view body(message.getBody(), message.getStoredBodyLength());
        dump += "body " + std::to_string(body.size()) + ": " + escaped(body) + '\n';
    }
    return dump;
}

inline KxHandle<KxSipMessage> readMessage(std::string_view text) {
    const HeapText bytes(text);
    KxByteArrayInputStream in(bytes.view());
    return KxSipMessage::sConstructFrom(in);
}

inline KxHandle<KxSipMessage> copyOf(const KxSipMessage& message) {
    return KxHandle<KxSipMessage>(static_cast<KxSipMessage*>(message.clone()));
}

inline KxInetAddress addressOf(const char* text) {
    KxInetAddress address;
    EXPECT_TRUE(address.initFromAddress(text));
    return address;
}

/** A request with public parsing operations, which remains after they fail. */
class OpenRequest : public KxSipRequest {
public:
    OpenRequest() = default;
    explicit OpenRequest(const char* method) : KxSipRequest(KxString(method)) {}
    OpenRequest(const OpenRequest&) = default;
    OpenRequest* clone() const override { return new OpenRequest(*this); }
    using KxSipMessage::addHeaderByID;
    using KxSipMessage::asynchAddHeader;
    using KxSipMessage::checkValidity;
    using KxSipMessage::setStatus;
    using KxSipRequest::parse;
};

/** What one of the library's classes logs, while in scope. */
struct ClassLog : LogCapture {
    explicit ClassLog(const std::string& name, int level = log4cplus::DEBUG_LOG_LEVEL)
        : LogCapture(log4cplus::Logger::getInstance(name)) {
        log4cplus::Logger::getInstance(name).setLogLevel(level);
    }
};

/** The dump of the next message of the stream, or why there is none. */
inline std::string readDump(KxInputStream& in) {
    return outcomeOf([&in] { return dumpOf(*KxSipMessage::sConstructFrom(in)); });
}

/** What every message must carry, but for the length of a body; `method` is that of the CSeq. */
inline std::string requiredHeaders(std::string_view method) {
    return "Via: SIP/2.0/UDP 192.0.2.1;branch=z9hG4bK1\r\nFrom: <sip:a@example.com>;tag=1\r\n"
           "To: <sip:b@example.com>\r\nCall-ID: c@192.0.2.1\r\nCSeq: 1 " +
           std::string(method) + "\r\n";
}

inline std::string fileText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/** The files of a folder of the source tree, by name. */
inline std::vector<std::filesystem::path> filesOf(std::string_view folder, std::string_view extension) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(KX_SOURCE_DIR) / folder)) {
        if (entry.path().extension() == extension) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/** The texts of all messages that can be read in the files of a folder, several in a file. */
inline std::vector<std::string> messagesOf(std::string_view folder) {
    std::vector<std::string> messages;
    for (const std::filesystem::path& path : filesOf(folder, ".sip")) {
        const std::string file = fileText(path);
        KxByteArrayInputStream in{std::string_view(file)};
        for (std::string_view rest = file; readDump(in).find("\nstatus ") != std::string::npos; rest = in.window()) {
            messages.emplace_back(rest.substr(0, rest.size() - in.window().size()));
        }
    }
    return messages;
}

/** Expects that all that is allocated while it is in scope is freed. */
class Balance {
public:
    Balance() : m_before(live()) {}
    ~Balance() { EXPECT_EQ(live(), m_before); }

private:
    using Live = std::map<std::string_view, std::int64_t>;
    static Live live() {
        Live objects;
        for (const Oskan::MemAccountUsage& account : Oskan::MemAccounts::sList()) {
            if (account.usage.liveObjects != 0) {
                objects[account.name] = account.usage.liveObjects;
            }
        }
        return objects;
    }

    const Live m_before;
};

/** Runs f on a thread whose stack is too small for a recursion per value. The frames of sanitizers are larger. */
inline void onSmallStack(std::function<void()> f) {
#ifdef KX_PLAIN_MALLOC
    constexpr std::size_t kStack = 256 * 1024;
#else
    constexpr std::size_t kStack = 64 * 1024;
#endif
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
    pthread_t thread{};
    const auto run = [](void* work) -> void* {
        (*static_cast<std::function<void()>*>(work))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &f), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}
