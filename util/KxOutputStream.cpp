#include "util/KxOutputStream.h"

#include <charconv>

namespace {

template <class Number>
void writeNumber(KxOutputStream& out, Number number) {
    char digits[KxBytes::kShortCopy + 1]; // g++ 12 expects a copy to reach that far
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    out.write(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

} // namespace

KxOutputStream::~KxOutputStream() = default;

KxOutputStream& KxOutputStream::operator<<(int number) {
    writeNumber(*this, number);
    return *this;
}

KxOutputStream& KxOutputStream::operator<<(long number) {
    writeNumber(*this, number);
    return *this;
}

KxOutputStream& KxOutputStream::operator<<(unsigned long number) {
    writeNumber(*this, number);
    return *this;
}

KxOutputStream& endl(KxOutputStream& out) {
    return out << std::string_view("\r\n", 2);
}
