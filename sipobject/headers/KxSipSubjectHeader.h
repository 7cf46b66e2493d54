#pragma once

#include "sipobject/headers/KxSipTextHeader.h"

/** Subject: the subject of the call.
    Subject = ( "Subject" / "s" ) HCOLON [TEXT-UTF8-TRIM]                     [RFC 3261 20.36]
    An empty text is refused, as for any header.      "s: Lunch, then tea" -> the same */
class KX_SIP_API KxSipSubjectHeader final : public KxSipTextHeader<KxSipSubjectHeader> {
public:
    explicit KxSipSubjectHeader(const KxString& subject) : KxSipTextHeader(subject) {}
    explicit KxSipSubjectHeader(KxSipStdText subject) : KxSipTextHeader(subject.line()) {}

    const KxString& getSubject() const { return m_text; }
    void setSubject(KxSipText subject) { m_text = subject.line(); }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "KxSipSubjectHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kSubject;

private:
    friend class KxSipHeaderOf<KxSipSubjectHeader>;

    KxSipSubjectHeader() = default;
};
