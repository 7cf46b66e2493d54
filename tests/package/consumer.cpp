// The program of the README, built with the installed package.

#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/messages/KxSipMessage.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxByteArrayOutputStream.h"

#include "sipobject/KxSipObject.h" // the whole library; the headers above are enough for this program
#include "sipobject/KxSipVersion.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

static_assert(KX_SIP_VERSION_MAJOR >= 1 && KX_SIP_VERSION_MINOR >= 0 && KX_SIP_VERSION_PATCH >= 0);

int main(int argc, char** argv) {
    std::ifstream file(argc > 1 ? argv[1] : "", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};

    KxByteArrayInputStream in(bytes);
    const KxHandle<KxSipMessage> message = KxSipMessage::sConstructFrom(in);
    std::cout << "from " << message->getFromHeader()->getURL() << "\n";
    KxByteArrayOutputStream out;
    message->serialize(out);

    std::cout << "version " KX_SIP_VERSION_TEXT "\n";

    return message->isValid() && out.size() != 0 ? 0 : 1;
}
