#include "tools/kxsip/Terminal.h"

#include "tools/kxsip/Printable.h"

#include <unistd.h>

bool Terminal::isOutput() {
    return isatty(STDOUT_FILENO) == 1;
}

void Terminal::write(std::ostream& out, std::string_view bytes) {
    if (!isOutput()) {
        out << bytes;
        return;
    }
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        std::string_view line = bytes.substr(0, end);
        const bool isWhole = end != std::string_view::npos;
        bytes.remove_prefix(isWhole ? end + 1 : bytes.size());
        if (isWhole && line.ends_with('\r')) {
            line.remove_suffix(1); // the terminal adds its own
        }
        out << printable(line) << (isWhole ? "\n" : "");
    }
}
