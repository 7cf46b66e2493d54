#include "sipobject/messages/KxSipBody.h"

#include "core/MemAccount.h"
#include "sipobject/KxSipParseError.h"
#include "sipobject/headers/KxSipContentLengthHeader.h"
#include "sipobject/headers/KxSipContentTypeHeader.h"
#include "sipobject/messages/KxSipHeaderSlots.h"
#include "util/KxOutputStream.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

static constinit Oskan::MemAccount s_account{"KxSipMessageBody"};

void KxSipBody::Free::operator()(char* bytes) const noexcept {
    s_account.deallocate(bytes);
}

KxSipBody::KxSipBody(const void* bytes, std::size_t length) : m_length(length) {
    try {
        m_bytes.reset(static_cast<char*>(s_account.allocate(length + 1)));
    } catch (const std::bad_alloc&) {
        KxSipParseError::sThrow("failed to allocate a SIP message body of size " + std::to_string(length));
    }
    std::memcpy(m_bytes.get(), bytes, length);
    m_bytes.get()[length] = '\0';
}

/** Removes a Content-Type that could not be read, which belongs to the old body. */
static void dropUnreadType(KxSipHeaderSlots& headers) {
    if (headers.firstRead(KxHeaderIDs::kContentType).isNil()) {
        while (headers.removeFirst(KxHeaderIDs::kContentType)) {
        }
    }
}

/** Allocates memory first, so that a failed allocation changes nothing. */
void KxSipBody::set(KxSipHeaderSlots& headers, const void* bytes, const char* contentType, std::uint32_t length) {
    const bool isComplete = length != 0 && bytes != nullptr && contentType != nullptr;
    const KxHandle<KxSipContentLengthHeader> lengthHeader = headers.typed<KxSipContentLengthHeader>();
    KxHandle<KxSipHeader> freshLength;
    KxHandle<KxSipHeader> freshType;
    KxSipBody fresh;
    if (lengthHeader.isNil()) {
        freshLength = KxMake<KxSipContentLengthHeader>(length);
    }
    if (isComplete) {
        fresh = KxSipBody(bytes, length);
        const KxHandle<KxSipContentTypeHeader> type = headers.typed<KxSipContentTypeHeader>();
        if (type.isNil()) {
            freshType = KxMake<KxSipContentTypeHeader>(contentType);
        } else {
            type->setMediaType(contentType);
        }
    }
    if (lengthHeader.isNil()) {
        headers.add(std::move(freshLength), false);
    } else {
        lengthHeader->setContentLength(length);
    }
    if (isComplete) {
        *this = std::move(fresh);
        if (!freshType.isNil()) {
            dropUnreadType(headers);
            headers.add(std::move(freshType), false);
        }
    } else if (length != 0) {
        KxSipParseError::sThrow(bytes == nullptr ? "Can't build SIP request with NULL body pointer"
                                                 : "Can't build SIP request(with body) with no content-type");
    }
}

void KxSipBody::clear(KxSipHeaderSlots& headers) {
    set(headers, nullptr, nullptr, 0);
    while (headers.removeFirst(KxHeaderIDs::kContentType)) {
    }
    *this = KxSipBody();
}

void KxSipBody::serializeBody(KxOutputStream& out, std::size_t length) const {
    out.write(std::string_view(m_bytes.get(), std::min(length, m_length)));
}
