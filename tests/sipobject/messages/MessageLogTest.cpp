#include "core/Logger.h"
#include "tests/sipobject/support/MessageSupport.h"

const std::string kRequest = "INVITE sip:b SIP/2.0\r\n" + requiredHeaders("INVITE");
const std::string kResponse = "SIP/2.0 200 OK\r\n" + requiredHeaders("INVITE");
const std::string kNoBody = "Content-Length: 0\r\n\r\n";

template <class T>
static std::string streamed(const T& object) {
    std::ostringstream out;
    out << object;
    return out.str();
}

static std::string withoutCR(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

/** Logging untrusted input must not throw. */
TEST(MessageLogTest, WhatCannotBeWrittenEndsTheText) {
    const std::string credentials = "Authorization: Digest username=\"a\",realm=\"r\"\r\n";
    const KxHandle<KxSipMessage> message = readMessage(kRequest + credentials + "\r\n");
    KxByteArrayOutputStream wire;
    EXPECT_THROW(message->serialize(wire), KxHandle<KxException>);
    EXPECT_EQ(streamed(message),
              withoutCR(kRequest) + "Authorization: Digest Unsupported Algorithm: Only MD5 is supported !!!\n");
}

TEST(MessageLogTest, OtherObjectsAreWrittenAsTheirBytes) {
    EXPECT_EQ(streamed(KxHandle<KxSipMessage>()), "");
    EXPECT_EQ(streamed(KxHandle<KxByteArray>()), "");
    EXPECT_EQ(streamed(KxHandle<KxException>()), "");
    EXPECT_EQ(streamed(KxByteArray::sCreate(5, "\0\r\n\xFF.")), std::string("\0\r\n\xFF.", 5));
    EXPECT_EQ(streamed(KxMake<KxException>("what happened")), "what happened");
}

TEST(MessageLogTest, TheFirstLineTellsTheWay) {
    KxInetAddress given = addressOf("2001:db8::1");
    unsigned port = 5070;
    const std::tuple<std::string, bool, int, unsigned*, KxInetAddress*, std::string> rows[] = {
        {kResponse, true, 0, nullptr, nullptr, "RECEIVED SIP MESSAGE (RESPONSE) via UDP from 10.0.0.1:5060 :"},
        {kRequest, true, 1, nullptr, &given, "RECEIVED SIP MESSAGE (REQUEST) via TCP from 2001:db8::1:5060 :"},
        {kRequest, false, 2, &port, &given, "SENDING SIP MESSAGE (REQUEST) via TLS to 2001:db8::1:5070 :"},
        {kResponse, false, 99, nullptr, nullptr, "SENDING SIP MESSAGE (RESPONSE) via UNKNOWN to 10.0.0.1:5060 :"},
    };
    for (const auto& [head, received, transport, toPort, toAddress, line] : rows) {
        const KxHandle<KxSipMessage> message = readMessage(head + kNoBody);
        message->setConnectionAddress(addressOf("10.0.0.1"));
        message->setConnectionPort(5060);
        message->setConnectionTransport(static_cast<KxSocketImpl::Transport>(transport));
        std::ostringstream out;
        message->formatMessage(out, received, toPort, toAddress, Oskan::LogLevel::Debug);
        EXPECT_EQ(out.str(), line + "\n" + withoutCR(head + kNoBody) + "\n");
    }
    std::ostringstream out;
    readMessage(kRequest + kNoBody)->formatMessage(out, true, nullptr, nullptr, Oskan::LogLevel::Debug);
    EXPECT_THAT(out.str(), testing::StartsWith("RECEIVED SIP MESSAGE (REQUEST) via UDP from :0 :\nINVITE sip:b"));
}

TEST(MessageLogTest, IsOneRecordWhereTheLevelIsOnAndNothingIsWrittenWhereItIsOff) {
    LogCapture log;
    const KxHandle<KxSipMessage> message = readMessage(kRequest + kNoBody);
    Oskan::Logger logger("test.MessageLog");
    // a trace record shows whether the message was serialised
    log4cplus::Logger::getInstance("tandril.kx.KxSipMessage").setLogLevel(log4cplus::TRACE_LOG_LEVEL);
    log4cplus::Logger::getInstance("test.MessageLog").setLogLevel(log4cplus::WARN_LOG_LEVEL);
    log.records.clear();

    message->logMessage(logger, false, nullptr, nullptr, Oskan::LogLevel::Info);
    for (const std::string& text : log.texts()) {
        EXPECT_EQ(text.find("serialize"), std::string::npos) << text;
    }

    message->logMessage(logger, false, nullptr, nullptr, Oskan::LogLevel::Warn);
    const LogRecord ours{"test.MessageLog", log4cplus::WARN_LOG_LEVEL,
                         "SENDING SIP MESSAGE (REQUEST) via UDP to :0 :\n" + withoutCR(kRequest + kNoBody) + "\n",
                         "KxSipMessage", 179};
    EXPECT_EQ(std::ranges::count(log.records, ours), 1);
    EXPECT_EQ(std::ranges::count(log.records, "test.MessageLog", &LogRecord::logger), 1);
    EXPECT_THAT(log.texts(), testing::Contains(testing::HasSubstr("serialize")));
}
