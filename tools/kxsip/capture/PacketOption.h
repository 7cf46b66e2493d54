#pragma once

#include "tools/kxsip/ReadMessage.h"
#include "tools/kxsip/capture/PacketWriter.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
}

/** The option -o: writes the packets of the selected messages into a file. */
class PacketOption {
public:
    PacketOption() = default;
    /** As if the user gave the option with this name. */
    explicit PacketOption(std::string name) : m_name(std::move(name)) {}

    /** This object must outlive the command. */
    void addTo(CLI::App& command);

    /** Whether the user gave the option, so that a Reading must keep packets. */
    bool isChosen() const { return !m_name.empty(); }
    /** Opens the file, if the user gave the option. `inputs` are the files to be read, of which it must not be one.
        Throws CaptureError. */
    void open(const std::vector<std::string>& inputs);
    /** Writes the packets. Does nothing if no file is open. Throws CaptureError. */
    void write(const Packets& packets);
    /** Completes the file. Does nothing if no file is open. Throws CaptureError. */
    void finish();

private:
    std::string m_name;
    std::optional<PacketWriter> m_writer;
};
