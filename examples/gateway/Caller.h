#pragma once

#include "Call.h"

#include <optional>

/** An outgoing call. */
class Caller final : public Call {
public:
    struct Plan {
        std::string uri; ///< "sip:..."
        std::chrono::milliseconds duration{1000};
        std::optional<std::chrono::milliseconds> cancelAfter; ///< Time from the first provisional response to CANCEL.
        bool isReliable = false;                              ///< Provisional responses must be reliable.
        std::uint32_t sessionSeconds = 0;                     ///< With 0 the INVITE asks for no session timer.
        std::function<void(const std::string& line)> tell;
        std::function<void(bool isDone)> end; ///< Called at the end; whether the call went as planned.
    };

    Caller(CallHost& host, const Peer& peer, Plan plan);

    void begin();

protected:
    void onEnd(const char* why) override;

private:
    void invite();
    void follow(const KxHandle<KxSipResponse>& response);
    void followProvisional(const KxHandle<KxSipResponse>& response);
    void followFinal(const KxHandle<KxSipResponse>& response);
    void cancel();
    void fail(const std::string& why, bool isDone);

    Plan m_plan;
    KxHandle<KxSipInviteMessage> m_invite;
    std::uint32_t m_rseq = 0; // of the last reliable response
    bool m_isCancelled = false;
    Timer m_cancelling;
    Timer m_talking;
};
