#pragma once

#include <string_view>

/** The compact names of headers that have no class. [RFC 3841, 8224, 4474] */
class KxSipCompactNames {
public:
    KxSipCompactNames() = delete;

    /** The full name, if the grammar knows this compact one: "a" -> "Accept-Contact". Else the name itself. */
    static std::string_view sFull(std::string_view name) { return name.size() == 1 ? sFullOfLetter(name) : name; }

private:
    static std::string_view sFullOfLetter(std::string_view letter);
};
