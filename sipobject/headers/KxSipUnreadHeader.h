#pragma once

#include "sipobject/headers/KxSipHeader.h"

/** A value for which there is no object of its header's class. The RFC grammar makes one, in the place of the value,
    for a text that the class can't read, such as "soon" in "Expires: soon", and for a list that has no element, such as
    "Allow:". It is of the kind that its name says, but no value of the class: typed access skips it. Unreadable
    values that follow each other in a line are one text. The text is written as it was received, after unfolding,
    without the white space around it.
    "Contact: <sip:a>, ;;, <sip:b>" -> "Contact: <sip:a>", "Contact: ;;", "Contact: <sip:b>" */
class KX_SIP_API KxSipUnreadHeader final : public KxSipHeader {
public:
    /** Has the kind and the names of `meant`, whose chain is not copied. */
    KxSipUnreadHeader(const KxSipHeader& meant, std::string_view text);
    KxSipUnreadHeader(const KxSipUnreadHeader&) = default;

    [[nodiscard]] KxSipUnreadHeader* clone() const override;
    const KxString& getExpandedToken() const override { return m_name; }

    const KxString& getText() const { return m_text; }

protected:
    void doParse(KxInputStream& in) override;
    KxSipFault readValue(KxSipLine& line) override;
    void doSerialize(KxOutputStream& out) const override;

private:
    KxString m_text;
    KxString m_name;
};
