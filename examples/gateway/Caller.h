#pragma once

#include "Call.h"

#include <optional>

/** A call that we make. */
class Caller final : public Call {
public:
    struct Plan {
        std::string uri; ///< "sip:..."
        std::chrono::milliseconds duration{1000};
        std::optional<std::chrono::milliseconds> cancelAfter; ///< the first provisional response
        bool isReliable = false;                              ///< Provisional responses have to be.
        std::uint32_t sessionSeconds = 0;                     ///< 0 asks for no session timer.
        std::function<void(const std::string& line)> tell;
        std::function<void(bool isDone)> end; ///< Whether it went as planned.
    };

    Caller(CallHost& host, const Peer& peer, Plan plan);

    void begin();

protected:
    KxHandle<KxSipRequest> makeBye() const override;
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
    KxHandle<KxSipResponse> m_answer; // the 2xx
    std::uint32_t m_rseq = 0;         // of the last reliable response
    bool m_isCancelled = false;
    Timer m_cancelling;
    Timer m_talking;
};
