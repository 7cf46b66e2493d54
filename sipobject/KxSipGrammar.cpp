#include "sipobject/KxSipGrammar.h"

#include "core/GlobalConfig.h"
#include "sipobject/KxSipObjectParamDefs.h"
#include "util/KxException.h"

constinit std::atomic<std::uint8_t> KxSipGrammar::s_state{KxSipGrammar::kOpen};
constinit std::atomic<bool> KxSipGrammar::s_isFixed{false};

void KxSipGrammar::sChoose(Choice choice) {
    if (s_isFixed && choice != sChosen()) {
        KxException::sThrow("The grammar can't be chosen once a message has been read");
    }
    s_state = choice == Choice::RFC ? kRFC : kClassic;
}

/** For an open choice the configuration decides. */
bool KxSipGrammar::sDecide() {
    if (s_state == kOpen) {
        bool isRFC = false;
        Oskan::GlobalConfig::getInstance().getBool(Oskan::KxSipObject::kRFCGrammar, isRFC);
        s_state = isRFC ? kRFC : kClassic;
    }
    return s_state == kRFC;
}

void KxSipGrammar::sFixChoice() {
    sDecide();
    s_isFixed = true;
}
