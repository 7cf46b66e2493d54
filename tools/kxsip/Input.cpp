#include "tools/kxsip/Input.h"

#include "tools/kxsip/Interrupt.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iostream>

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

Input::Input(const std::string& name)
    : m_name(name), m_descriptor(name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    if (m_descriptor == -1) {
        fail();
    }
    m_size = sizeOf(m_descriptor);
}

Input::Input(const InputFile& file)
    : m_name(file.name), m_bytes(file.bytes), m_size(file.bytes.size()), m_isEnded(true) {}

Input::~Input() {
    if (m_descriptor > STDIN_FILENO) {
        close(m_descriptor);
    }
}

void Input::drop(std::size_t count) {
    m_begin += count;
    m_position += count;
}

/** After an interrupt, what a live input has at hand is still read. */
bool Input::more() {
    std::array<char, 65536> block;
    ssize_t count = -1;
    while (!m_isEnded && count < 0) {
        if (isLive()) {
            std::cout.flush();
        }
        const bool isCut = !Interrupt::sWaitFor(m_descriptor);
        const std::size_t room = isCut ? std::min(arrived(), block.size()) : block.size();
        count = room == 0 ? 0 : read(m_descriptor, block.data(), room);
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            fail();
        }
        m_isEnded = isCut || count == 0;
    }
    if (count <= 0) {
        return false;
    }
    m_bytes.erase(0, m_begin);
    m_begin = 0;
    m_bytes.append(block.data(), static_cast<std::size_t>(count));
    return true;
}

/** Returns the number of bytes that a live input can give at once. */
std::size_t Input::arrived() const {
    int count = 0;
    return isLive() && ioctl(m_descriptor, FIONREAD, &count) == 0 ? static_cast<std::size_t>(count) : 0;
}
