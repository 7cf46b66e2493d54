#include "tools/kxsip/flow/Column.h"

std::string Column::portText() const {
    if (ports.empty()) {
        return "";
    }
    return ports.size() == 1 ? "port " + std::to_string(*ports.begin()) : std::to_string(ports.size()) + " ports";
}
