#include "tools/kxsip/Colour.h"

#include "util/KxAscii.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>

#include <unistd.h>

namespace {

/** Whether standard output is a terminal with colours and the user has not set NO_COLOR (no-color.org). */
bool isWelcome() {
    const char* const no = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && (no == nullptr || *no == '\0') && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

/** Returns only the sixteen standard colours, which the user's theme makes readable. */
const char* codeOf(Ink ink) {
    switch (ink) {
    case Ink::Place:
        return "\x1B[1m";
    case Ink::Request:
        return "\x1B[1;34m";
    case Ink::Provisional:
        return "\x1B[33m";
    case Ink::Success:
        return "\x1B[32m";
    case Ink::Failure:
        return "\x1B[1;31m";
    case Ink::Name:
        return "\x1B[36m";
    case Ink::Uri:
        return "\x1B[35m";
    case Ink::Class:
    case Ink::Faint:
        return "\x1B[2m";
    case Ink::Value:
        break;
    }
    return "";
}

/** Returns the beginning of the scheme before the colon, or npos if there is none. */
std::size_t schemeAt(std::string_view text, std::size_t colon) {
    for (const std::string_view scheme : {"sip", "sips", "tel"}) {
        const std::size_t begin = colon - scheme.size();
        if (colon >= scheme.size() && text.substr(begin, scheme.size()) == scheme &&
            (begin == 0 || !KxAscii::isAlpha(text[begin - 1]))) {
            return begin;
        }
    }
    return std::string_view::npos;
}

/** Returns the beginning of the next URI, or the size of the text if there is none. */
std::size_t findUri(std::string_view text, std::size_t from) {
    for (std::size_t colon = text.find(':', from); colon != std::string_view::npos; colon = text.find(':', colon + 1)) {
        if (const std::size_t begin = schemeAt(text, colon); begin != std::string_view::npos) {
            return begin;
        }
    }
    return text.size();
}

} // namespace

Colour::Colour(ColourMode mode) : m_on(mode == ColourMode::Always || (mode == ColourMode::Auto && isWelcome())) {}

std::string Colour::operator()(Ink ink, std::string_view text) const {
    const std::string_view code = m_on && !text.empty() ? codeOf(ink) : "";
    std::string result(code);
    return result.append(text).append(code.empty() ? "" : "\x1B[0m");
}

std::string Colour::value(std::string_view text) const {
    if (!m_on) {
        return std::string(text);
    }
    std::string result;
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t begin = findUri(text, position);
        result += text.substr(position, begin - position);
        const bool inBrackets = begin > 0 && text[begin - 1] == '<';
        position = std::min(text.find_first_of(inBrackets ? ">" : " \t,;\"<>", begin), text.size());
        result += (*this)(Ink::Uri, text.substr(begin, position - begin));
    }
    return result;
}

Ink Colour::sInkOf(int code) {
    if (code == 0) {
        return Ink::Request;
    }
    if (code < 200) {
        return Ink::Provisional;
    }
    return code < 300 ? Ink::Success : Ink::Failure;
}

void addColourOption(CLI::App& command, ColourMode& mode) {
    const std::map<std::string, ColourMode> modes = {
        {"never", ColourMode::Never}, {"auto", ColourMode::Auto}, {"always", ColourMode::Always}};
    command
        .add_option("--color,--colour", mode, "When to colour: auto (on a terminal, without NO_COLOR), always, never")
        ->transform(CLI::CheckedTransformer(modes).description(""))
        ->type_name("WHEN");
}
