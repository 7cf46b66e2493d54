#include "sipobject/headers/KxSipContentTypeHeader.h"

constinit const KxConstString KxSipContentTypeHeader::sToken{"Content-Type"};
constinit const KxConstString KxSipContentTypeHeader::sCompactToken{"c"};

static const KxSipContentTypeHeader::Registration s_registration;

void KxSipContentTypeHeader::setMediaType(KxSipText mediaType) {
    const std::string_view text = mediaType.view();
    const std::size_t slash = text.find('/');
    KxString type(text.substr(0, slash));
    m_subType = slash == std::string_view::npos ? KxString("") : KxString(text.substr(slash + 1));
    m_type = std::move(type);
}
