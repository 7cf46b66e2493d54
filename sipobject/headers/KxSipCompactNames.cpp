#include "sipobject/headers/KxSipCompactNames.h"

#include "sipobject/KxSipGrammar.h"

std::string_view KxSipCompactNames::sFullOfLetter(std::string_view letter) {
    if (!KxSipGrammar::sKnowsAllCompactNames()) {
        return letter;
    }
    switch (letter.front() | ('a' ^ 'A')) {
    case 'a':
        return "Accept-Contact";
    case 'd':
        return "Request-Disposition";
    case 'j':
        return "Reject-Contact";
    case 'n':
        return "Identity-Info";
    case 'y':
        return "Identity";
    default:
        return letter;
    }
}
