#include "tools/kxsip/capture/PacketOption.h"

#include "tools/kxsip/Printable.h"
#include "tools/kxsip/capture/CaptureFile.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <system_error>

void PacketOption::addTo(CLI::App& command) {
    command
        .add_option(
            "-o,--output", m_name,
            "Write the packets of the selected messages into this file: pcapng if it is named .pcapng, else pcap")
        ->type_name("FILE");
}

void PacketOption::open(const std::vector<std::string>& inputs) {
    if (!isChosen()) {
        return;
    }
    if (m_name == "-") {
        throw CaptureError("cannot write packets on standard output; name a file");
    }
    for (const std::string& input : inputs) {
        std::error_code ignored;
        if (std::filesystem::equivalent(input, m_name, ignored)) {
            throw CaptureError("cannot write " + printable(m_name) + ": it is read at the same time");
        }
    }
    m_writer.emplace(m_name);
}

void PacketOption::write(const Packets& packets) {
    if (m_writer) {
        m_writer->write(packets);
    }
}

void PacketOption::finish() {
    if (m_writer) {
        m_writer->finish();
    }
}
