// Whole messages. Laws: a message that is accepted can be written (except with credentials that have no response and do
// not name an MD5 algorithm). The written text is read again and written as the same bytes, in the classic grammar
// except for the changes that a header line or a URI undergoes when it is read and written on its own (see fuzz_header
// and fuzz_url). A copy is written as its original. Every stream gets the same bytes and is flushed once. A stream that
// delivers one byte at a time reads as memory does. Full logging does not change the result. KxSipReading reads as
// sConstructFrom does; the response that it makes is read without a fault if it is complete, and is at most 512 bytes
// longer than the request.

#include "fuzz/MessageRound.h"
#include "fuzz/Traced.h"
#include "sipobject/messages/KxSipReading.h"

static void checkReading(std::string_view bytes, const ReadMessage& plain, std::size_t unread) {
    const KxSipReading reading = KxSipReading::sRead(bytes);
    const bool skips = bytes.starts_with('\r') || bytes.starts_with('\n'); // line ends before the message
    if (!skips) {
        same("both ways of reading agree", plain.text, outcomeOf([&reading] {
                 return reading.message.isNil() ? std::string("! ").append(reading.errorText.view())
                                                : written(*reading.message);
             }));
        same("both stop at one place", std::to_string(bytes.size() - unread), std::to_string(reading.consumed));
    }
    if (const KxHandle<KxSipResponse> answer = reading.response(400, "t"); !answer.isNil()) {
        const std::string text = written(*answer);
        KxByteArrayInputStream in{std::string_view(text)};
        const ReadMessage again(in);
        const bool isWhole = answer->getStatus() == KX_STATUS_VALID;
        if (text.size() > bytes.size() + 512 || (isWhole && (again.message.isNil() || !again.message->isValid()))) {
            fail("a response is short, and can be read", bytes, text);
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Block block(data, size);
    KxByteArrayInputStream in(block.view());
    const ReadMessage first(in);
    checkReading(block.view(), first, in.available());
    Dribble dribble(block.view());
    same("a stream that dribbles reads as memory", first.text, ReadMessage(dribble).text);
    if (size % 8 == 0) { // logging is slow
        const Traced traced;
        KxByteArrayInputStream again(block.view());
        same("logging changes nothing", first.text, ReadMessage(again).text);
    }
    if (!first.message.isNil()) {
        checkWriting(*first.message, first.text, 1);
        if (isRFC()) {
            KxByteArrayInputStream again{std::string_view(first.text)};
            same("what was written is written again", first.text, ReadMessage(again).text);
        } else {
            checkSecondRound(*first.message, first.text, first.message->isValid());
        }
    }
    return 0;
}
