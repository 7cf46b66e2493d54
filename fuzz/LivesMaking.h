#pragma once

#include "fuzz/LivesProgram.h"
#include "fuzz/LivesSteps.h"
#include "sipobject/KxSipObject.h"

#include <optional>

/** What the operation threw; "" if it did not. */
template <class F>
std::string thrownBy(F f) {
    return outcomeOf([&] {
        f();
        return std::string();
    });
}

/** Checks that a message which was built is valid, and is read again. */
inline void checkMade(const KxSipMessage& made) {
    const std::string text = written(made);
    if (!made.isValid()) {
        fail("what is built is valid", text, "");
    }
    checkSecondRound(made, text, !made.getViaHeader().isNil());
}

/** Makes a message from two others, or from texts; nil if they do not allow it. */
inline LivesMessage makeMessage(const LivesMessage& parent, const LivesMessage& other, const LivesProgram& program,
                                const LivesStep& step) {
    const auto request = as<KxSipRequest>(parent);
    const auto response = as<KxSipResponse>(other);
    const auto invite = as<KxSipInviteMessage>(parent);
    const std::string text = program.text(step.argument);
    const std::string more = program.text(step.argument / 8 + step.flags / 8);
    LivesMessage made;
    thrownBy([&] {
        switch (step.flags % 8) {
        case 0:
            made = copyOf(*parent);
            break;
        case 1:
            if (!request.isNil()) {
                made = KxSipResponse::sBuild(*request, {.toTag = text, .contact = "<sip:c@h>"});
            }
            break;
        case 2:
            if (!request.isNil()) {
                made = KxSipResponse::sBuild(*request, {.statusCode = 101 + static_cast<int>(step.argument),
                                                        .reasonPhrase = text,
                                                        .contact = more,
                                                        .contentType = "a/b",
                                                        .body = text});
            }
            break;
        case 3:
            made = KxSipRequest::sBuild("INVITE",
                                        {.from = text, .to = more, .contact = "<sip:a@h>", .via = {.host = "h"}});
            break;
        case 4:
            made = KxSipRequest::sBuild(
                text, {.from = "<sip:a@h>", .to = "<sip:b@h>", .contact = "<sip:a@h>", .callId = more});
            break;
        case 5:
            made = KxSipRequest::sBuild("INVITE", {.requestUri = text,
                                                   .from = "<sip:a@h>",
                                                   .to = "<sip:b@h>",
                                                   .contact = "<sip:a@h>",
                                                   .via = {.host = more},
                                                   .routes = {"<sip:r;lr>"}});
            break;
        case 6:
            if (!invite.isNil() && !response.isNil()) {
                made = KxSipAckMessage::sFor(*invite, *response, {.via = {.host = "h"}});
            }
            break;
        default:
            made = KxSipRequest::sBuild("OPTIONS", {.from = "<sip:a@h>",
                                                    .to = "<sip:b@h>",
                                                    .via = {.host = "h", .transport = text, .branch = more},
                                                    .contentType = text,
                                                    .body = more});
        }
    });
    if (!made.isNil() && step.flags % 8 != 0) {
        checkMade(*made);
    }
    return made;
}

/** A dialog that a host has. */
class LivesDialog {
public:
    /** Makes the dialog, changes it, or makes a request within it, which is returned. */
    LivesMessage step(const LivesMessage& message, const LivesMessage& other, unsigned how, const std::string& text) {
        const auto request = as<KxSipRequest>(message);
        const auto response = as<KxSipResponse>(other);
        if (how % 8 < 2) {
            if (!request.isNil() && !response.isNil()) {
                thrownBy([&] {
                    m_dialog = how % 2 == 0 ? KxSipDialog::sOfCaller(*request, *response)
                                            : KxSipDialog::sOfCallee(*request, *response);
                });
            }
            return {};
        }
        if (!m_dialog.has_value()) {
            return {};
        }
        const std::string state = stateOf(*m_dialog);
        const std::uint32_t sequence = m_dialog->getLocalSequence();
        const KxSipDialogParts parts{.contact = "<sip:n@h>", .via = {.host = "h"}, .contentType = "a/b", .body = text};
        LivesMessage made;
        const std::string why = thrownBy([&] {
            switch (how % 8) {
            case 2:
                m_dialog->refresh(*message);
                break;
            case 3:
                if (!response.isNil()) {
                    m_dialog->confirm(*response);
                }
                break;
            case 4:
                if (!response.isNil()) {
                    made = KxSipPrackMessage::sFor(*m_dialog, *response, parts);
                }
                break;
            case 5:
                made = KxSipRequest::sWithin(*m_dialog, text, parts);
                break;
            case 6:
                made = KxSipRequest::sWithin(*m_dialog, "BYE", {.contact = text, .via = {.host = text}});
                break;
            default:
                made = KxSipRequest::sWithin(*m_dialog, "INVITE", parts);
            }
        });
        if (!why.empty() || how % 8 >= 4) {
            same("a dialog is changed by what is received only", state, stateOf(*m_dialog));
        }
        if (made.isNil() || sequence != 0) { // the first number is any
            same("a request has the next number", std::to_string(sequence + (made.isNil() ? 0 : 1)),
                 std::to_string(m_dialog->getLocalSequence()));
        }
        if (!made.isNil()) {
            checkWithin(*made);
        }
        return made;
    }

private:
    static std::string stateOf(const KxSipDialog& dialog) {
        std::string state = std::string(dialog.getCallId().view()) + '|' + std::string(dialog.getLocalTag().view()) +
                            '|' + std::string(dialog.getRemoteTag().view()) + '|' +
                            std::string(dialog.getRemoteTarget().getString().view());
        for (const KxHandle<KxSipNameAddress>& hop : dialog.getRouteSet()) {
            state += '|' + std::string(hop->getURLString().view());
        }
        return state;
    }
    /** Its own requests match the dialog, as seen from the other side. */
    void checkWithin(const KxSipMessage& made) const {
        const auto text = [](const KxString& value) { return std::string(value.isNil() ? "-" : value.view()); };
        const LivesIds expected(std::string(m_dialog->getCallId().view()), text(m_dialog->getLocalTag()),
                                text(m_dialog->getRemoteTag()), m_dialog->getLocalSequence());
        same("a request within a dialog has its identifiers", expected.text(), LivesIds(made).text());
        if (!made.isValid()) {
            fail("a request within a dialog is valid", expected.text(), written(made));
        }
    }

    std::optional<KxSipDialog> m_dialog;
};
