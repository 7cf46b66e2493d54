#pragma once

#include "util/KxHandle.h"
#include "util/KxString.h"

class KxSipCSeqHeader;
class KxSipCallIdHeader;
class KxSipFromHeader;
class KxSipHeaderSlots;
class KxSipToHeader;
class KxSipViaHeader;

/** The transaction key of a message: see KxSipMessage::createKey. It is constructed under the lock of the message;
    afterwards it holds the headers itself. */
class KxSipTransactionKey {
public:
    explicit KxSipTransactionKey(const KxSipHeaderSlots& headers);

    KxString text() const;

private:
    KxHandle<KxSipToHeader> m_to;
    KxHandle<KxSipFromHeader> m_from;
    KxHandle<KxSipViaHeader> m_via;
    KxHandle<KxSipCallIdHeader> m_callId;
    KxHandle<KxSipCSeqHeader> m_cseq;
};
