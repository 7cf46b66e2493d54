#include "tools/kxsip/WireView.h"

#include "tools/kxsip/ObjectText.h"

#include <iostream>

void WireView::show(const ReadMessage& read) {
    if (read.isRefused()) {
        std::cerr << "kxsip: " << read.file << ", message " << read.index << ": " << classNameOf(*read.error) << ": "
                  << read.error->getExceptionMessage() << '\n';
    } else {
        m_out << serialized(*read.message);
    }
}
