const std::string bytes = "SIP/2.0 183 Session Progress\r\n"
                          "Via: SIP/2.0/UDP 192.0.2.40:5060;branch=z9hG4bK-7d1c0a52\r\n"
                          "From: \"Front Desk\" <sip:4012@pbx.example.com>;tag=b81e0f6d\r\n"
                          "To: <sip:4077@pbx.example.com>;tag=e03b5d18\r\n"
                          "Call-ID: 5c9e7c2a-41d6-4be0@192.0.2.40\r\n"
                          "CSeq: 1 INVITE\r\n"
                          "Contact: <sip:4077@198.51.100.23:5060>\r\n"
                          "Require: 100rel\r\n"
                          "RSeq: 988\r\n"
                          "Content-Length: 0\r\n\r\n";
KxByteArrayInputStream progress(bytes);
const auto response = KxHandleCast<KxSipResponse>(KxSipMessage::sConstructFrom(progress));
