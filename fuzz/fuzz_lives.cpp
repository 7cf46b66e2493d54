// Lives of messages. An input is a program (see LivesProgram): three messages begin as the one that it gives, and are
// edited, derived from each other, authenticated, moved headers between, framed and read again. Laws: an operation that
// only reads changes nothing, and returns the same for a copy. An edit changes only what it is to change, as a plain
// model of lines does. What throws changes nothing. A derived message leaves its parents unchanged, is of their dialog,
// can be read again, and has the key of its transaction. No text makes two lines of one. Messages that are written one
// after the other are framed and read as they were written. No object is part of two messages; a copy shares nothing
// that can be changed. Whatever is read with the right password is accepted. In the end, all memory is given back.

#include "fuzz/LivesWorld.h"

static void live(std::string_view input) {
    const LivesProgram program(input);
    KxByteArrayInputStream in(program.message());
    ReadMessage read(in);
    if (read.message.isNil()) {
        return;
    }
    Lives lives(read.message, program);
    read.message = nullptr;
    for (const LivesStep& step : program.steps()) {
        lives.step(step);
    }
    lives.finish();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const KxSipCallid cached; // the name of this host
    const Block block(data, size);
    const std::int64_t before = liveObjects();
    live(block.view());
    same("all memory is given back", std::to_string(before), std::to_string(liveObjects()));
    return 0;
}
