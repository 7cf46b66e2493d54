#include "tools/kxsip/HeaderValue.h"

#include "tools/kxsip/ObjectText.h"

HeaderText HeaderText::sOf(const KxSipHeader& header) {
    try {
        return {header.getValueText(), nullptr};
    } catch (const KxHandle<KxException>& why) {
        return {KxString(), why};
    }
}

std::vector<HeaderValue> HeaderValue::sAllOf(const KxSipMessage& message) {
    std::vector<HeaderValue> values;
    for (const HeaderID id : message.getHeaderOrder()) {
        for (const KxSipHeader* header = message.getHeaderByID(id).get(); header != nullptr;
             header = header->getNext().get()) {
            values.push_back(
                {id, std::string(header->getToken().view()), classNameOf(*header), HeaderText::sOf(*header)});
        }
    }
    return values;
}
