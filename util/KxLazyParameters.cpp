#include "util/KxLazyParameters.h"

#include "util/KxOutputStream.h"

KxParameters& KxLazyParameters::makeNew() const {
    KxHandle<KxParameters> fresh = KxMake<KxParameters>();
    KxParameters* expected = nullptr;
    if (m_list.compare_exchange_strong(expected, fresh.get(), std::memory_order_acq_rel)) {
        return *fresh.detach();
    }
    return *expected; // another reader was faster
}

void KxLazyParameters::serializeBehind(KxOutputStream& out) const {
    if (!empty()) {
        out.write(';');
        peek()->serialize(out);
    }
}
