#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

/** Whether the output has colours; with Auto if it is a terminal. */
enum class ColourMode { Never, Auto, Always };

/** The kind of a piece of text, which decides its colour. */
enum class Ink { Place, Request, Provisional, Success, Failure, Name, Class, Value, Uri, Faint };

/** Colours for standard output. If they are off, every text is returned unchanged. */
class Colour {
public:
    explicit Colour(ColourMode mode);

    bool isOn() const { return m_on; }
    std::string operator()(Ink ink, std::string_view text) const;
    /** Returns the value of a header, or a Request-URI, with the URIs in it coloured. */
    std::string value(std::string_view text) const;

    /** Returns the ink for a status code; `code` is 0 for a request. */
    static Ink sInkOf(int code);

private:
    bool m_on;
};

/** Adds --color to the command. `mode` must outlive the run of the command. */
void addColourOption(CLI::App& command, ColourMode& mode);
