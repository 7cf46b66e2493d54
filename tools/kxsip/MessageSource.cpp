#include "tools/kxsip/MessageSource.h"

#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/NotSip.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/capture/CaptureReader.h"

std::unique_ptr<MessageSource> MessageSource::sOpen(Input& input, bool keepsPackets) {
    while (input.bytes().size() < CaptureFile::kMagicLength && input.more()) {
    }
    if (CaptureFile::sIsCapture(input.bytes())) {
        try {
            return std::make_unique<CaptureReader>(input, keepsPackets);
        } catch (const CaptureError& why) {
            throw CaptureError("cannot read " + printable(input.name()) + ": " + why.what());
        }
    }
    if (keepsPackets) {
        throw CaptureError("cannot take packets from " + printable(input.name()) + ": it is no capture");
    }
    if (NotSip::sIs(input.bytes())) {
        return std::make_unique<NotSip>(input.bytes());
    }
    return std::make_unique<MessageReader>(input);
}
