#pragma once

#include "sipobject/KxSipGrammar.h"
#include "util/KxAscii.h"

#include <cstdint>
#include <string_view>

/** What the name of a digest algorithm means.
    algorithm = "MD5" / "MD5-sess" / "SHA-256" / "SHA-256-sess" / "SHA-512-256" / "SHA-512-256-sess" / token
                                                                              [RFC 7616 3.3, RFC 8760 2.6] */
struct KxSipDigestAlgorithm {
    enum class Hash : std::uint8_t { None, MD5, SHA256, SHA512_256 };

    Hash hash = Hash::None; ///< None if the algorithm is not supported.
    bool isSession = false; ///< Whether A1 depends on the nonces of a session ("-sess").

    bool isSupported() const { return hash != Hash::None; }

    /** The algorithm of this name; null data means that there is no name. */
    [[gnu::always_inline]] static KxSipDigestAlgorithm sOf(std::string_view name) {
        if (KxSipGrammar::sKnowsDigestsByName()) [[unlikely]] {
            return sNamed(name);
        }
        return {name.substr(0, 3) == "MD5" ? Hash::MD5 : Hash::None, name == "MD5-sess"};
    }

private:
    [[gnu::cold, gnu::noinline]] static KxSipDigestAlgorithm sNamed(std::string_view name) {
        if (name.data() == nullptr) {
            return {Hash::MD5, false};
        }
        constexpr std::string_view kSession = "-sess";
        const std::size_t stem = name.size() < kSession.size() ? name.size() : name.size() - kSession.size();
        const bool isSession = KxAscii::equalsNoCase(name.substr(stem), kSession);
        const std::string_view hash = isSession ? name.substr(0, stem) : name;
        if (KxAscii::equalsNoCase(hash, "MD5")) {
            return {Hash::MD5, isSession};
        }
        if (KxAscii::equalsNoCase(hash, "SHA-256")) {
            return {Hash::SHA256, isSession};
        }
        return {KxAscii::equalsNoCase(hash, "SHA-512-256") ? Hash::SHA512_256 : Hash::None, isSession};
    }
};
