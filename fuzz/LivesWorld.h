#pragma once

#include "fuzz/LivesChecks.h"
#include "fuzz/LivesDigest.h"
#include "fuzz/LivesEdits.h"
#include "fuzz/LivesMaking.h"

/** Three messages, the headers and copies that a host keeps of them, and a dialog. What was not to change is as it was,
    whatever a refused operation has thrown: each step begins with what was written after the last one. */
class Lives {
public:
    Lives(const LivesMessage& first, const LivesProgram& program)
        : m_program(program), m_lives{Life(first), Life(copyOf(*first)), Life(copyOf(*first))} {}

    void step(const LivesStep& step) {
        Life& life = m_lives[step.message];
        Life& other = m_lives[(step.message + 1) % 3];
        switch (step.operation) {
        case 8:
            edit(life, step);
            break;
        case 9:
            move(life, other, step);
            break;
        case 10:
            keep(life, step);
            break;
        case 11:
            read(life, step);
            break;
        case 12:
            if (const LivesMessage made =
                    m_dialog.step(life.message(), other.message(), step.flags, m_program.text(step.argument));
                !made.isNil()) {
                m_lives[(step.message + 2) % 3].become(made);
            }
            break;
        case 13:
            authenticate(life, step);
            break;
        case 14:
            send(step.argument, true);
            break;
        case 15:
            make(life, other, step);
            break;
        default:
            life.step(step.operation, step.flags, step.argument);
        }
    }
    void finish() {
        checkUnchanged();
        for (const Life& life : m_lives) {
            life.checkEdited();
        }
        send(m_lives[0].text().size() / 2, false);
        checkOwners(m_program.steps().size() % 2 != 0);
    }

private:
    struct Copy {
        LivesMessage message;
        std::string text;
    };

    /** A value of the message; null if it has no headers. */
    static KxSipHeader* valueOf(const KxSipMessage& message, unsigned number) {
        const std::vector<HeaderID> order = message.getHeaderOrder();
        if (order.empty()) {
            return nullptr;
        }
        KxSipHeader* value = message.getHeaderByID(order[number % order.size()]).get();
        for (std::size_t left = number / order.size(); left != 0 && !value->getNext().isNil(); --left) {
            value = value->getNext().get();
        }
        return value;
    }
    void checkUnchanged() const {
        for (const Life& life : m_lives) {
            life.checkUnchanged();
        }
        for (const Copy& copy : m_copies) {
            same("a copy that is kept is as it was", copy.text, written(*copy.message));
        }
    }
    void checkOwners(bool hasLists) const {
        LivesOwners owners(hasLists);
        for (const Life& life : m_lives) {
            owners.take(*life.message());
        }
        for (const Copy& copy : m_copies) {
            owners.take(*copy.message);
        }
        owners.check(m_lives[0].text());
    }

    /** Writes a text into a header, or into the message. Each line of the message is still one line. */
    void edit(Life& life, const LivesStep& step) {
        const std::string text = m_program.text(step.argument);
        const unsigned which = step.argument % 128 / 32 + step.flags / 16 % 8 * 4;
        KxSipHeader* const header = step.flags % 16 == 15 ? nullptr : valueOf(*life.message(), step.flags % 16);
        const HeaderID id = header == nullptr ? HeaderID{KxHeaderIDs::kNone} : header->getHeaderID();
        PlainMessage before = life.plain();
        const std::string why = thrownBy([&] {
            if (header == nullptr) {
                editMessage(*life.message(), which, text);
            } else if (step.flags >= 128) { // not checked
                std::string line = text;
                std::erase_if(line, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
                const KxString stored(line);
                LivesEdit<KxString>(*header, which, stored).run();
            } else {
                LivesEdit<std::string>(*header, which, text).run();
            }
        });
        if (!why.empty()) {
            life.checkUnchanged();
            return;
        }
        life.note();
        PlainMessage after = life.plain();
        if (header != nullptr) {
            same("an edit is one of its header", before.without(id).withoutBody().written(),
                 after.without(id).withoutBody().written());
        }
    }
    void editMessage(KxSipMessage& message, unsigned which, const std::string& text) {
        auto* const request = message.as<KxSipRequest>();
        switch (which % 8) {
        case 0:
            message.setBody(text, std::string("a/b"));
            break;
        case 1:
            message.setBody(std::string("body"), text);
            break;
        case 2:
            if (request == nullptr) {
                message.as<KxSipResponse>()->setReasonPhrase(text);
            } else {
                request->setPreferredIpAddr(text);
            }
            break;
        case 3:
            if (request != nullptr) {
                request->insertViaHeader(text, 5060, std::string("UDP"));
            }
            break;
        case 4:
            message.addHeader(KxMake<KxSipUnknownHeader>(std::string("X-New"), text), false);
            break;
        case 5:
            message.addHeader(KxMake<KxSipContactHeader>(text), true);
            break;
        case 6:
            message.replace(KxMake<KxSipSupportedHeader>(text));
            break;
        default:
            message.addHeader(KxMake<KxSipWarningHeader>(399U, text, text), false);
        }
    }

    /** Takes a header of one message to another, with or without removing it first. */
    void move(Life& from, Life& to, const LivesStep& step) {
        KxHandle<KxSipHeader> header(valueOf(*from.message(), step.argument));
        if (header.isNil()) {
            return;
        }
        const bool first = (step.flags & 1) != 0;
        const bool single = (step.flags & 2) != 0;
        const bool removed = (step.flags & 4) != 0;
        const HeaderID id = header->getHeaderID();
        PlainMessage left = from.plain();
        PlainMessage right = to.plain();
        if (removed) {
            header = from.message()->getHeaderByID(id);
            const std::string name(header->getToken().view());
            if (id == KxHeaderIDs::kUnknown || left.kindsNamed(name) != 1) {
                return; // another one may be found by the name
            }
            left.remove(name);
            if (!from.message()->removeHeader(name) || !header->getNext().isNil()) {
                fail("a value is removed without the others", name, from.text());
            }
        }
        if ((step.flags & 8) != 0) {
            right.replace(*header);
            to.message()->replace(header);
        } else {
            right.add(*header, first, true);
            single ? to.message()->addSingleHeader(header, first) : to.message()->addHeader(header, first);
        }
        if (removed && !single && !isValue(*to.message(), *header)) {
            fail("a header of no message is taken itself", from.text(), to.text());
        }
        from.note();
        to.note();
        same("a header is taken from where it was", left.withoutBody().written(), from.plain().withoutBody().written());
        same("a header is added where it belongs", right.withoutBody().written(), to.plain().withoutBody().written());
        checkOwners(false);
    }
    static bool isValue(const KxSipMessage& message, const KxSipHeader& header) {
        const KxSipHeader* value = message.getHeaderByID(header.getHeaderID()).get();
        while (value != nullptr && value != &header) {
            value = value->getNext().get();
        }
        return value != nullptr;
    }

    void keep(Life& life, const LivesStep& step) {
        switch (step.flags % 4) {
        case 0:
            if (m_headers.size() < 4) {
                m_headers.push_back(KxHandle<KxSipHeader>(valueOf(*life.message(), step.argument)));
            }
            break;
        case 1:
            if (m_copies.size() < 2) {
                m_copies.push_back({copyOf(*life.message()), life.text()});
            }
            break;
        case 2:
            m_headers.clear();
            m_copies.clear();
            break;
        default:
            if (!m_headers.empty() && !m_headers[step.argument % m_headers.size()].isNil()) {
                addKept(life, m_headers[step.argument % m_headers.size()], (step.flags & 4) != 0);
            }
        }
    }
    /** It may be part of any of the messages, or of a message that is gone. */
    void addKept(Life& life, const KxHandle<KxSipHeader>& header, bool first) const {
        PlainMessage plain = life.plain();
        if (!(life.message()->getHeaderByID(header->getHeaderID()) == header)) {
            plain.add(*header, first, true);
        }
        life.message()->addHeader(header, first);
        life.note();
        same("a header is added where it belongs", plain.withoutBody().written(), life.plain().withoutBody().written());
        checkOwners(false);
    }

    /** Reads a message, or a line into a header. */
    void read(Life& life, const LivesStep& step) {
        const std::string text = m_program.text(step.argument);
        if (step.flags % 2 == 0) {
            const KxSipReading reading = KxSipReading::sRead(text);
            if (!reading.message.isNil() && outcomeOf([&] { return written(*reading.message); })[0] != '!') {
                life.become(reading.message);
            } else if (const KxHandle<KxSipResponse> answer = reading.response(400, "t"); !answer.isNil()) {
                life.become(answer);
            }
            return;
        }
        KxSipHeader* const header = valueOf(*life.message(), step.flags / 4);
        if (header == nullptr || dynamic_cast<KxSipAuthorizationHeader*>(header) != nullptr ||
            isExactly<KxSipUnreadHeader>(*header)) {
            return; // credentials that were read can't always be written; a header of no class takes any text
        }
        const std::string given = (step.flags & 2) != 0 ? kLines[step.argument % kLines.size()] : text;
        const std::string line =
            std::string(header->getToken().view()).append(given, std::min(given.find(':'), given.size()));
        PlainMessage before = life.plain();
        const std::string why = thrownBy([&] {
            KxByteArrayInputStream in{std::string_view(line)};
            header->parse(in);
        });
        if (!why.empty()) {
            life.checkUnchanged();
        } else {
            life.note();
            PlainMessage after = life.plain();
            const HeaderID id = header->getHeaderID();
            same("an edit is one of its header", before.without(id).withoutBody().written(),
                 after.without(id).withoutBody().written());
        }
    }

    void authenticate(Life& life, const LivesStep& step) {
        const auto request = as<KxSipRequest>(life.message());
        if (request.isNil()) {
            return;
        }
        PlainMessage before = life.plain();
        if (!thrownBy([&] { LivesDigest(*request, m_program, step).run(); }).empty()) {
            life.checkUnchanged();
        } else {
            life.note();
            PlainMessage after = life.plain();
            const HeaderID id = KxHeaderIDs::kAuthorization;
            same("an edit is one of its header", before.without(id).withoutBody().written(),
                 after.without(id).withoutBody().written());
        }
    }

    void send(std::size_t cut, bool reads) const {
        LivesWire wire;
        for (const Life& life : m_lives) {
            wire.take(*life.message(), life.text());
        }
        wire.check(cut, reads);
    }

    /** Makes a message from another one, or from texts, and puts it into the place of the other one. */
    void make(const Life& life, Life& other, const LivesStep& step) const {
        const LivesMessage made = makeMessage(life.message(), other.message(), m_program, step);
        if (!made.isNil()) {
            life.checkUnchanged();
            other.become(made);
        }
    }

    const LivesProgram& m_program;
    std::array<Life, 3> m_lives;
    std::vector<KxHandle<KxSipHeader>> m_headers;
    std::vector<Copy> m_copies;
    LivesDialog m_dialog;
};
