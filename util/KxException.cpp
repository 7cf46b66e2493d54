#include "util/KxException.h"

#include "util/KxOutputStream.h"

#include <exception>

constinit const KxConstString KxException::sDebugToken{"KxException"};

KxException::~KxException() = default;

void KxException::sThrow(std::string_view message) {
    sThrow(new KxException(message));
}

void KxException::sThrow(KxException* exception) {
    exception->raise();
    std::terminate(); // raise never returns, but not every compiler knows that for a virtual function
}

void KxException::raise() {
    throw KxHandle<KxException>(this);
}

KxException* KxException::clone() const {
    return new KxException(*this);
}

void KxException::display(KxOutputStream& out, bool) const {
    out << m_message;
}
