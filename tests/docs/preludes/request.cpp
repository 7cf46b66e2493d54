#include "tests/docs/preludes/bytes.cpp"
KxByteArrayInputStream invite(bytes);
const auto request = KxHandleCast<KxSipRequest>(KxSipMessage::sConstructFrom(invite));
