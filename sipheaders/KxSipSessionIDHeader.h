#pragma once

#include "sipheaders/KxSipTextParameterHeader.h"

/** Session-ID: identifies a call from end to end, across all back-to-back user agents.
    session-id = "Session-ID" HCOLON local-uuid *(SEMI sess-id-param)         [RFC 7989 5]
    sess-id-param = "remote" EQUAL remote-uuid / generic-param
    local-uuid, remote-uuid: 32 digits "0" to "9" or "a" to "f", all of them "0" for none
    Capitals are read, too. Without "remote" it is the older form. [RFC 7329]
    "Session-ID: ab30317f1a784dc48ff824d0d3715d86 ;remote=00000000000000000000000000000000" -> the same */
class KX_HEADERS_API KxSipSessionIDHeader final : public KxSipTextParameterHeader<KxSipSessionIDHeader> {
public:
    /** As setLocalUUID; in the older form. */
    explicit KxSipSessionIDHeader(KxSipText local) { setLocalUUID(local); }
    /** As setLocalUUID and setRemoteUUID. */
    KxSipSessionIDHeader(KxSipText local, KxSipText remote) : KxSipSessionIDHeader(local) { setRemoteUUID(remote); }

    /** The UUID of the sender of the message. */
    const KxString& getLocalUUID() const { return m_local; }
    /** In lower case. Throws KxSipParseError if the text is not 32 hexadecimal digits. */
    void setLocalUUID(KxSipText uuid) { m_local = sChecked(uuid); }
    /** The UUID of the other end, as its sender wrote it; nil in the older form. */
    KxString getRemoteUUID() const { return text("remote"); }
    /** As setLocalUUID. */
    void setRemoteUUID(KxSipText uuid) { setParameter("remote", sChecked(uuid)); }
    /** Whether the UUID is known to be none. */
    [[nodiscard]] bool isLocalNil() const { return m_local == kNilUUID; }
    [[nodiscard]] bool isRemoteNil() const { return getRemoteUUID() == kNilUUID; }

    /** A new random UUID as 32 digits. Throws std::exception when the system has no random bytes. */
    static KxString sNewUUID();

    static constexpr const char* kNilUUID = "00000000000000000000000000000000";
    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipSessionIDHeader";
    static const HeaderID kHeaderID;

private:
    friend class KxSipHeaderOf<KxSipSessionIDHeader>;

    KxSipSessionIDHeader() = default;
    static bool sIsUUID(std::string_view text);
    static KxString sChecked(KxSipText uuid);
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    KxString m_local;
};
