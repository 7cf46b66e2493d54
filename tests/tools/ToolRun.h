#pragma once

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

/** A folder of this test, removed with the object. */
class Scratch {
public:
    Scratch() : m_path(testing::TempDir() + "kxsipXXXXXX") {
        if (mkdtemp(m_path.data()) == nullptr) {
            throw std::runtime_error("no folder for the test: " + m_path);
        }
    }
    ~Scratch() { std::filesystem::remove_all(m_path); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string path(const std::string& name) const { return m_path + "/" + name; }
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    std::string read(const std::string& name) const {
        std::ostringstream bytes;
        bytes << std::ifstream(path(name), std::ios::binary).rdbuf();
        return bytes.str();
    }

private:
    std::string m_path;
};

/** The result of one run of the tool that the environment variable KXSIP names. */
struct ToolRun {
    int exit = -1;
    std::string out;
    std::string err;

    /** The lines of its output as JSON. */
    std::vector<nlohmann::json> json() const {
        std::vector<nlohmann::json> lines;
        std::istringstream text(out);
        for (std::string line; std::getline(text, line);) {
            lines.push_back(nlohmann::json::parse(line));
        }
        return lines;
    }
    bool operator==(const ToolRun&) const = default;
    friend void PrintTo(const ToolRun& run, std::ostream* to) {
        *to << "exit " << run.exit << "\n" << run.out << "\n--\n" << run.err;
    }
};

/** The result of a command that cannot use the first message of standard input. */
inline ToolRun refusal(const std::string& why) {
    return {2, "", "kxsip: -, message 0: " + why + "\n"};
}

inline ToolRun kxsip(const std::string& arguments, const std::string& input = "") {
    const Scratch scratch;
    scratch.write("in", input);
    const char* const tool = std::getenv("KXSIP");
    const std::string command = std::string(tool == nullptr ? "KXSIP=unset" : tool) + " " + arguments + " <" +
                                scratch.path("in") + " >" + scratch.path("out") + " 2>" + scratch.path("err");
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, scratch.read("out"), scratch.read("err")};
}

inline const std::string kDialog = "Via: SIP/2.0/UDP 192.0.2.1:5070;branch=z9hG4bKa\r\nFrom: <sip:a@b>;tag=1\r\n"
                                   "To: <sip:c@d>\r\nCall-ID: x@y\r\n";
inline const std::string kNoBody = "Content-Length: 0\r\n\r\n";

inline std::string sample(const std::string& name) {
    return KX_SOURCE_DIR "/samples/" + name;
}
