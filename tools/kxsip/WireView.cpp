#include "tools/kxsip/WireView.h"

#include "tools/kxsip/ObjectText.h"

void WireView::show(const ReadMessage& read) {
    if (read.isRefused()) {
        read.complain(*read.error);
    } else {
        m_out << serialized(*read.message);
    }
}
