#include "tools/kxsip/WholeFile.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail() {
    throw std::system_error(errno, std::generic_category());
}

/** A file beside another one, whose place it takes when it is complete. It is removed if that does not happen. */
class Successor {
public:
    explicit Successor(fs::path target) : m_target(std::move(target)), m_name(m_target.string() + ".XXXXXX") {
        const int descriptor = mkstemp(m_name.data());
        if (descriptor == -1) {
            fail();
        }
        const mode_t mask = umask(0);
        umask(mask);
        std::error_code none;
        const fs::perms old = fs::exists(m_target, none) ? fs::status(m_target).permissions() : fs::perms(0666 & ~mask);
        const bool hasFailed = fchmod(descriptor, static_cast<mode_t>(old)) != 0;
        close(descriptor);
        if (hasFailed) {
            unlink(m_name.c_str());
            fail();
        }
    }
    ~Successor() {
        if (!m_isDone) {
            unlink(m_name.c_str());
        }
    }
    Successor(const Successor&) = delete;
    Successor& operator=(const Successor&) = delete;

    const std::string& name() const { return m_name; }
    void takePlace() {
        fs::rename(m_name, m_target);
        m_isDone = true;
    }

private:
    fs::path m_target;
    std::string m_name;
    bool m_isDone = false;
};

void writeFile(const std::string& name, const std::function<void(std::ostream&)>& write) {
    std::ofstream out;
    out.exceptions(std::ios::badbit | std::ios::failbit);
    try {
        out.open(name, std::ios::binary);
        write(out);
        out.close();
    } catch (const std::ios::failure&) {
        fail();
    }
}

} // namespace

void writeWholeFile(const std::string& name, const std::function<void(std::ostream&)>& write) {
    std::error_code none;
    const fs::file_status status = fs::status(name, none);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        writeFile(name, write);
        return;
    }
    Successor successor(fs::exists(status) ? fs::canonical(name) : fs::path(name));
    writeFile(successor.name(), write);
    successor.takePlace();
}
