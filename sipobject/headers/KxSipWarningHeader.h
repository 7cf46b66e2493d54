#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"

#include <cstdint>

/** Warning: more information about the status of a response. One object per warning.
    Warning = "Warning" HCOLON warning-value *(COMMA warning-value)           [RFC 3261 20.43]
    warning-value = warn-code SP warn-agent SP warn-text
    A value that does not begin with a digit throws "Invalid Warning header". A text without quotes is read up to
    the comma; agent and text may be missing.
    "Warning: 307 h \"Session, not \\\"understood\\\"\", 399 h odd" -> two values, the second one written 399 h "odd" */
class KX_SIP_API KxSipWarningHeader final : public KxSipHeaderOf<KxSipWarningHeader> {
public:
    KxSipWarningHeader(std::uint32_t code, const KxString& agent, const KxString& text)
        : m_code(code), m_agent(agent), m_text(text) {}
    template <class A, class B>
    requires(KxSipHasStdText<A, B>) KxSipWarningHeader(std::uint32_t code, const A& agent, const B& text)
        : KxSipWarningHeader(code, KxSipAnyText(agent).line(), KxSipAnyText(text).line()) {}

    /** Should be 300 to 399; not checked. */
    std::uint32_t getCode() const { return m_code; }
    void setCode(std::uint32_t code) { m_code = code; }
    /** The host, with its port, or the pseudonym of the server that added the warning. */
    const KxString& getAgent() const { return m_agent; }
    /** This and setText throw KxSipParseError if the text contains CR, LF or NUL. */
    void setAgent(KxSipText agent) { m_agent = agent.line(); }
    /** The text without quotes and escapes. */
    const KxString& getText() const { return m_text; }
    void setText(KxSipText text) { m_text = text.line(); }

    static const KxConstString sToken;
    static constexpr char kClassName[] = "KxSipWarningHeader";
    static constexpr HeaderID kHeaderID = KxHeaderIDs::kWarning;

private:
    friend class KxSipHeaderOf<KxSipWarningHeader>;

    KxSipWarningHeader() = default;
    KxSipFault parseValue(KxSipLine& line);
    void serializeValue(KxOutputStream& out) const;

    std::uint32_t m_code = 0;
    KxString m_agent;
    KxString m_text;
};
