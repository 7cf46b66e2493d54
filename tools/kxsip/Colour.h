#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

/** When the output has colours. */
enum class ColourMode { Never, Auto, Always };

/** What a piece of text is, and so how it looks. */
enum class Ink { Place, Request, Provisional, Success, Failure, Name, Class, Value, Uri, Faint };

/** Colours for standard output; without them every text stays as it is. */
class Colour {
public:
    explicit Colour(ColourMode mode);

    bool isOn() const { return m_on; }
    std::string operator()(Ink ink, std::string_view text) const;
    /** A header's value or a Request-URI: the URIs in it stand out. */
    std::string value(std::string_view text) const;

    /** The ink of a response's code; 0 for a request. */
    static Ink sInkOf(int code);

private:
    bool m_on;
};

/** Adds --color to the command; `mode` must live until it has run. */
void addColourOption(CLI::App& command, ColourMode& mode);
