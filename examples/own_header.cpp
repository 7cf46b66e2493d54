// A host with a header class of its own, which needs no change to the library and none of its free identifiers.

#include "sipobject/headers/KxSipParameterHeader.h"
#include "sipobject/headers/KxSipTokenHeader.h"
#include "sipobject/messages/KxSipMessage.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxByteArrayOutputStream.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

/** X-Account: the account that pays for the call.
    X-Account = ( "X-Account" / "xa" ) HCOLON token *(SEMI generic-param)      "xa: 17;hold" -> the same */
class AccountHeader final : public KxSipTokenHeader<AccountHeader, KxSipParameterHeader<AccountHeader>> {
public:
    explicit AccountHeader(const char* account) : KxSipTokenHeader(account) {}

    const KxString& getAccount() const { return m_value; }
    void setAccount(const KxString& account) { m_value = account; }

    static const KxConstString sToken;
    static const KxConstString sCompactToken;
    static constexpr char kClassName[] = "AccountHeader";
    inline static const HeaderID kHeaderID = KxSipHeader::sNewHeaderID();
    static constexpr const KxCharSet& kTokenEnd = sDelimeters;
    static constexpr const char* kEmptyError = "Invalid X-Account header";

private:
    friend class KxSipHeaderOf<AccountHeader>;

    AccountHeader() = default;
};

constinit const KxConstString AccountHeader::sToken{"X-Account"};
constinit const KxConstString AccountHeader::sCompactToken{"xa"};

static const AccountHeader::Registration s_registration;

int main(int argc, char** argv) {
    std::ifstream file(argc > 1 ? argv[1] : "", std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    bytes.insert(bytes.find("\r\n") + 2, "xa: 17;hold, 18\r\n");

    KxByteArrayInputStream in(bytes);
    const KxHandle<KxSipMessage> message = KxSipMessage::sConstructFrom(in);
    for (AccountHeader& account : message->values<AccountHeader>()) {
        account.setAccount(KxString("0" + std::string(account.getAccount().view())));
    }
    message->addHeader(KxMake<AccountHeader>("19"), false);

    std::string accounts;
    for (const KxSipHeader& account : message->valuesNamed("x-account")) {
        accounts.append(account.getToken().view()).append(" ").append(account.getValueText().view()) += '|';
    }
    KxByteArrayOutputStream out;
    message->serialize(out);
    std::cout << accounts << "\n";
    const bool isInOrder =
        out.view().find("\r\nxa: 017;hold\r\nX-Account: 018\r\nX-Account: 19\r\nVia: ") != std::string_view::npos;
    return isInOrder && accounts == "xa 017;hold|X-Account 018|X-Account 19|" ? 0 : 1;
}
