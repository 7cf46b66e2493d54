#include "tools/kxsip/MessageSource.h"

#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/capture/CaptureReader.h"

std::unique_ptr<MessageSource> MessageSource::sOpen(const InputFile& file) {
    if (CaptureFile::sIsCapture(file.bytes)) {
        try {
            return std::make_unique<CaptureReader>(file);
        } catch (const CaptureError& why) {
            throw CaptureError("cannot read " + printable(file.name) + ": " + why.what());
        }
    }
    return std::make_unique<MessageReader>(file);
}
