// Whole messages. Laws: a message that is accepted can be written (except with credentials that have no response and do
// not name an MD5 algorithm). The written text is read again and written as the same bytes, except for the changes that
// a header line or a URI undergoes when it is read and written on its own (see fuzz_header and fuzz_url). A copy is
// written as its original. Every stream gets the same bytes and is flushed once. A stream that delivers one byte at a
// time reads as memory does. Full logging does not change the result.

#include "fuzz/MessageRound.h"
#include "fuzz/Traced.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Block block(data, size);
    KxByteArrayInputStream in(block.view());
    const ReadMessage first(in);
    Dribble dribble(block.view());
    same("a stream that dribbles reads as memory", first.text, ReadMessage(dribble).text);
    if (size % 8 == 0) { // logging is slow
        const Traced traced;
        KxByteArrayInputStream again(block.view());
        same("logging changes nothing", first.text, ReadMessage(again).text);
    }
    if (!first.message.isNil()) {
        checkWriting(*first.message, first.text, 1);
        checkSecondRound(*first.message, first.text, first.message->isValid());
    }
    return 0;
}
