#pragma once

#include "Callee.h"
#include "Caller.h"

#include <unordered_map>

/** Both sides of a user agent: reads what comes, refuses what it must, and brings the rest to its calls. Used by one
    thread. [RFC 3261 8.2] */
class UserAgent final : public CallHost {
public:
    struct Settings {
        std::chrono::milliseconds ring{200}; ///< How long a call rings before it is answered.
    };

    UserAgent(Timers& clock, Transport& wire, const Settings& settings) : CallHost(clock, wire), m_settings(settings) {}

    /** A message that came. Throws nothing that a peer could cause. */
    void receive(std::string_view bytes, const Peer& from);
    /** Makes a call. Throws KxException for a URI that can't be read. */
    void call(const Peer& to, const Caller::Plan& plan);

private:
    using Request = KxHandle<KxSipRequest>;

    void forget(const std::string& tag) override;
    std::shared_ptr<Call> find(const KxSipRequest& request) const;
    void serve(const Request& request, const Peer& from);
    void dispatch(const Request& request, const Transactions::Id& id, const Peer& from);
    void acknowledge(const KxSipRequest& ack);
    KxHandle<KxSipResponse> refuse(const Request& request) const;
    void refuseUnreadable(std::string_view bytes, const KxString& why, const Peer& from);
    void reply(const KxHandle<KxSipResponse>& response, const Peer& from);

    Settings m_settings;
    std::unordered_map<std::string, std::shared_ptr<Call>> m_calls; // by our tag
};
