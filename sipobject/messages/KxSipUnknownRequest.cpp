#include "sipobject/messages/KxSipUnknownRequest.h"

KxSipUnknownRequest::KxSipUnknownRequest() = default;

KxSipUnknownRequest::KxSipUnknownRequest(const char* method) : KxSipRequest(KxString(method)) {}

KxSipUnknownRequest* KxSipUnknownRequest::clone() const {
    return new KxSipUnknownRequest(*this);
}
