// Failing allocations, input that ends early, output that takes no more. A failed operation leaks nothing, changes no
// object, and succeeds when it is repeated.

#include "core/MemAllocatorFaults.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "tests/sipobject/support/Derivation.h"
#include "tests/sipobject/support/HeaderSupport.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <iostream>
#include <new>
#include <stdexcept>

#if !defined(KX_PLAIN_MALLOC) || !defined(__clang__) // clang's sanitizers bring their own into the program
/** Plain allocations count towards the armed fault as those of the pool do; they are then made as usual. */
void* operator new(std::size_t size) {
    Oskan::MemPool::sFaultPoint();
    static const auto next = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "_Znwm"));
    return next(size);
}
void* operator new[](std::size_t size) {
    Oskan::MemPool::sFaultPoint();
    static const auto next = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "_Znam"));
    return next(size);
}
#endif

using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

using Message = KxHandle<KxSipMessage>;
using Made = KxHandle<KxObject>; ///< A message, bytes, or nil.

/** An operation on a message; its effect shows in what the message writes. */
struct Operation {
    const char* name;
    Made (*run)(const Message& message);
};

Made bytesOf(const KxString& text) {
    return KxByteArray::sCreate(text.length(), text.c_str());
}

/** Thrown if an operation does not apply to the message. */
struct Unfit {};

template <class T>
T& need(const KxHandle<T>& object) {
    if (object.isNil()) {
        throw Unfit();
    }
    return *object;
}

KxSipRequest& request(const Message& message) {
    return need(as<KxSipRequest>(message));
}

template <class H>
H& first(const Message& message) {
    return need(KxHandleCast<H>(message->getHeader(H::sToken)));
}

KxSipDigestCredentialsInfo& credentials(const Message& message) {
    return need(KxHandleCast<KxSipDigestCredentialsInfo>(first<KxSipAuthorizationHeader>(message).getCredentials()));
}

KxSipURL& senderURL(const Message& message) {
    return need(KxHandleCast<KxSipURL>(need(need(message->getFromHeader()).getNameAddress()).getURI()));
}

/** Changes a list that was handed out. */
void change(const KxHandle<KxParameters>& list) {
    list->setValue("x-long-enough-a-name", KxString("a text of its own block"));
}

/** A copy of the message; both share their lists until one is changed. */
Message copied(const Message& message) {
    return Message(static_cast<KxSipMessage*>(message->clone()));
}

const Operation kOperations[] = {
    {"copy", [](const Message& m) { return Made(m->clone()); }},
    {"response", [](const Message& m) { return Made(derive(m, "response 200 body")); }},
    {"ACK", [](const Message& m) { return Made(derive(m, "ack body")); }},
    {"BYE", [](const Message& m) { return Made(derive(m, "bye")); }},
    {"CANCEL", [](const Message& m) { return Made(derive(m, "cancel")); }},
    {"PRACK", [](const Message& m) { return Made(derive(m, "prack body")); }},
    {"key", [](const Message& m) { return bytesOf(m->createKey()); }},
    {"write",
     [](const Message& m) {
         KxByteArrayOutputStream out(16);
         m->serialize(out);
         return Made(out.toByteArray());
     }},
    {"Request-URI", [](const Message& m) { return bytesOf(request(m).getNameAddress()->getURI()->getString()); }},
    {"add first", [](const Message& m) { return request(m).insertViaHeader("192.0.2.9", 5070, "TCP"), Made(); }},
    {"add last", [](const Message& m) { return m->addHeader(KxMake<KxSipRouteHeader>("<sip:h;lr>"), false), Made(); }},
    {"add to a chain", [](const Message& m) { return m->addHeader(KxMake<KxSipSupportedHeader>("x"), false), Made(); }},
    {"add single",
     [](const Message& m) { return m->addSingleHeader(KxMake<KxSipUnknownHeader>("X-A", "1"), false), Made(); }},
    {"remove", [](const Message& m) { return m->removeHeader("Via"), Made(); }},
    {"set body",
     [](const Message& m) { return m->setBody("a long enough body", "application/x-of-the-host"), Made(); }},
    {"set no body", [](const Message& m) { return m->setBody("", "", 0), Made(); }},
    {"set URI",
     [](const Message& m) {
         const auto uri = KxMake<KxURI>("");
         uri->parse("urn:a rather long text with <angle> brackets");
         return request(m).setURI(uri), Made();
     }},
    {"set address",
     [](const Message& m) { return request(m).setPreferredIpAddr("2001:db8:1111:2222:3333:4444:5555:6666"), Made(); }},
    {"set phrase",
     [](const Message& m) { return need(as<KxSipResponse>(m)).setReasonPhrase("A phrase of its own block"), Made(); }},
    {"set parameter of a list that a copy shares",
     [](const Message& m) {
         const Message copy = copied(m);
         return first<KxSipContactHeader>(m).setExpires("a text of its own block"), Made();
     }},
    {"set user", [](const Message& m) { return credentials(m).setUsername("a user name of its own block"), Made(); }},
    {"validate",
     [](const Message& m) {
         return credentials(m).validate("a user name of its own block", "a long password", "a rather long realm"),
                Made();
     }},
    {"tag", [](const Message& m) { return need(m->getToHeader()).setTag("a tag of its own block, no word"), Made(); }},
    {"set parameter of a URL",
     [](const Message& m) { return senderURL(m).setParameter("x", KxString("a text of its own block")), Made(); }},
    {"remove parameters",
     [](const Message& m) {
         senderURL(m).removeParameter("user");
         senderURL(m).clearHeaders();
         return first<KxSipViaHeader>(m).removeBranch(), Made();
     }},
    {"list of a Via", [](const Message& m) { return change(first<KxSipViaHeader>(m).getParameters()), Made(); }},
    {"headers of a URL", [](const Message& m) { return change(senderURL(m).getHeaders()), Made(); }},
    {"list that a copy shares",
     [](const Message& m) {
         const Message copy = copied(m);
         return change(first<KxSipViaHeader>(m).getParameters()), Made();
     }},
    {"lists of copies",
     [](const Message& m) {
         const Message copy = copied(m);
         change(first<KxSipViaHeader>(copy).getParameters());
         first<KxSipContactHeader>(copy).setParameter("x", KxString("a text of its own block"));
         first<KxSipContactHeader>(copy).removeParameter("expires");
         change(first<KxSipContactHeader>(copy).getParameters());
         change(senderURL(copy).getParameters());
         change(senderURL(copy).getHeaders());
         return Made(copy);
     }},
    {"digest", [](const Message& m) { return Made(credentials(m).getRequestDigest()); }},
};

/** The result of an operation, for comparison. */
std::string textOf(const Made& made) {
    if (const auto* const message = dynamic_cast<const KxSipMessage*>(made.get())) {
        return dumpOf(*message);
    }
    const auto* const bytes = dynamic_cast<const KxByteArray*>(made.get());
    return bytes == nullptr ? "" : std::string(bytes->view());
}

/** Runs f with the n-th allocation failing, and returns its outcome. */
template <class F>
std::string failing(std::uint64_t n, F f) {
    return outcomeOf([&] {
        struct Armed {
            explicit Armed(std::uint64_t count) { Oskan::MemAllocatorFaults::sFailAfter(count); }
            ~Armed() { Oskan::MemAllocatorFaults::sDisarm(); }
        };
        Made made;
        {
            const Armed armed(n);
            made = f();
        }
        return textOf(made);
    });
}

const auto kNoMemory = AnyOf("std::bad_alloc: std::bad_alloc", StartsWith("KxSipParseError: failed to allocate a SIP "
                                                                          "message body of size "));
/** Calls f with the text of every message of the samples and golden files. */
template <class F>
void forEveryMessage(F f) {
    for (const char* folder : {"samples", "tests/messages"}) {
        for (const std::string& text : messagesOf(folder)) {
            SCOPED_TRACE(text);
            f(text);
        }
    }
}

/** Takes `capacity` bytes, then throws; offers a window of the given size, or none. */
class NarrowSink final : public KxOutputStream {
public:
    explicit NarrowSink(std::size_t capacity, std::size_t window = 0) : m_capacity(capacity), m_window(window, '\0') {
        offer();
    }
    std::string taken() {
        empty();
        return m_taken;
    }
    void flush() override { empty(); }

protected:
    void writeBeyondWindow(const char* bytes, std::size_t count) override {
        empty();
        take({bytes, count});
    }

private:
    void offer() { setWindow(m_window.data(), m_window.data() + m_window.size()); }
    void empty() {
        const auto used = static_cast<std::size_t>(cursor() - m_window.data());
        offer();
        take({m_window.data(), used});
    }
    void take(std::string_view bytes) {
        const std::size_t fits = std::min(bytes.size(), m_capacity - m_taken.size());
        m_taken += bytes.substr(0, fits);
        if (fits != bytes.size()) {
            throw std::runtime_error("full");
        }
    }

    std::size_t m_capacity;
    std::string m_window;
    std::string m_taken;
};

} // namespace

TEST(FaultTest, ReadingWithoutMemory) {
    int faults = 0;
    forEveryMessage([&faults](const std::string& text) {
        const std::string usual = dumpOf(*readMessage(text));
        for (const std::size_t step : {std::size_t{0}, std::size_t{5}}) { // from memory, and from a slow stream
            for (std::uint64_t n = 1;; ++n, ++faults) {
                const Balance balance;
                KxByteArrayInputStream memory{std::string_view(text)};
                DribblingStream slow(text, step);
                KxInputStream& in = step == 0 ? static_cast<KxInputStream&>(memory) : slow;
                const std::string outcome = failing(n, [&in] { return Made(KxSipMessage::sConstructFrom(in)); });
                if (outcome == usual) {
                    break;
                }
                ASSERT_THAT(outcome, kNoMemory) << n;
            }
            EXPECT_EQ(dumpOf(*readMessage(text)), usual);
        }
    });
    std::cout << faults << " faults\n";
}

TEST(FaultTest, WorkingWithoutMemory) {
    int faults = 0;
    forEveryMessage([&faults](const std::string& text) {
        for (const Operation& operation : kOperations) {
            const auto run = [&operation](const Message& on) {
                return outcomeOf([&] { return textOf(operation.run(on)); });
            };
            const Message usual = readMessage(text);
            const std::string before = written(*usual);
            std::string outcome;
            try {
                outcome = run(usual);
            } catch (const Unfit&) {
                continue;
            }
            const std::string after = written(*usual);
            for (std::uint64_t n = 1;; ++n, ++faults) {
                const Balance balance;
                const Message message = readMessage(text);
                const std::string got = failing(n, [&] { return operation.run(message); });
                if (got == outcome) {
                    break;
                }
                ASSERT_THAT(got, kNoMemory) << operation.name << ' ' << n;
                EXPECT_EQ(written(*message), before) << operation.name << " failing at " << n;
                EXPECT_EQ(run(message), outcome) << operation.name << " failing at " << n;
                EXPECT_EQ(written(*message), after) << operation.name << " failing at " << n;
            }
        }
    });
    std::cout << faults << " faults\n";
}

/** An input that ends early is read up to its end, with the same result from every stream. */
TEST(FaultTest, InputThatEnds) {
    forEveryMessage([](const std::string& text) {
        for (std::size_t length = 0; length < text.size(); length += 1 + text.size() / 1000) {
            const Balance balance;
            const std::string dump = readEveryWay(std::string_view(text).substr(0, length), readDump);
            ASSERT_THAT(dump, AnyOf(StartsWith("Kx"), HasSubstr("\nstatus "))) << length;
        }
    });
}

TEST(FaultTest, OutputThatFails) {
    forEveryMessage([](const std::string& text) {
        const Balance balance;
        const Message message = readMessage(text);
        const std::string whole = written(*message);
        for (std::size_t capacity = 0; capacity < whole.size(); capacity += 1 + whole.size() / 1000) {
            for (const std::size_t window : {0U, 7U, 4096U}) {
                NarrowSink full(capacity, window);
                ASSERT_EQ(outcomeOf([&] { return message->serialize(full), ""; }), "std::runtime_error: full");
                ASSERT_EQ(full.taken(), whole.substr(0, capacity));
            }
            NarrowSink narrow(whole.size(), capacity);
            message->serialize(narrow);
            ASSERT_EQ(narrow.taken(), whole) << "in pieces of " << capacity;
        }
        EXPECT_EQ(written(*message), whole);
    });
}
