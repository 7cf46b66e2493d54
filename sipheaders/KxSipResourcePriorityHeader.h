#pragma once

#include "sipheaders/KxSipResourceValueHeader.h"

/** Resource-Priority: the priority with which the request wants resources such as gateway circuits. One object per
    namespace.
    Resource-Priority = "Resource-Priority" HCOLON r-value *(COMMA r-value)   [RFC 4412 3.1]
    "Resource-Priority: dsn.flash, wps.3" -> two values */
class KX_HEADERS_API KxSipResourcePriorityHeader final : public KxSipResourceValueHeader<KxSipResourcePriorityHeader> {
public:
    using KxSipResourceValueHeader::KxSipResourceValueHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipResourcePriorityHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kInvalid = "Invalid Resource-Priority header";

private:
    friend class KxSipHeaderOf<KxSipResourcePriorityHeader>;

    KxSipResourcePriorityHeader() = default;
};
