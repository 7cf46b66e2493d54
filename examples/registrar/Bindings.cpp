#include "Bindings.h"

#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipExpiresHeader.h"

#include <algorithm>
#include <charconv>

namespace {

using std::chrono::seconds;

constexpr seconds kUsual{3600}; // if the client does not ask for a time
constexpr seconds kLongest{7200};
constexpr std::size_t kMaxBindings = 8; // per user

/** Returns the value of an "expires" parameter, at most kLongest; `otherwise` if it is not a number or missing. */
seconds secondsOf(std::string_view digits, seconds otherwise) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc::invalid_argument || end != digits.data() + digits.size()) {
        return otherwise;
    }
    return error == std::errc() ? std::min(seconds(number), kLongest) : kLongest;
}

} // namespace

int Bindings::update(const std::string& user, const KxSipRequest& request) {
    const Clock::time_point now = Clock::now();
    const auto* const expires = request.first<KxSipExpiresHeader>();
    const seconds usual = expires == nullptr || expires->isSipDate() ? kUsual : seconds(expires->getDeltaSeconds());
    const KxString callId = request.getCallIdHeader()->getCallId();
    const std::uint32_t cseq = request.getCSeqHeader()->getSeqNumber();
    const auto isLate = [&](const Binding& binding) { return binding.callId == callId && cseq <= binding.cseq; };

    std::vector<Binding> bindings = m_users[user]; // a copy, which is stored only if all goes well
    std::erase_if(bindings, [now](const Binding& binding) { return binding.end <= now; });
    for (const KxSipContactHeader& contact : request.values<KxSipContactHeader>()) {
        if (contact.isWildCard()) { // means all addresses, and may only remove them
            const bool isAlone = &contact == request.first<KxSipContactHeader>() && contact.getNext().isNil();
            if (!isAlone || usual != seconds::zero()) {
                return 400;
            }
            if (std::any_of(bindings.begin(), bindings.end(), isLate)) {
                return 500;
            }
            bindings.clear();
            break;
        }
        const KxHandle<KxSipURL> url = contact.getURL();
        if (url.isNil()) {
            return 400;
        }
        const auto old = std::find_if(bindings.begin(), bindings.end(),
                                      [&url](const Binding& binding) { return *binding.contact->getURL() == *url; });
        if (old != bindings.end()) {
            if (isLate(*old)) {
                return 500;
            }
            bindings.erase(old);
        }
        const seconds time = secondsOf(contact.getExpires(), std::min(usual, kLongest));
        if (time != seconds::zero()) {
            if (bindings.size() == kMaxBindings) {
                return 403;
            }
            bindings.push_back({KxMake<KxSipContactHeader>(contact), callId, cseq, now + time});
        }
    }
    m_users[user] = std::move(bindings);
    return 200;
}

void Bindings::addTo(KxSipResponse& response, const std::string& user) const {
    const Clock::time_point now = Clock::now();
    seconds longest{0};
    const auto found = m_users.find(user);
    if (found != m_users.end()) {
        for (const Binding& binding : found->second) {
            const seconds left = std::chrono::ceil<seconds>(binding.end - now);
            if (left > seconds::zero()) {
                binding.contact->setExpires(KxString(std::to_string(left.count())));
                response.addSingleHeader(binding.contact, false); // a copy
                longest = std::max(longest, left);
            }
        }
    }
    response.addHeader(KxMake<KxSipExpiresHeader>(static_cast<std::uint32_t>(longest.count())), false);
}
