const std::string bytes = "INVITE sip:4077@pbx.example.com SIP/2.0\r\n"
                          "Via: SIP/2.0/UDP 192.0.2.40:5060;branch=z9hG4bK-7d1c0a52;rport\r\n"
                          "Max-Forwards: 70\r\n"
                          "From: \"Front Desk\" <sip:4012@pbx.example.com>;tag=b81e0f6d\r\n"
                          "To: <sip:4077@pbx.example.com>\r\n"
                          "Call-ID: 5c9e7c2a-41d6-4be0@192.0.2.40\r\n"
                          "CSeq: 1 INVITE\r\n"
                          "Contact: <sip:4012@192.0.2.40:5060>\r\n"
                          "Allow: INVITE, ACK, CANCEL, BYE\r\n"
                          "Supported: 100rel, timer\r\n"
                          "Session-Expires: 1800;refresher=uac\r\n"
                          "X-Desk: hall, left\r\n"
                          "Content-Type: application/sdp\r\n"
                          "Content-Length: 5\r\n\r\nv=0\r\n";
KxByteArrayInputStream invite(bytes);
const auto request = KxHandleCast<KxSipRequest>(KxSipMessage::sConstructFrom(invite));
