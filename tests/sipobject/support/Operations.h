#pragma once

#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/messages/KxSipDialog.h"
#include "sipobject/messages/KxSipDialogParts.h"
#include "sipobject/messages/KxSipRequestParts.h"
#include "sipobject/messages/KxSipResponseParts.h"
#include "tests/sipobject/support/Derivation.h"
#include "tests/sipobject/support/HeaderSupport.h"

#include <stdexcept>

using Message = KxHandle<KxSipMessage>;
using Made = KxHandle<KxObject>; ///< A message, bytes, or nil.

/** An operation on a message; its effect is in what it returns, and in what the message writes. */
struct Operation {
    template <class F>
    Operation(const char* theName, F f)
        : name(theName), run([f](const Message& message) -> Made {
              using Result = decltype(f(message));
              if constexpr (std::is_void_v<Result>) {
                  return f(message), Made();
              } else if constexpr (std::is_same_v<Result, KxString>) {
                  return KxByteArray::sCreate(f(message).c_str());
              } else {
                  return Made(f(message));
              }
          }) {}

    const char* name;
    std::function<Made(const Message&)> run;
};

/** Thrown if an operation does not apply to the message. */
struct Unfit : std::runtime_error {
    Unfit() : std::runtime_error("") {}
};

template <class T>
T& need(const KxHandle<T>& object) {
    return object.isNil() ? throw Unfit() : *object;
}

inline KxSipRequest& request(const Message& message) {
    return need(as<KxSipRequest>(message));
}

template <class H>
H& first(const Message& message) {
    return need(KxHandleCast<H>(message->getHeader(H::sToken)));
}

inline KxSipDigestCredentialsInfo& credentials(const Message& message) {
    return need(KxHandleCast<KxSipDigestCredentialsInfo>(first<KxSipAuthorizationHeader>(message).getCredentials()));
}

inline KxSipURL& senderURL(const Message& message) {
    return need(KxHandleCast<KxSipURL>(need(need(message->getFromHeader()).getNameAddress()).getURI()));
}

/** Changes a list that was handed out. */
inline void change(const KxHandle<KxParameters>& list) {
    list->setValue("x-long-enough-a-name", KxString("a text of its own block"));
}

inline constexpr const char* kLongTag = "a-tag-of-a-block-of-its-own";
inline const KxSipViaPart kLongVia{.host = "192.0.2.9", .branch = "z9hG4bK-a-branch-of-a-block-of-its-own"};

inline KxHandle<KxSipInviteMessage> buildInvite() {
    return KxSipInviteMessage::sBuild({.from = "\"A long display name\" <sip:a@192.0.2.9>;tag=1",
                                       .to = "<sip:b@example.com>",
                                       .contact = "<sip:a@192.0.2.9>",
                                       .callId = "a-call-id-of-a-block-of-its-own",
                                       .cseq = 1,
                                       .via = kLongVia,
                                       .routes = {"<sip:proxy.example.com;lr>", "<sip:other.example.com;lr>"},
                                       .contentType = "a/b",
                                       .body = "text"});
}

/** Operations that threads may call on one message at the same time. */
inline const std::vector<Operation> kSharedOperations{
    {"copy", [](const Message& m) { return m->clone(); }},
    {"key", [](const Message& m) { return m->createKey(); }},
    {"write",
     [](const Message& m) {
         KxByteArrayOutputStream out(16);
         m->serialize(out);
         return out.toByteArray();
     }},
    {"look",
     [](const Message& m) {
         static_cast<void>(m->getHeader("X-A").isNil() || m->getHeaderOrder().empty());
         static_cast<void>(m->isSupported("a") || m->isRequired("b"));
         static_cast<void>(m->hasNamed("x-a") || m->hasNamed("ROUTE"));
     }},
    {"add first", [](const Message& m) { m->addHeader(readHeader("Via: SIP/2.0/UDP a, SIP/2.0/UDP b"), true); }},
    {"add last", [](const Message& m) { m->addHeader(KxMake<KxSipRouteHeader>("<sip:h;lr>"), false); }},
    {"add to a chain", [](const Message& m) { m->addHeader(KxMake<KxSipSupportedHeader>("x"), false); }},
    {"add single", [](const Message& m) { m->addSingleHeader(KxMake<KxSipUnknownHeader>("X-A", "1"), false); }},
    {"add to a host's kind", [](const Message& m) { m->addHeader(readHeader("X-Kx-Account: a, b"), false); }},
    {"remove all", [](const Message& m) { m->removeAllNamed("ROUTE"); }},
    {"remove", [](const Message& m) { m->removeHeader("Via"); }},
    {"remove unknown", [](const Message& m) { m->removeHeader("x-a"); }},
    {"set body", [](const Message& m) { m->setBody("a long enough body", "application/x-of-the-host"); }},
    {"set no body", [](const Message& m) { m->setBody("", "", 0); }},
    {"set start line",
     [](const Message& m) {
         if (const auto response = as<KxSipResponse>(m); !response.isNil()) {
             return response->setReasonPhrase("A phrase of its own block");
         }
         const auto uri = KxMake<KxURI>("");
         uri->parse("urn:a rather long text with <angle> brackets");
         request(m).setURI(uri);
     }},
};

/** Operations of one thread. */
inline const std::vector<Operation> kOtherOperations{
    {"response", [](const Message& m) { return derive(m, "response 200 body"); }},
    {"ACK", [](const Message& m) { return derive(m, "ack body"); }},
    {"BYE", [](const Message& m) { return derive(m, "bye"); }},
    {"CANCEL", [](const Message& m) { return derive(m, "cancel"); }},
    {"PRACK", [](const Message& m) { return derive(m, "prack body"); }},
    {"Request-URI", [](const Message& m) { return request(m).getNameAddress()->getURI()->getString(); }},
    {"insert Via", [](const Message& m) { request(m).insertViaHeader("192.0.2.9", 5070, "TCP"); }},
    {"value text", [](const Message& m) { return first<KxSipViaHeader>(m).getValueText(); }},
    {"set address", [](const Message& m) { request(m).setPreferredIpAddr("2001:db8:1111:2222:3333:4444:5555:6666"); }},
    {"set user", [](const Message& m) { credentials(m).setUsername("a user name of its own block"); }},
    {"validate",
     [](const Message& m) {
         credentials(m).validate("a user name of its own block", "a long password", "a rather long realm");
     }},
    {"tag", [](const Message& m) { need(m->getToHeader()).setTag("a tag of its own block, no word"); }},
    {"set parameter of a URL",
     [](const Message& m) { senderURL(m).setParameter("x", KxString("a text of its own block")); }},
    {"remove parameters",
     [](const Message& m) {
         senderURL(m).removeParameter("user");
         senderURL(m).clearHeaders();
         first<KxSipViaHeader>(m).removeBranch();
     }},
    {"list of a Via", [](const Message& m) { change(first<KxSipViaHeader>(m).getParameters()); }},
    {"headers of a URL", [](const Message& m) { change(senderURL(m).getHeaders()); }},
    {"lists that a copy shares",
     [](const Message& m) {
         const Message copy = copyOf(*m);
         change(first<KxSipViaHeader>(m).getParameters());
     }},
    {"set parameter of a list that a copy shares",
     [](const Message& m) {
         const Message copy = copyOf(*m);
         first<KxSipContactHeader>(m).setExpires("a text of its own block");
     }},
    {"lists of copies",
     [](const Message& m) {
         const Message copy = copyOf(*m);
         change(first<KxSipViaHeader>(copy).getParameters());
         first<KxSipContactHeader>(copy).setParameter("x", KxString("a text of its own block"));
         first<KxSipContactHeader>(copy).removeParameter("expires");
         change(first<KxSipContactHeader>(copy).getParameters());
         change(senderURL(copy).getParameters());
         change(senderURL(copy).getHeaders());
         return copy;
     }},
    {"digest", [](const Message& m) { return credentials(m).getRequestDigest(); }},
    {"build a request", [](const Message&) { return buildInvite(); }},
    {"build a response",
     [](const Message& m) { return KxSipResponse::sBuild(request(m), {.statusCode = 486, .toTag = kLongTag}); }},
    {"build a request within a dialog",
     [](const Message& m) {
         const auto response = KxSipResponse::sBuild(request(m), {.toTag = kLongTag, .contact = "<sip:b@192.0.2.3>"});
         KxSipDialog dialog = KxSipDialog::sOfCallee(request(m), *response);
         dialog.refresh(*m);
         const auto info =
             KxSipRequest::sWithin(dialog, "INFO", {.via = kLongVia, .contentType = "a/b", .body = "text"});
         info->removeHeader("CSeq"); // whose number is a random one
         return info;
     }},
    {"set body of a string", [](const Message& m) { m->setBody(std::string(100, 'x'), "application/x-of-the-host"); }},
};

/** The result of an operation, for comparison. */
inline std::string textOf(const Made& made) {
    if (const auto* const message = dynamic_cast<const KxSipMessage*>(made.get())) {
        return dumpOf(*message);
    }
    const auto* const bytes = dynamic_cast<const KxByteArray*>(made.get());
    return bytes == nullptr ? "" : std::string(bytes->view());
}
