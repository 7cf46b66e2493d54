const auto request =
    KxMake<KxSipRegisterMessage>("<sip:ida@example.com>;tag=71c0ffda", "<sip:ida@example.com>",
                                 "<sip:ida@192.0.2.17:5060>", "reg-60b2e7d1@192.0.2.17", 1U, nullptr, nullptr, 0U);
request->setURI(KxMake<KxSipURL>("sip:example.com"));
request->insertViaHeader("192.0.2.17", 5060, "UDP");
const auto challenge = KxMake<KxSipDigestChallengeInfo>(KxString("example.com"));
challenge->setProperty("nonce", KxString("9f3c51d2a8e74b06"));
challenge->setProperty("algorithm", KxString("MD5"));
challenge->setQopOptions(KxString("auth"));
const auto response = KxMake<KxSipResponse>(401, request, nullptr, nullptr, 0U);
response->addHeader(KxMake<KxSipWWWAuthenticateHeader>(challenge), false);
