#include "tools/kxsip/Input.h"

#include "tools/kxsip/Interrupt.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <system_error>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

[[noreturn]] void fail() {
    throw std::system_error(errno, std::generic_category());
}

/** Returns the number of bytes that a regular file still has, nothing for other kinds of file. */
std::optional<std::size_t> sizeOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(std::max<off_t>(status.st_size - lseek(descriptor, 0, SEEK_CUR), 0));
}

} // namespace

Input::Input(const std::string& name, Packed packed)
    : m_name(name),
      m_descriptor(name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)),
      m_block(65536, '\0'),
      m_isKnown(packed == Packed::AsIs) {
    if (m_descriptor == -1) {
        fail();
    }
    m_fileSize = sizeOf(m_descriptor);
}

Input::~Input() {
    if (m_descriptor > STDIN_FILENO) {
        close(m_descriptor);
    }
}

void Input::drop(std::size_t count) {
    m_begin += count;
    m_position += count;
}

bool Input::more() {
    m_bytes.erase(0, m_begin);
    m_begin = 0;
    if (!m_isKnown) {
        recognise();
        if (m_gunzip == nullptr && !m_bytes.empty()) {
            return true;
        }
    }
    if (m_gunzip != nullptr) {
        m_isEnded = m_isEnded || !unpack();
    } else {
        const std::string_view block = read();
        m_bytes += block;
        m_isEnded = block.empty();
    }
    return !m_isEnded;
}

/** Reads the first bytes, and finds out from them whether the file is packed. */
void Input::recognise() {
    m_isKnown = true;
    while (m_bytes.size() < Gunzip::kMagicLength && Gunzip::sBegins(m_bytes)) {
        const std::string_view block = read();
        if (block.empty()) {
            return;
        }
        m_bytes += block;
    }
    if (Gunzip::sBegins(m_bytes)) {
        m_gunzip = std::make_unique<Gunzip>();
        m_gunzip->feed(m_bytes);
        m_bytes.clear();
    }
}

/** Appends unpacked bytes. Returns false if there are no more. */
bool Input::unpack() {
    while (!m_gunzip->unpack(m_bytes)) {
        const std::string_view block = m_gunzip->damage().empty() ? read() : std::string_view();
        if (block.empty()) {
            if (!Interrupt::sHasCome()) {
                m_gunzip->finish();
            }
            return false;
        }
        m_gunzip->feed(block);
    }
    return true;
}

/** Waits for bytes of the file. Returns none if no more will come. After an interrupt, what a live input has at hand is
    still read. */
std::string_view Input::read() {
    ssize_t count = -1;
    while (!m_isFileEnded && count < 0) {
        if (isLive()) {
            std::cout.flush();
        }
        const bool isCut = !Interrupt::sWaitFor(m_descriptor);
        const std::size_t room = isCut ? std::min(arrived(), m_block.size()) : m_block.size();
        count = room == 0 ? 0 : ::read(m_descriptor, m_block.data(), room);
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            fail();
        }
        m_isFileEnded = isCut || count == 0;
    }
    const auto length = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    m_fileRead += length;
    return std::string_view(m_block).substr(0, length);
}

/** Returns the number of bytes that a live input can give at once. */
std::size_t Input::arrived() const {
    int count = 0;
    return isLive() && ioctl(m_descriptor, FIONREAD, &count) == 0 ? static_cast<std::size_t>(count) : 0;
}

const std::string& Input::damage() const {
    static const std::string s_none;
    return m_gunzip == nullptr ? s_none : m_gunzip->damage();
}
