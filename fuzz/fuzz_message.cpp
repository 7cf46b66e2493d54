// Whole messages. Law: what is accepted can be written (but for credentials without a response that name no MD5); what was
// written is read again and written as the same bytes, but for what a header line or a URI, read and written on its own,
// becomes (fuzz_header and fuzz_url look at those); a copy is written as its original; every stream is told the same
// bytes and flushed once; a stream that dribbles reads as memory does, and so does what is logged to the last detail.

#include "fuzz/MessageRound.h"
#include "fuzz/Traced.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Block block(data, size);
    KxByteArrayInputStream in(block.view());
    const ReadMessage first(in);
    Dribble dribble(block.view());
    same("a stream that dribbles reads as memory", first.text, ReadMessage(dribble).text);
    if (size % 8 == 0) { // logging takes its time
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
