// header_list FILE LIBRARY FILE LIBRARY: prints a line for each registered header: its name, its compact name, its class
// and the library. Each file is a message with every header of its library, the second of libkxsipheaders.

#include "sipheaders/KxSipHeaderLibrary.h"
#include "sipobject/KxSipGrammar.h"
#include "tests/sipobject/support/MessageSupport.h"

#include <iostream>
#include <set>

namespace {

using Names = std::set<std::string, std::less<>>;

Names registered() {
    const auto names = KxSipHeader::sNames();
    return {names.begin(), names.end()};
}

/** Prints the headers of the message whose names are among these; returns those names that it does not have. */
Names print(const char* file, const char* library, Names names) {
    const KxHandle<KxSipMessage> message = readMessage(fileText(file));
    for (const HeaderID id : message->getHeaderOrder()) {
        const KxSipHeader& header = *message->getHeaderByID(id);
        const std::string name(header.getExpandedToken().view());
        const std::string compact(header.getCompactToken().view());
        if (names.erase(name) != 0) {
            names.erase(compact);
            std::cout << name << '\t' << (compact == name ? "" : compact) << '\t' << className(header) << '\t'
                      << library << '\n';
        }
    }
    return names;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        return 2;
    }
    KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
    const Names base = registered();
    KxSipHeaderLibrary::sEnable();
    Names further = registered();
    std::erase_if(further, [&](const std::string& name) { return base.contains(name); });
    Names missing = print(argv[1], argv[2], base);
    missing.merge(print(argv[3], argv[4], further));
    for (const std::string& name : missing) {
        std::cerr << name << " is in none of the messages\n";
    }
    return missing.empty() ? 0 : 1;
}
