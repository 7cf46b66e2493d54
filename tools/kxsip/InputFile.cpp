#include "tools/kxsip/InputFile.h"

#include "tools/kxsip/Input.h"
#include "tools/kxsip/Printable.h"

#include <iostream>

InputFile InputFile::sRead(const std::string& name) {
    Input input(name, Input::Packed::AsIs);
    while (input.more()) {
    }
    return {name, std::string(input.bytes())};
}

void complainOfFile(const std::string& name, const std::system_error& why) {
    std::cerr << "kxsip: cannot read " << printable(name) << ": " << why.code().message() << '\n';
}
