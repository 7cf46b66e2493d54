#include "sipheaders/KxSipHistoryInfoHeader.h"

#include "util/KxByteArrayInputStream.h"
#include "util/KxException.h"

#include <algorithm>
#include <charconv>
#include <limits>

constinit const KxConstString KxSipHistoryInfoHeader::sToken{"History-Info"};

const HeaderID KxSipHistoryInfoHeader::kHeaderID = KxSipHeader::sNewHeaderID();

// ---- index ----

/** None if the text is no index. */
std::vector<std::uint32_t> KxSipHistoryInfoHeader::sNumbers(std::string_view index) {
    std::vector<std::uint32_t> numbers;
    const char* const end = index.data() + index.size();
    for (const char* at = index.data();; ++at) {
        std::uint32_t number = 0;
        const auto [stop, error] = std::from_chars(at, end, number);
        if (error != std::errc() || (stop != end && *stop != '.')) {
            return {};
        }
        numbers.push_back(number);
        if (stop == end) {
            return numbers;
        }
        at = stop;
    }
}

KxString KxSipHistoryInfoHeader::sIndex(KxSipText index) {
    if (sNumbers(index.view()).empty()) {
        KxSipFault("Invalid History-Info index").raiseIfAny();
    }
    return index.line();
}

KxString KxSipHistoryInfoHeader::getChildIndex(std::uint32_t number) const {
    const KxString index = getIndex();
    return sNumbers(index.view()).empty() ? KxString()
                                          : KxString(std::string(index.view()) + '.' + std::to_string(number));
}

KxString KxSipHistoryInfoHeader::getSiblingIndex() const {
    const KxString index = getIndex();
    const std::vector<std::uint32_t> numbers = sNumbers(index.view());
    if (numbers.empty() || numbers.back() == std::numeric_limits<std::uint32_t>::max()) {
        return {};
    }
    const std::string_view before = index.view().substr(0, index.view().rfind('.') + 1);
    return KxString(std::string(before) + std::to_string(numbers.back() + 1));
}

// ---- where the target came from ----

KxString KxSipHistoryInfoHeader::getHiTargetParam() const {
    const auto isTarget = [](const KxParameters::Pair& parameter) {
        return parameter.name.equalsNoCase("rc") || parameter.name.equalsNoCase("mp") ||
               parameter.name.equalsNoCase("np");
    };
    const auto found = std::find_if(m_parameters.begin(), m_parameters.end(), isTarget);
    return found == m_parameters.end() ? KxString() : found->name;
}

void KxSipHistoryInfoHeader::setHiTargetParam(KxSipText name, KxSipText index) {
    if (name.view() != "rc" && name.view() != "mp" && name.view() != "np") {
        KxSipFault("Invalid History-Info target parameter").raiseIfAny();
    }
    const KxString checked = sIndex(index);
    KxHandle<KxParameters> changed(m_parameters.handle()->clone());
    for (const char* const other : {"rc", "mp", "np"}) {
        changed->removeValue(other);
    }
    changed->setValue(name.view(), checked);
    m_parameters.write() = *changed;
}

void KxSipHistoryInfoHeader::removeHiTargetParam() {
    for (const char* const name : {"rc", "mp", "np"}) {
        removeParameter(name);
    }
}

// ---- headers of the URL ----

KxString KxSipHistoryInfoHeader::getURLHeader(const char* name) const {
    const KxHandle<KxSipURL> url = getURL();
    return url.isNil() ? KxString() : url->getHeader(name);
}

KxString KxSipHistoryInfoHeader::sEscaped(std::string_view text) {
    static constexpr std::string_view kUnreserved = "-_.!~*'()";
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : text) {
        if (KxAscii::isAlpha(c) || KxAscii::isDigit(c) || kUnreserved.find(c) != std::string_view::npos) {
            escaped += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            escaped.append(1, '%').append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
        }
    }
    return KxString(escaped);
}

/** Removes the header however its name is escaped. */
void KxSipHistoryInfoHeader::setURLHeader(const char* name, const KxString& value) {
    const KxHandle<KxSipURL> url = getURL();
    if (url.isNil()) {
        KxSipFault("A header of a URL needs a SIP URL").raiseIfAny();
    }
    const KxHandle<KxParameters> headers = url->getHeaders();
    KxParameters changed(*headers);
    for (const KxParameters::Pair& header : *headers) {
        KxSipURL only;
        only.getHeaders()->setValue(header.name.view(), KxString(""));
        if (!only.getHeader(name).isNil()) {
            changed.removeValue(header.name.view());
        }
    }
    changed.setValue(name, value.isNil() ? value : sEscaped(value.view()));
    *headers = changed;
}

/** Read by the class itself, since a host may have registered another one for the name. */
KxHandle<KxSipReasonHeader> KxSipHistoryInfoHeader::getReason() const try {
    const KxString text = getURLHeader("Reason");
    const std::string line = std::string("Reason:").append(KxSipText(text).checked().view()).append("\r\n");
    KxByteArrayInputStream in(line);
    const KxHandle<KxSipReasonHeader> reason = KxMake<KxSipReasonHeader>("SIP");
    reason->parse(in);
    return reason;
} catch (const KxHandle<KxException>&) {
    return {};
}

void KxSipHistoryInfoHeader::setReason(const KxSipReasonHeader& reason) {
    std::string all;
    for (const KxSipHeader* value = &reason; value != nullptr; value = value->getNext().get()) {
        all.append(all.empty() ? "" : ",").append(value->getValueText().view());
    }
    setURLHeader("Reason", KxString(all));
}

bool KxSipHistoryInfoHeader::isPrivate() const {
    const KxString privacy = getPrivacy();
    std::string_view rest = privacy.view();
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of(";,"), rest.size());
        if (KxAscii::equalsNoCase(KxAscii::trim(rest.substr(0, end)), "history")) {
            return true;
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
}
