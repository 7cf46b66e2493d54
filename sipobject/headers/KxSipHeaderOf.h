#pragma once

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipAnyText.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/KxSipTraceName.h"
#include "sipobject/headers/KxSipHeader.h"
#include "util/KxStreamTokenizer.h"

#include <type_traits>

/** The code common to all header classes: names, identifier, copying, creation, registration and trace scopes. A
    class H derives from KxSipHeaderOf<H>, makes it a friend and provides

        static constexpr char kClassName[] = "KxSipHHeader";
        static constexpr HeaderID kHeaderID = KxHeaderIDs::kH;
        static const KxConstString sToken;              // and sCompactToken, if there is a compact name; one that
                                                        // only the RFC grammar knows is sRFCCompactToken
        KxSipFault parseValue(KxSipLine& line);       // the grammar of one value
        void serializeValue(KxOutputStream& out) const;

    and a default and a copy constructor. If only the RFC grammar knows sToken, there is a kIsRFCOnly. If several
    headers share a grammar, the class that reads and writes it is their Base: H then has no parseValue and
    serializeValue, and Base has a constructor from name and identifier.

    A class of a host's own gets its identifier at start-up; what is said of the kind holds for the RFC grammar:

        inline static const HeaderID kHeaderID = KxSipHeader::sNewHeaderID(KxSipHeaderUse::Once); */
template <class H, class Base = KxSipHeader>
class KxSipHeaderOf : public Base {
public:
    [[nodiscard]] KxSipHeader* clone() const override { return new H(self()); }
    const KxString& getExpandedToken() const override { return H::sToken; }
    const KxString& getCompactToken() const override {
        if constexpr (kHasCompact) {
            return H::sCompactToken;
        } else if constexpr (kHasRFCCompact) {
            return KxSipGrammar::sKnowsAllCompactNames() ? H::sRFCCompactToken : H::sToken;
        } else {
            return H::sToken;
        }
    }

    /** Registers the names of the class. The .cpp file of the class defines one such object, after sToken. */
    struct Registration {
        Registration() {
            if constexpr (requires { H::kIsRFCOnly; }) {
                KxSipHeader::sAddRFCConstructor(H::sToken.c_str(), &sCreate);
            } else {
                KxSipHeader::sAddConstructor(H::sToken.c_str(), &sCreate);
            }
            if constexpr (kHasCompact) {
                KxSipHeader::sAddConstructor(H::sCompactToken.c_str(), &sCreate);
            }
            if constexpr (kHasRFCCompact) {
                KxSipHeader::sAddRFCConstructor(H::sRFCCompactToken.c_str(), &sCreate);
            }
        }
    };

protected:
    KxSipHeaderOf() : Base(H::sToken, H::kHeaderID) {}
    KxSipHeaderOf(const KxString& token, HeaderID id) : Base(token, id) {}
    KxSipHeaderOf(const KxSipHeaderOf&) = default;

    void doParse(KxInputStream& in) override {
        KxSipLine line(in);
        this->readValue(line).raiseIfAny();
    }
    KxSipFault readValue(KxSipLine& line) override {
        if constexpr (!kHasGrammar) {
            return Base::readValue(line);
        } else if (sLogger().isEnabled(Oskan::LogLevel::Trace)) [[unlikely]] {
            return parseTraced(line);
        } else {
            return self().parseValue(line);
        }
    }
    void doSerialize(KxOutputStream& out) const override {
        if constexpr (!kHasGrammar) {
            Base::doSerialize(out);
        } else if (sLogger().isEnabled(Oskan::LogLevel::Trace)) [[unlikely]] {
            serializeTraced(out);
        } else {
            self().serializeValue(out);
        }
    }

    /** Reads the value from a text, for constructors from text; null reads as empty. H must be a complete type. */
    void parseText(KxSipText text) {
        const Oskan::EntryTraceScope trace(sLogger(), KxTraceName<H, "::doParse">);
        KxSipLine line(text.view());
        self().parseValue(line).raiseIfAny();
    }

    /** Skips blanks; returns a fault with the text unless a digit follows. */
    static KxSipFault expectDigit(KxSipLine& line, const char* text) {
        const bool isDigit = KxAscii::isDigit(static_cast<char>(KxStreamTokenizer::sDiscardWhite(line)));
        return isDigit ? KxSipFault() : KxSipFault(text);
    }

    /** The default for the part after the value: nothing. KxSipParameterHeader replaces both functions. */
    KxSipFault parseParameters(KxSipLine&) { return {}; }
    void serializeParameters(KxOutputStream&) const {}

    static const Oskan::AceCleanupLogger& sLogger() { return KxClassLogger<H>; }

    static KxSipHeader* sCreate() { return new H; }

private:
    // Functions of their own, so that the usual ones need no frame: this saves 0.5 % of a parse, 2 % of writing.
    [[gnu::cold, gnu::noinline]] KxSipFault parseTraced(KxSipLine& line) {
        const Oskan::TraceScope trace(sLogger(), KxTraceName<H, "::doParse">);
        return self().parseValue(line);
    }
    [[gnu::cold, gnu::noinline]] void serializeTraced(KxOutputStream& out) const {
        const Oskan::TraceScope trace(sLogger(), KxTraceName<H, "::doSerialize">);
        self().serializeValue(out);
    }

    static constexpr bool kHasGrammar = std::is_same_v<Base, KxSipHeader>;
    static constexpr bool kHasCompact = requires { H::sCompactToken; };
    static constexpr bool kHasRFCCompact = requires { H::sRFCCompactToken; };

    H& self() { return static_cast<H&>(*this); }
    const H& self() const { return static_cast<const H&>(*this); }
};
