// rows [--grammar=rfc] KIND TEXT: reads a text of a kind with the library and prints the result: "-> " and what it is written as, lines
// separated by " | ", or "!! " and the error's text. In the text \r, \n, \t, \s (a blank) and \\ are these characters;
// the output is escaped in the same way.

#include "sipobject/address/KxSipNameAddress.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tests/sipobject/support/Grammar.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"

#include <iostream>
#include <map>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kHeaders = "Via: SIP/2.0/UDP a\r\nFrom: <sip:a>;tag=1\r\nTo: <sip:b>\r\nCall-ID: c\r\n";

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::string unescaped(std::string_view text) {
    static const std::map<char, char> meanings{{'r', '\r'}, {'n', '\n'}, {'t', '\t'}, {'s', ' '}, {'\\', '\\'}};
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto meaning = text[i] == '\\' && i + 1 < text.size() ? meanings.find(text[i + 1]) : meanings.end();
        result += meaning == meanings.end() ? text[i] : meaning->second;
        i += meaning == meanings.end() ? 0 : 1;
    }
    return result;
}

/** The lines, separated by " | ". Characters that a page can't show are escaped. */
std::string shown(std::string text) {
    text = replaced(replaced(std::move(text), "\\", "\\\\"), " \r\n", "\\s\r\n");
    if (text.ends_with("\r\n"))
        text.resize(text.size() - 2);
    text = replaced(std::move(text), "\r\n", " | ");
    text = replaced(std::move(text), std::string_view("", 1), "\\0");
    return replaced(replaced(replaced(std::move(text), "\r", "\\r"), "\n", "\\n"), "\t", "\\t");
}

template <class T>
std::string written(const T& object) {
    KxByteArrayOutputStream out;
    object.serialize(out);
    return std::string(out.view());
}

KxHandle<KxSipMessage> messageFrom(const std::string& text) {
    KxByteArrayInputStream in{std::string_view(text)};
    return KxSipMessage::sConstructFrom(in);
}

std::string header(const std::string& text) {
    KxByteArrayInputStream in{std::string_view(text)};
    return shown(written(*KxSipHeader::sConstructFrom(in)));
}

std::string uri(const std::string& text) {
    KxByteArrayInputStream in{std::string_view(text)};
    return shown(KxURI::sConstructFrom(in, true)->getString().c_str());
}

/** A start line before the headers that a message must have. */
std::string startLine(const std::string& line) {
    const bool isResponse = line.starts_with("SIP");
    const std::string method = isResponse ? "INVITE" : line.substr(0, line.find(' '));
    std::string text = line + (line.ends_with('\n') ? "" : "\r\n");
    text.append(kHeaders).append("CSeq: 1 " + method + "\r\n\r\n");
    const std::string out = written(*messageFrom(text));
    return shown(out.substr(0, out.find("\r\n") + 2));
}

/** Header lines (and a body after an empty line) after those that an OPTIONS must have. Returns the status and what is
    written of these lines. */
std::string lines(const std::string& more) {
    std::string text = "OPTIONS sip:b SIP/2.0\r\n";
    text.append(kHeaders).append("CSeq: 1 OPTIONS\r\n").append(more);
    text.append(more.find("\r\n\r\n") == std::string::npos ? "\r\n\r\n" : "");
    const KxHandle<KxSipMessage> message = messageFrom(text);
    const std::string out = written(*message);
    const std::size_t begin = out.find("CSeq: 1 OPTIONS\r\n") + std::string_view("CSeq: 1 OPTIONS\r\n").size();
    const std::string rest = out.substr(begin, out.find("\r\n\r\n") + 2 - begin);
    return "status " + std::to_string(message->getStatus()) + (rest.empty() ? "" : ": " + shown(rest));
}

std::string message(const std::string& text) {
    return "status " + std::to_string(messageFrom(text)->getStatus());
}

} // namespace

int main(int argc, char** argv) {
    static const std::map<std::string_view, std::string (*)(const std::string&)> kinds{
        {"header", header}, {"uri", uri}, {"start line", startLine}, {"lines", lines}, {"message", message}};
    chooseGrammar(argc, argv);
    const auto kind = kinds.find(argc == 3 ? argv[1] : "");
    if (kind == kinds.end()) {
        std::cout << "?? no such kind of rows\n";
        return 1;
    }
    try {
        const std::string outcome = kind->second(unescaped(argv[2]));
        std::cout << "-> " << outcome << "\n";
    } catch (const KxHandle<KxException>& failure) {
        std::cout << "!! " << shown(failure->getExceptionMessage().c_str()) << "\n";
    }
    return 0;
}
