#include "tools/kxsip/flow/Column.h"

#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>

std::string Column::portText() const {
    if (ports.empty()) {
        return "";
    }
    return ports.size() == 1 ? "port " + std::to_string(*ports.begin()) : std::to_string(ports.size()) + " ports";
}

std::vector<std::string> Column::sShortNames(const std::vector<Column>& columns, std::size_t most,
                                             std::string_view ellipsis) {
    const std::size_t room = most - std::min(most, Utf8::width(ellipsis));
    for (std::size_t i = 0; i <= room; ++i) { // the same number of characters before the ellipsis in all names
        const std::size_t head = i <= room / 2 ? room / 2 - i : i;
        std::vector<std::string> names;
        for (const Column& column : columns) {
            const std::string& name = column.name;
            names.push_back(name.size() <= most
                                ? name
                                : name.substr(0, head).append(ellipsis) + name.substr(name.size() - (room - head)));
        }
        if (std::set<std::string>(names.begin(), names.end()).size() == names.size()) {
            return names;
        }
    }
    return {};
}
