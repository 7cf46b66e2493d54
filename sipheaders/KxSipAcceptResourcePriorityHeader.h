#pragma once

#include "sipheaders/KxSipResourceValueHeader.h"

/** Accept-Resource-Priority: a priority that the server can work with. One object per priority.
    Accept-Resource-Priority = "Accept-Resource-Priority" HCOLON [r-value *(COMMA r-value)]   [RFC 4412 3.2]
    "Accept-Resource-Priority: dsn.flash , dsn.routine" -> two values */
class KX_HEADERS_API KxSipAcceptResourcePriorityHeader final
    : public KxSipResourceValueHeader<KxSipAcceptResourcePriorityHeader> {
public:
    using KxSipResourceValueHeader::KxSipResourceValueHeader;

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipAcceptResourcePriorityHeader";
    static const HeaderID kHeaderID;
    static constexpr const char* kInvalid = "Invalid Accept-Resource-Priority header";

private:
    friend class KxSipHeaderOf<KxSipAcceptResourcePriorityHeader>;

    KxSipAcceptResourcePriorityHeader() = default;
};
