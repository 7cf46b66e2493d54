#include "sipheaders/KxSipRemotePartyIDHeader.h"

constinit const KxConstString KxSipRemotePartyIDHeader::sToken{"Remote-Party-ID"};

const HeaderID KxSipRemotePartyIDHeader::kHeaderID = KxSipHeader::sNewHeaderID();

bool KxSipRemotePartyIDHeader::isPrivate() const {
    const KxString privacy = getPrivacy();
    return !privacy.empty() && !KxAscii::equalsNoCase(privacy.view().substr(0, privacy.view().find('-')), "off");
}
